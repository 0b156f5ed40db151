// Source over backdrop. Opaque source spans hide the backdrop, which is then
// never rendered; transparent ones pass the backdrop through untouched.
#pragma once

#include "pixels/BinaryComposition.h"

namespace OrlPixels {

struct OverRule {
    typedef Pixel SElem;
    typedef Pixel BElem;
    static bool neutral(Pixel s) { return s == 0; }
    static bool settles(const Span& s) { return s.opaque(); }
    static Pixel settledValue(Pixel s) { return s; }
    // Full alpha and full transparency give the formula's own results directly.
    static Pixel combine(Pixel s, Pixel b) {
        if (s >= 0xFF000000u) return s;
        if (s == 0) return b;
        return overPixel(s, b);
    }
    static bool rawOpaque(bool, bool bOpaque) { return bOpaque; }
};

class OverRaster : public BinaryComposition<OverRule> {
public:
    OverRaster(Raster& backdrop, Raster& source) : BinaryComposition<OverRule>(source, backdrop) {}
    void calcBounds(IntRect& out) override {
        IntRect a, b;
        b_.calcBounds(a);
        s_.calcBounds(b);
        out = unionOf(a, b);
    }
};

}  // namespace OrlPixels
