#include "pixels/Image.h"

#include "pixels/ClippedRaster.h"
#include "pixels/MaskedRaster.h"
#include "pixels/OffsetRaster.h"
#include "pixels/SolidRaster.h"

namespace OrlPixels {

void Image::draw(Surface& surface, int x, int y) { drawPart(surface, IntRect(0, 0, width, height), x, y); }

void Image::drawPart(Surface& surface, IntRect source, int x, int y) {
    source = intersection(source, IntRect(0, 0, width, height));
    if (source.isEmpty()) return;
    const IntRect target(x, y, source.width, source.height);
    if (Raster* raster = asRaster()) {
        OffsetRaster moved(*raster, x - source.left, y - source.top);
        ClippedRaster clipped(moved, target);
        surface.draw(clipped);
    } else if (Mask* mask = asMask()) {
        OffsetMask moved(*mask, x - source.left, y - source.top);
        ClippedMask clipped(moved, target);
        SolidRaster ink(color);
        MaskedRaster masked(ink, clipped);
        surface.draw(masked);
    }
}

}  // namespace OrlPixels
