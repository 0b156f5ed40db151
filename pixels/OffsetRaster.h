// An operand moved by (dx, dy): pixel (x, y) of the result is pixel
// (x - dx, y - dy) of the operand. Works for rasters and masks.
#pragma once

#include "pixels/Raster.h"

namespace OrlPixels {

template <class T>
class BasicOffset : public GeneratorOf<T>::Type {
public:
    typedef typename GeneratorOf<T>::Type Generator;

    BasicOffset(Generator& operand, int dx, int dy) : operand_(operand), dx_(dx), dy_(dy) {}
    void calcBounds(IntRect& out) override {
        operand_.calcBounds(out);
        if (out.isEmpty() || out == INFINITE_RECT) return;
        out.left += dx_;
        out.top += dy_;
    }
    void render(int x, int y, int length, BasicSpanOutput<T>& out) override {
        operand_.render(x - dx_, y - dy_, length, out);
    }

private:
    Generator& operand_;
    int dx_;
    int dy_;
};

typedef BasicOffset<Pixel> OffsetRaster;
typedef BasicOffset<Coverage> OffsetMask;

}  // namespace OrlPixels
