// A monospaced font whose glyphs are the frames of a film: frame i shows
// character i of the font's character set. The film is read as a mask and
// coloured at draw time. Frames run down the strip when the image is taller
// than wide, else across it. A character outside the set draws nothing but
// still takes its advance, so columns of digits stay aligned.
#pragma once

#include <string>

#include "pixels/Font.h"
#include "pixels/Image.h"

namespace OrlPixels {

class FilmFont : public Font {
public:
    // `charset` lists the characters in film order.
    FilmFont(ImageRef film, std::string charset, int ascent, int advance);
    // The characters first, first + 1, ... first + count - 1.
    FilmFont(ImageRef film, int first, int count, int ascent, int advance);

    TextSize measure(std::string_view text) const override;
    void draw(Surface& surface, std::string_view text, int x, int y, Pixel color) const override;
    int ascent() const override { return ascent_; }
    int lineHeight() const override { return frameHeight_; }

    int frameCount() const { return count_; }
    // The frame of a character, or -1.
    int frameOf(unsigned char c) const { return frames_[c]; }

private:
    void cut(ImageRef film, int count);

    ImageRef film_;
    int frames_[256];
    int count_ = 0;
    int ascent_ = 0;
    int advance_ = 0;
    int frameWidth_ = 0;
    int frameHeight_ = 0;
    bool vertical_ = false;
};

}  // namespace OrlPixels
