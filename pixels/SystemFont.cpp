#include "pixels/SystemFont.h"

#include "pixels/BlockGenerator.h"

namespace OrlPixels {

SystemFont::SystemFont(const platform::SystemTextStyle& style) : face_(platform::openSystemTextFace(style)) {}

TextSize SystemFont::measure(std::string_view text) const { return {face_->measure(text), face_->lineHeight()}; }

void SystemFont::draw(Surface& surface, std::string_view text, int x, int y, Pixel color) const {
    if (text.empty()) return;
    platform::TextCoverage c = face_->render(text);
    if (c.width <= 0 || c.height <= 0) return;
    MaskBlock block(c.values.data(), c.width, IntRect(0, 0, c.width, c.height), false);
    drawMaskPart(surface, block, IntRect(0, 0, c.width, c.height), x, y, color);
}

}  // namespace OrlPixels
