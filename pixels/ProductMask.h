// The product of two masks, left * k(right) >> 8. The left operand decides.
#pragma once

#include "pixels/BinaryComposition.h"

namespace OrlPixels {

struct ProductRule {
    typedef Coverage SElem;
    typedef Coverage BElem;
    static bool neutral(Coverage s) { return s == 255; }
    static bool settles(const MaskSpan& s) { return s.solid() && *s.data == 0; }
    static Coverage settledValue(Coverage) { return 0; }
    static Coverage combine(Coverage s, Coverage b) { return Coverage((s * scaleFactor(b)) >> 8); }
    static bool rawOpaque(bool sOpaque, bool bOpaque) { return sOpaque && bOpaque; }
};

class ProductMask : public BinaryComposition<ProductRule> {
public:
    ProductMask(Mask& left, Mask& right) : BinaryComposition<ProductRule>(left, right) {}
    void calcBounds(IntRect& out) override {
        IntRect a, b;
        s_.calcBounds(a);
        b_.calcBounds(b);
        out = intersection(a, b);
    }
};

}  // namespace OrlPixels
