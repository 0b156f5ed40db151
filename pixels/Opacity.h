// An image view's opacity: a percentage in the layout (default 100), kept
// as a fraction, and drawn as a MaskedRaster with a SolidMask.
#pragma once

#include <cmath>

#include "pixels/MaskedRaster.h"
#include "pixels/SolidMask.h"
#include "pixels/Surface.h"

namespace OrlPixels {

inline double opacityFromPercent(double percent) { return percent / 100; }

// trunc(opacity * 255.99999), kept within a byte.
inline Coverage opacityMaskValue(double opacity) {
    const double v = std::trunc(opacity * 255.99999);
    if (!(v > 0)) return 0;
    if (v >= 255) return 255;
    return Coverage(v);
}

// Draws `source` with the opacity, in the view's mode.
inline void drawWithOpacity(Surface& surface, Raster& source, double opacity, int mode) {
    SolidMask mask(opacityMaskValue(opacity));
    MaskedRaster masked(source, mask);
    surface.draw(masked, mode);
}

}  // namespace OrlPixels
