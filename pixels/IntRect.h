// An integer rectangle: left, top, width, height. Width and height 0 is the
// empty rectangle; INFINITE_RECT stands for "no limit".
#pragma once

#include <cstdint>

namespace OrlPixels {

struct IntRect {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    IntRect() = default;
    IntRect(std::int32_t l, std::int32_t t, std::int32_t w, std::int32_t h) : left(l), top(t), width(w), height(h) {}

    // Right and bottom are computed in 64 bits: the infinite rectangle's
    // right edge does not fit in 32.
    std::int64_t right() const { return std::int64_t(left) + width; }
    std::int64_t bottom() const { return std::int64_t(top) + height; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    bool contains(std::int32_t x, std::int32_t y) const {
        return x >= left && x < right() && y >= top && y < bottom();
    }

    bool operator==(const IntRect& o) const {
        return left == o.left && top == o.top && width == o.width && height == o.height;
    }
    bool operator!=(const IntRect& o) const { return !(*this == o); }
};

extern const IntRect INFINITE_RECT;

// Larger left and top, smaller right and bottom; all zero when nothing is left.
IntRect intersection(const IntRect& a, const IntRect& b);

// An operand with width and height 0 yields the other; else the enclosing rectangle.
IntRect unionOf(const IntRect& a, const IntRect& b);

}  // namespace OrlPixels
