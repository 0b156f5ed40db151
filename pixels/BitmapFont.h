// A font of glyphs cut from atlas pages, described by a glyph description
// (AngelCode.h). Pages are kept as run-length masks and coloured at draw
// time. A character the font lacks is skipped: it draws nothing and takes
// no room.
#pragma once

#include <array>
#include <string>
#include <unordered_map>
#include <vector>

#include "pixels/AngelCode.h"
#include "pixels/Font.h"
#include "pixels/Image.h"

namespace OrlPixels {

class BitmapFont : public Font {
public:
    // `pages` holds the decoded mask of each page id of the description.
    BitmapFont(const OrlAngelCode::Description& description, const std::vector<std::pair<int, ImageRef>>& pages);

    TextSize measure(std::string_view text) const override;
    void draw(Surface& surface, std::string_view text, int x, int y, Pixel color) const override;
    int ascent() const override { return base_; }
    int lineHeight() const override { return lineHeight_; }

    // The kerning between two characters, 0 when the pair has none.
    int kerning(unsigned char first, unsigned char second) const;

private:
    struct Glyph {
        bool present = false;
        IntRect source;
        int xoffset = 0;
        int yoffset = 0;
        int xadvance = 0;
        Mask* page = nullptr;
    };

    int lineHeight_ = 0;
    int base_ = 0;
    std::array<Glyph, 256> glyphs_{};
    std::unordered_map<unsigned, int> kernings_;  // first << 8 | second
    std::vector<ImageRef> pages_;
};

// The font of resource `name` (type "FNT"; its pages are resources of type
// "PNG" named by the page's file name without folder and extension), its
// atlas decoded with `gamma` (0: none). Equal (name, gamma) pairs share one
// decoded font. Failure: "Could not obtain font : " and the name.
FontRef loadBitmapFont(const std::string& name, double gamma);

// The same from description text and page PNGs given by the caller.
FontRef bitmapFontFromData(std::string_view description,
                           const std::vector<std::pair<std::string, std::string_view>>& pagePngs, double gamma);

}  // namespace OrlPixels
