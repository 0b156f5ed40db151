// One colour everywhere.
#pragma once

#include "pixels/Raster.h"

namespace OrlPixels {

class SolidRaster : public Raster {
public:
    explicit SolidRaster(Pixel color) : color_(color) {}
    void calcBounds(IntRect& out) override { out = INFINITE_RECT; }
    void render(int, int, int length, SpanOutput& out) override {
        if (length > 0) out.putSolid(length, color_, isOpaquePixel(color_));
    }

private:
    Pixel color_;
};

}  // namespace OrlPixels
