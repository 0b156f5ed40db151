// 255 at the centre, falling linearly with the normalised distance to 0 at
// the ellipse. Used for glows and radial gradients.
#pragma once

#include "pixels/Raster.h"

namespace OrlPixels {

class RadialRampMask : public Mask {
public:
    RadialRampMask(double cx, double cy, double rx, double ry);

    void calcBounds(IntRect& out) override { out = bounds_; }
    void render(int x, int y, int length, MaskSpanOutput& out) override;

    // The shared 4096-entry table: 255 - floor(sqrt(i / 4095) * 255 + 0.5).
    // Built at first use (and again whenever its first byte is found 0).
    static const unsigned char* table();

private:
    double cx_, cy_, rx_, ry_;
    double kx_, ky_;
    IntRect bounds_;
};

}  // namespace OrlPixels
