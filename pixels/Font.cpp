#include "pixels/Font.h"

#include "pixels/ClippedRaster.h"
#include "pixels/MaskedRaster.h"
#include "pixels/OffsetRaster.h"
#include "pixels/SolidRaster.h"

namespace OrlPixels {

void drawMaskPart(Surface& surface, Mask& mask, const IntRect& source, int x, int y, Pixel color) {
    if (source.isEmpty() || color == 0) return;
    OffsetMask moved(mask, x - source.left, y - source.top);
    ClippedMask clipped(moved, IntRect(x, y, source.width, source.height));
    SolidRaster ink(color);
    MaskedRaster masked(ink, clipped);
    surface.draw(masked);
}

}  // namespace OrlPixels
