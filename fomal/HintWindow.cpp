#include "fomal/HintWindow.h"

#include <algorithm>

#include "fomal/LayoutValues.h"
#include "fomal/NotationNames.h"
#include "fomal/PanelDrawing.h"
#include "fomal/View.h"

namespace Fomal {

HintWindowStyle readHintWindowStyle(std::string_view raw) {
    const Object keys = parseObject(raw);
    HintWindowStyle s;
    s.offset = tamed(readPoint(keys.get("offset"), s.offset));
    if (keys.has("height")) s.height = readInt(keys.get("height"), s.height);
    if (keys.has("extraWidth")) s.extraWidth = readInt(keys.get("extraWidth"), s.extraWidth);
    if (keys.has("bgColor")) s.background = opaqueColor(readColor(keys.get("bgColor")));
    s.textOffset = tamed(readPoint(keys.get("textOffset"), s.textOffset));
    if (keys.has("textColor")) s.textColor = opaqueColor(readColor(keys.get("textColor")));
    if (keys.has("textFont")) s.textFont = keys.get("textFont");
    s.height = std::clamp(s.height, 1, 512);
    s.extraWidth = std::clamp(s.extraWidth, 0, 384);
    return s;
}

HintWindow::HintWindow(const HintWindowStyle& style) : style_(style), font_(readFont(style.textFont)) {
    font_.color = style.textColor;
}

OrlPixels::IntRect HintWindow::show(std::string_view text, int x, int y, const OrlPixels::IntRect& panel) {
    const OrlPixels::IntRect before = hide();
    if (text.empty()) return before;
    text_ = text;
    const int width = font_.font->measure(text_).width + style_.extraWidth;
    int left = x + int(style_.offset.x), top = y + int(style_.offset.y);
    // Kept on the panel: moved left at the right edge, above the mouse at
    // the bottom.
    left = std::max(int(panel.left), std::min(left, int(panel.right()) - width));
    if (top + style_.height > int(panel.bottom())) top = y - int(style_.offset.y) - style_.height;
    top = std::max(int(panel.top), top);
    bounds_ = OrlPixels::IntRect(left, top, width, style_.height);
    return before.isEmpty() ? bounds_ : unionOf(before, bounds_);
}

OrlPixels::IntRect HintWindow::hide() {
    const OrlPixels::IntRect was = bounds_;
    text_.clear();
    bounds_ = OrlPixels::IntRect();
    return was;
}

void HintWindow::draw(OrlPixels::Surface& surface) const {
    if (text_.empty()) return;
    const RectF box{float(bounds_.left), float(bounds_.top), float(bounds_.width), float(bounds_.height)};
    fillBox(surface, box, style_.background);
    // The text offset names the baseline, as for captions.
    const int baseline = bounds_.top + int(style_.textOffset.y);
    font_.font->draw(surface, text_, bounds_.left + int(style_.textOffset.x), baseline - font_.font->ascent(),
                     font_.color);
}

}  // namespace Fomal
