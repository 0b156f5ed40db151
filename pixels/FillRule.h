// Turns accumulated signed areas (0x10000 = one full pixel) into coverage.
#pragma once

#include "pixels/Pixel.h"

namespace OrlPixels {

class FillRule {
public:
    virtual void convert(int count, const int* areas, unsigned char* coverage) const = 0;
    virtual ~FillRule() = default;
};

// |area| >> 8, at most 255. Everything the system draws uses it.
extern const FillRule& nonZeroFillRule;
// Areas folded every second full turn.
extern const FillRule& evenOddFillRule;

}  // namespace OrlPixels
