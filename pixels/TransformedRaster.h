// A pixel block drawn through an affine transformation with bilinear
// sampling. The transformation maps source to target; it is inverted once
// and its coefficients kept as 32.32 fixed point, so that a row walks the
// source with integer steps.
#pragma once

#include <cstdint>

#include "pixels/AffineTransformation.h"
#include "pixels/PixelBlock.h"
#include "pixels/Raster.h"

namespace OrlPixels {

class TransformedRaster : public Raster {
public:
    TransformedRaster(const PixelBlock& source, const AffineTransformation& transformation, bool wrap);

    void calcBounds(IntRect& out) override { out = bounds_; }
    void render(int x, int y, int length, SpanOutput& out) override;

    // 0: nothing to sample; 1: identity with whole translation; 2: whole
    // numbers only; 3: fractions, x scale of 0 or -1 and no y-on-x shear;
    // 4: fractions in the x row only; 5: in the y row only; 6: in both.
    int transformationClass() const { return class_; }

    // v as 32.32: floor(v + 2^-33) in the upper word, the fraction below.
    static std::int64_t toFixed(double v);

private:
    Pixel sample(std::int64_t sx, std::int64_t sy) const;
    Pixel fetch(std::int64_t ix, std::int64_t iy) const;
    unsigned outerSides(std::int64_t sx, std::int64_t sy) const;

    PixelBlock source_;
    bool wrap_;
    int class_ = 0;
    // Target to source: sx = a*x + b*y + c, sy = d*x + e*y + f, 32.32.
    std::int64_t a_ = 0, b_ = 0, c_ = 0, d_ = 0, e_ = 0, f_ = 0;
    IntRect bounds_;
};

}  // namespace OrlPixels
