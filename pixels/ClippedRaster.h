// An operand shown only inside a rectangle. Works for rasters and masks.
#pragma once

#include "pixels/Raster.h"
#include "pixels/RowCut.h"

namespace OrlPixels {

template <class T>
class BasicClipped : public GeneratorOf<T>::Type {
public:
    typedef typename GeneratorOf<T>::Type Generator;

    BasicClipped(Generator& operand, const IntRect& rect) : operand_(operand), rect_(rect) {}
    void calcBounds(IntRect& out) override {
        IntRect inner;
        operand_.calcBounds(inner);
        out = intersection(inner, rect_);
    }
    void render(int x, int y, int length, BasicSpanOutput<T>& out) override {
        if (length <= 0) return;
        if (rect_.isEmpty() || y < rect_.top || y >= rect_.bottom()) {
            out.putSolid(length, 0, false);
            return;
        }
        const RowCut c = RowCut::of(rect_, x, length);
        if (c.before > 0) out.putSolid(c.before, 0, false);
        if (c.inside > 0) operand_.render(x + c.before, y, c.inside, out);
        if (c.after > 0) out.putSolid(c.after, 0, false);
    }

private:
    Generator& operand_;
    IntRect rect_;
};

typedef BasicClipped<Pixel> ClippedRaster;
typedef BasicClipped<Coverage> ClippedMask;

}  // namespace OrlPixels
