// The saturated sum of two masks. The left operand decides: full coverage
// settles the result without the right one.
#pragma once

#include "pixels/BinaryComposition.h"

namespace OrlPixels {

struct SumRule {
    typedef Coverage SElem;
    typedef Coverage BElem;
    static bool neutral(Coverage s) { return s == 0; }
    static bool settles(const MaskSpan& s) { return s.solid() && *s.data == 255; }
    static Coverage settledValue(Coverage) { return 255; }
    static Coverage combine(Coverage s, Coverage b) {
        const unsigned sum = unsigned(s) + b;
        return Coverage(sum > 255 ? 255 : sum);
    }
    static bool rawOpaque(bool sOpaque, bool bOpaque) { return sOpaque || bOpaque; }
};

class SumMask : public BinaryComposition<SumRule> {
public:
    SumMask(Mask& left, Mask& right) : BinaryComposition<SumRule>(left, right) {}
    void calcBounds(IntRect& out) override {
        IntRect a, b;
        s_.calcBounds(a);
        b_.calcBounds(b);
        out = unionOf(a, b);
    }
};

}  // namespace OrlPixels
