#include "pixels/TextLayout.h"

#include <cmath>

#include "platform/Exceptions.h"

namespace OrlPixels {

TextAlign parseTextAlign(std::string_view text) {
    if (text == "left") return TextAlign::left;
    if (text == "center") return TextAlign::center;
    if (text == "right") return TextAlign::right;
    throw FormatException("Invalid text alignment: " + std::string(text));
}

EllipsisSide parseEllipsisSide(std::string_view text) {
    if (text == "none") return EllipsisSide::none;
    if (text == "left") return EllipsisSide::left;
    if (text == "right") return EllipsisSide::right;
    if (text == "both") return EllipsisSide::both;
    throw FormatException("Invalid ellipsis side: " + std::string(text));
}

std::string fitText(const Font& font, std::string_view text, int width, EllipsisSide side) {
    if (side == EllipsisSide::none || font.measure(text).width <= width) return std::string(text);
    std::string_view kept = text;
    bool cutRight = side != EllipsisSide::left;
    bool cutLeft = side == EllipsisSide::left;
    bool shortenedRight = false;
    bool shortenedLeft = false;
    auto compose = [&] {
        std::string s;
        if (shortenedLeft) s += "...";
        s += kept;
        if (shortenedRight) s += "...";
        return s;
    };
    while (!kept.empty()) {
        if (cutRight) {
            kept.remove_suffix(1);
            shortenedRight = true;
        } else if (cutLeft) {
            kept.remove_prefix(1);
            shortenedLeft = true;
        }
        if (side == EllipsisSide::both) {
            cutRight = !cutRight;
            cutLeft = !cutLeft;
        }
        const std::string candidate = compose();
        if (font.measure(candidate).width <= width) return candidate;
    }
    return "...";
}

int alignedLeft(TextAlign align, int left, int width, int textWidth) {
    switch (align) {
    case TextAlign::left: return left;
    case TextAlign::center: return left + int(std::floor((width - textWidth) * 0.5 + 0.5));
    case TextAlign::right: return left + width - textWidth;
    }
    return left;
}

}  // namespace OrlPixels
