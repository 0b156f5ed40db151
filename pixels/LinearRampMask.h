// A linear ramp of coverage: 0 before the start, rising to 255 along the
// direction. Values are 16.16 fixed point per pixel.
#pragma once

#include "pixels/Raster.h"

namespace OrlPixels {

class LinearRampMask : public Mask {
public:
    // The ramp from `start` (value 0) to `end` (value 255 reached).
    LinearRampMask(double startX, double startY, double endX, double endY);

    void calcBounds(IntRect& out) override { out = INFINITE_RECT; }
    void render(int x, int y, int length, MaskSpanOutput& out) override;

    double stepX() const { return dx_; }
    double stepY() const { return dy_; }

private:
    double startX_;
    double startY_;
    double dx_;  // 16.16 ramp value per pixel in x
    double dy_;  // and in y
};

}  // namespace OrlPixels
