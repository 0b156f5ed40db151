// A block of pixels that can be drawn into, and is itself a Raster. The
// pixel pointer is pre-adjusted: global pixel (x, y) stands at
// pixels + y * stride + x whatever the bounds are, so a clip of a larger
// block shares the block's coordinates.
#pragma once

#include <cstddef>

#include "pixels/Raster.h"

namespace OrlPixels {

enum DrawMode { NORMAL_MODE = 0, ADD_MODE = 1, MULTIPLY_MODE = 2 };

// "add" and "multiply" (case-sensitive); any other text is the normal mode.
int drawModeFromText(const char* text);

class Surface : public Raster {
public:
    Surface() = default;
    // `topLeft` is the pixel at (bounds.left, bounds.top).
    Surface(Pixel* topLeft, int stride, const IntRect& bounds, bool opaque = false);

    Pixel* pixels = nullptr;  // pre-adjusted
    int stride = 0;           // in pixels
    IntRect bounds;
    bool opaque = false;

    Pixel* address(int x, int y) const {
        return pixels + (std::ptrdiff_t(y) * stride + x);
    }

    // The same block limited to `clip` (intersected with the bounds).
    Surface clipped(const IntRect& clip) const;

    void calcBounds(IntRect& out) override { out = bounds; }
    void render(int x, int y, int length, SpanOutput& out) override;

    // Composes `source` onto the surface: 0 normal (over), 1 add, 2 multiply.
    void draw(Raster& source, int mode = NORMAL_MODE);

    // Replaces the pixels of `rect` with the source, without composition.
    void fill(Raster& source, const IntRect& rect);

private:
    void pull(Raster& root, const IntRect& target);
};

}  // namespace OrlPixels
