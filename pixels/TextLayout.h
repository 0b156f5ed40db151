// Placing one line of text in a box: alignment, and shortening with "..."
// when it does not fit.
#pragma once

#include <string>
#include <string_view>

#include "pixels/Font.h"

namespace OrlPixels {

enum class TextAlign { left, center, right };
enum class EllipsisSide { none, left, right, both };

// "left", "center", "right"; else "Invalid text alignment: " and the text.
TextAlign parseTextAlign(std::string_view text);
// "none", "left", "right", "both"; else "Invalid ellipsis side: " and the text.
EllipsisSide parseEllipsisSide(std::string_view text);

// The text as it fits `width`: unchanged when it fits or `side` is none;
// otherwise shortened at the named side, character by character, with
// "..." standing for what went, until it fits (at worst "..." alone). With
// both sides the characters go alternately from the right and the left.
std::string fitText(const Font& font, std::string_view text, int width, EllipsisSide side);

// The x at which a text of `textWidth` starts in a box of `left`, `width`.
int alignedLeft(TextAlign align, int left, int width, int textWidth);

}  // namespace OrlPixels
