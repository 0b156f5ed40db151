// A read-only view of a block of premultiplied pixels.
#pragma once

#include "pixels/Pixel.h"

namespace OrlPixels {

struct PixelBlock {
    const Pixel* pixels = nullptr;  // top left
    int stride = 0;                 // in pixels
    int width = 0;
    int height = 0;
    bool opaque = false;            // no alpha in the data

    bool isEmpty() const { return pixels == nullptr || width <= 0 || height <= 0; }
};

}  // namespace OrlPixels
