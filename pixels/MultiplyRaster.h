// Channel-wise product, alpha included: first * k(second) >> 8. The second
// operand decides: white leaves the first unchanged, 0 gives 0 at once.
#pragma once

#include "pixels/BinaryComposition.h"

namespace OrlPixels {

struct MultiplyRule {
    typedef Pixel SElem;
    typedef Pixel BElem;
    static bool neutral(Pixel s) { return s == 0xFFFFFFFFu; }
    static bool settles(const Span& s) { return s.solid() && *s.data == 0; }
    static Pixel settledValue(Pixel) { return 0; }
    static Pixel combine(Pixel s, Pixel b) { return multiplyPixel(b, s); }
    static bool rawOpaque(bool sOpaque, bool bOpaque) { return sOpaque && bOpaque; }
};

class MultiplyRaster : public BinaryComposition<MultiplyRule> {
public:
    MultiplyRaster(Raster& first, Raster& second) : BinaryComposition<MultiplyRule>(second, first) {}
    void calcBounds(IntRect& out) override {
        IntRect a, b;
        b_.calcBounds(a);
        s_.calcBounds(b);
        out = intersection(a, b);
    }
};

}  // namespace OrlPixels
