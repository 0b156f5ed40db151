#include "fomal/PanelDrawing.h"

#include "pixels/MaskedRaster.h"
#include "pixels/PolygonMask.h"
#include "pixels/SolidRaster.h"

namespace Fomal {

void fillBox(OrlPixels::Surface& surface, const RectF& r, OrlPixels::Pixel color, int mode) {
    if (color == 0 || !(r.width > 0) || !(r.height > 0)) return;
    OrlPixels::Polygon box;
    box.addRectangle(r.left, r.top, r.width, r.height);
    OrlPixels::PolygonMask mask(box, surface.bounds);
    OrlPixels::SolidRaster ink(color);
    OrlPixels::MaskedRaster masked(ink, mask);
    surface.draw(masked, mode);
}

}  // namespace Fomal
