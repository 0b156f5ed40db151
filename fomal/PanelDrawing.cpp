#include "fomal/PanelDrawing.h"

#include <cmath>

#include "fomal/RectangleView.h"
#include "pixels/AffineTransformation.h"
#include "pixels/MaskedRaster.h"
#include "pixels/PlainImage.h"
#include "pixels/TransformedRaster.h"
#include "pixels/PolygonMask.h"
#include "pixels/SolidRaster.h"

namespace Fomal {

void frameBox(OrlPixels::Surface& surface, const OrlPixels::IntRect& box, OrlPixels::Pixel color) {
    OrlPixels::Pen pen;
    pen.stroke = 1;
    pen.color = color;
    drawFrame(surface, rectOf(box), pen, OrlPixels::NORMAL_MODE);
}

void fillBox(OrlPixels::Surface& surface, const RectF& r, OrlPixels::Pixel color, int mode) {
    if (color == 0 || !(r.width > 0) || !(r.height > 0)) return;
    OrlPixels::Polygon box;
    box.addRectangle(r.left, r.top, r.width, r.height);
    OrlPixels::PolygonMask mask(box, surface.bounds);
    OrlPixels::SolidRaster ink(color);
    OrlPixels::MaskedRaster masked(ink, mask);
    surface.draw(masked, mode);
}

void drawImageCentred(OrlPixels::Surface& surface, OrlPixels::Image& image, double cx, double cy, double scale) {
    auto* plain = dynamic_cast<OrlPixels::PlainImage*>(&image);
    if (scale == 1.0 || plain == nullptr || !(scale > 0)) {
        image.draw(surface, int(std::floor(cx - image.width / 2.0 + 0.5)), int(std::floor(cy - image.height / 2.0 + 0.5)));
        return;
    }
    const OrlPixels::AffineTransformation place =
        OrlPixels::AffineTransformation::translation(-image.width / 2.0, -image.height / 2.0)
            .then(OrlPixels::AffineTransformation::scaling(scale, scale))
            .then(OrlPixels::AffineTransformation::translation(cx, cy));
    OrlPixels::TransformedRaster scaled(plain->block(), place, false);
    surface.draw(scaled);
}

}  // namespace Fomal
