// One coverage value everywhere.
#pragma once

#include "pixels/Raster.h"

namespace OrlPixels {

class SolidMask : public Mask {
public:
    explicit SolidMask(Coverage value) : value_(value) {}
    void calcBounds(IntRect& out) override { out = INFINITE_RECT; }
    void render(int, int, int length, MaskSpanOutput& out) override {
        if (length > 0) out.putSolid(length, value_, value_ == 255);
    }

private:
    Coverage value_;
};

}  // namespace OrlPixels
