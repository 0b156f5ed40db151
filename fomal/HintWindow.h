// The hint window: a small box of its own over the panel, near the mouse,
// that shows the hint of what the mouse rests on. Its look comes from
// `hintWindow` in the constants: `offset` from the mouse, `height`,
// `extraWidth` added to the text's width, `bgColor`, `textOffset`,
// `textColor` and `textFont`.
#pragma once

#include <string>
#include <string_view>

#include "fomal/NotationNames.h"
#include "pixels/FontSpecification.h"
#include "pixels/IntRect.h"
#include "pixels/Surface.h"

namespace Fomal {

struct HintWindowStyle {
    PointF offset{0, 20};
    int height = 15;
    int extraWidth = 4;
    OrlPixels::Pixel background = 0xFFFFFFFFu;
    PointF textOffset{2, 12};
    OrlPixels::Pixel textColor = 0xFF000000u;
    std::string textFont = "{ size: 10 }";
};

// The `hintWindow` object of the constants.
HintWindowStyle readHintWindowStyle(std::string_view raw);

class HintWindow {
public:
    explicit HintWindow(const HintWindowStyle& style);

    // Shows `text` for the mouse at (x, y), kept within `panel`; an empty
    // text hides the window. Returns the region to redraw.
    OrlPixels::IntRect show(std::string_view text, int x, int y, const OrlPixels::IntRect& panel);
    OrlPixels::IntRect hide();

    bool shown() const { return !text_.empty(); }
    const std::string& text() const { return text_; }
    const OrlPixels::IntRect& bounds() const { return bounds_; }
    void draw(OrlPixels::Surface& surface) const;

private:
    HintWindowStyle style_;
    OrlPixels::FontSpecification font_;
    std::string text_;
    OrlPixels::IntRect bounds_;
};

}  // namespace Fomal
