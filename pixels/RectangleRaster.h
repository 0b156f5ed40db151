// One colour inside a rectangle, transparent outside.
#pragma once

#include "pixels/Raster.h"
#include "pixels/RowCut.h"

namespace OrlPixels {

class RectangleRaster : public Raster {
public:
    RectangleRaster(Pixel color, const IntRect& rect) : color_(color), rect_(rect) {}
    void calcBounds(IntRect& out) override { out = rect_; }
    void render(int x, int y, int length, SpanOutput& out) override {
        if (length <= 0) return;
        if (rect_.isEmpty() || y < rect_.top || y >= rect_.bottom()) {
            out.putSolid(length, 0, false);
            return;
        }
        const RowCut c = RowCut::of(rect_, x, length);
        if (c.before > 0) out.putSolid(c.before, 0, false);
        if (c.inside > 0) out.putSolid(c.inside, color_, isOpaquePixel(color_));
        if (c.after > 0) out.putSolid(c.after, 0, false);
    }

private:
    Pixel color_;
    IntRect rect_;
};

}  // namespace OrlPixels
