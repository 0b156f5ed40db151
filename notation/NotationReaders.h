// Reading raw values of the object notation as numbers, booleans, strings,
// colours, points and rectangles.
//
// Where a number is read, the raw text is a small arithmetic expression:
// numbers, `+ - * /`, unary minus, parentheses and symbols. `$` always stands
// for the default (or inherited) value of the property being read; in bounds
// and positions `l t w h r b` are the left, top, width, height, right and
// bottom of the parent's rectangle. Text that remains after the expression is
// ignored, so units cost nothing: "11 pixels", "15.0 secs", "10%".
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace notation {

struct NumberSymbol {
    std::string_view name;
    float value;
};

struct PointF {
    float x = 0.0f;
    float y = 0.0f;
};

struct RectF {
    float left = 0.0f;
    float top = 0.0f;
    float width = 0.0f;
    float height = 0.0f;
    float right() const { return left + width; }
    float bottom() const { return top + height; }
};

// An empty text yields dflt. Failures (::Exception): "Unexpected end of
// string", "Expected ')'", "Invalid number: " and "Undefined symbol: ", the
// last two followed by the escaped text or name.
float readNumber(std::string_view raw, float dflt, std::span<const NumberSymbol> symbols = {});

// The same expression evaluated in 32-bit integers: number literals are
// truncated toward zero, division truncates, and a division by zero gives 0.
int readInt(std::string_view raw, int dflt, std::span<const NumberSymbol> symbols = {});

// "true" or "false", quoted or bare; anything else fails with
// "Invalid boolean: " and the escaped text.
bool readBool(std::string_view raw);

// Unescapes a quoted raw value; any other raw value is returned as it is.
std::string readString(std::string_view raw);

// A 32-bit colour word, bytes alpha, red, green, blue from the highest down,
// written in hexadecimal after "0x" (or in decimal). Fails with
// "Invalid number: " and the escaped text.
std::uint32_t readColor(std::string_view raw);

// `{ x, y }`; `$` is the default's coordinate, and with a parent rectangle the
// symbols `l t w h r b` are available. Missing elements keep the default.
PointF readPoint(std::string_view raw, PointF dflt = {}, const RectF* parent = nullptr);

// `{ left, top, width, height }` in the parent's terms; `$` is the parent's
// own left, top, width or height. Missing elements keep the parent's.
RectF readRect(std::string_view raw, const RectF& parent);

}  // namespace notation
