// A raster scaled by a mask's coverage. Full coverage passes the raster
// through untouched, empty coverage skips it.
#pragma once

#include "pixels/BinaryComposition.h"

namespace OrlPixels {

struct MaskedRule {
    typedef Coverage SElem;
    typedef Pixel BElem;
    static bool neutral(Coverage m) { return m == 255; }
    static bool settles(const MaskSpan& s) { return s.solid() && *s.data == 0; }
    static Pixel settledValue(Coverage) { return 0; }
    static Pixel combine(Coverage m, Pixel c) { return scalePixel(c, scaleFactor(m)); }
    static bool rawOpaque(bool sOpaque, bool bOpaque) { return sOpaque && bOpaque; }
};

class MaskedRaster : public BinaryComposition<MaskedRule> {
public:
    MaskedRaster(Raster& raster, Mask& mask) : BinaryComposition<MaskedRule>(mask, raster) {}
    void calcBounds(IntRect& out) override {
        IntRect a, b;
        b_.calcBounds(a);
        s_.calcBounds(b);
        out = intersection(a, b);
    }
};

}  // namespace OrlPixels
