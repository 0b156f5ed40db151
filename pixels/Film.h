// An image cut into equal frames along one axis. The frames run down the
// strip when the image is at least two frames high, else across it; the
// frame count is the strip's length over the frame's, at least 1.
#pragma once

#include "pixels/Image.h"

namespace OrlPixels {

class Film {
public:
    Film() = default;
    Film(ImageRef image, int frameWidth, int frameHeight);

    int frameCount() const { return count_; }
    bool vertical() const { return vertical_; }
    // The source rectangle of a frame; the index is clamped to the frames.
    IntRect frame(int index) const;
    void drawFrame(Surface& surface, int index, int x, int y) const;

    const ImageRef& image() const { return image_; }

private:
    ImageRef image_;
    int frameWidth_ = 0;
    int frameHeight_ = 0;
    bool vertical_ = true;
    int count_ = 0;
};

}  // namespace OrlPixels
