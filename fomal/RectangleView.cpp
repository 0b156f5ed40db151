#include "fomal/RectangleView.h"

#include "fomal/LayoutValues.h"
#include "fomal/PanelDrawing.h"
#include "pixels/MaskedRaster.h"
#include "pixels/PolygonMask.h"
#include "pixels/SolidRaster.h"
#include "pixels/Stroking.h"

namespace Fomal {

RectangleView::RectangleView(const ViewBuild& build) : View(build) {
    if (build.keys.has("fill")) fill_ = readColor(build.keys.get("fill"));
    if (build.keys.has("frame")) frame_ = readPen(build.keys.get("frame"), 1.0);
    mode_ = OrlPixels::drawModeFromText(readString(build.keys.get("mode")).c_str());
}

void RectangleView::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    fillBox(surface, rect(), fill_, mode_);
    if (frame_) drawFrame(surface, rect(), *frame_, mode_);
}

void drawFrame(OrlPixels::Surface& surface, const RectF& r, const OrlPixels::Pen& pen, int mode) {
    if (!(pen.stroke > 0)) return;
    const double half = pen.stroke / 2;
    OrlPixels::Polygon edge;
    edge.addRectangle(r.left + half, r.top + half, r.width - pen.stroke, r.height - pen.stroke);
    OrlPixels::applyPen(edge, pen);
    OrlPixels::PolygonMask mask(edge, surface.bounds);
    OrlPixels::SolidRaster ink(pen.color);
    OrlPixels::MaskedRaster masked(ink, mask);
    surface.draw(masked, mode);
}

}  // namespace Fomal
