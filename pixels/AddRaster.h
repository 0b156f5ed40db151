// Channel-wise saturated sum of source and backdrop. A full white source
// settles the result without the backdrop.
#pragma once

#include "pixels/BinaryComposition.h"

namespace OrlPixels {

struct AddRule {
    typedef Pixel SElem;
    typedef Pixel BElem;
    static bool neutral(Pixel s) { return s == 0; }
    static bool settles(const Span& s) { return s.solid() && *s.data == 0xFFFFFFFFu; }
    static Pixel settledValue(Pixel) { return 0xFFFFFFFFu; }
    static Pixel combine(Pixel s, Pixel b) { return addPixel(b, s); }
    static bool rawOpaque(bool sOpaque, bool bOpaque) { return sOpaque || bOpaque; }
};

class AddRaster : public BinaryComposition<AddRule> {
public:
    AddRaster(Raster& backdrop, Raster& source) : BinaryComposition<AddRule>(source, backdrop) {}
    void calcBounds(IntRect& out) override {
        IntRect a, b;
        b_.calcBounds(a);
        s_.calcBounds(b);
        out = unionOf(a, b);
    }
};

}  // namespace OrlPixels
