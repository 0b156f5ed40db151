// What the plant view draws over the branches: the glows of the notes, the
// chosen seed (or the one falling), the guides of the branch under the
// mouse, the mod wheel ring and the rotation handle.
#include <algorithm>
#include <cmath>

#include "pixels/MaskedRaster.h"
#include "pixels/PlainImage.h"
#include "pixels/PolygonMask.h"
#include "pixels/RadialRampMask.h"
#include "pixels/SolidRaster.h"
#include "pixels/Stroking.h"
#include "pixels/TransformedRaster.h"
#include "views/PlantView.h"

namespace views {

namespace {

constexpr double PI = 3.141592653589793;
constexpr double DEGREE = PI / 180.0;

void fillOutline(OrlPixels::Surface& surface, OrlPixels::Polygon& outline, const OrlPixels::Pen& pen) {
    OrlPixels::applyPen(outline, pen);
    if (outline.isEmpty()) return;
    OrlPixels::PolygonMask mask(outline, surface.bounds, OrlPixels::nonZeroFillRule);
    OrlPixels::SolidRaster ink(pen.color);
    OrlPixels::MaskedRaster masked(ink, mask);
    surface.draw(masked);
}

void fillCircle(OrlPixels::Surface& surface, double x, double y, double r, OrlPixels::Pixel color) {
    if (!(r > 0.0)) return;
    OrlPixels::Polygon disc;
    disc.addCircle(x, y, r, 1.0);
    OrlPixels::PolygonMask mask(disc, surface.bounds, OrlPixels::nonZeroFillRule);
    OrlPixels::SolidRaster ink(color);
    OrlPixels::MaskedRaster masked(ink, mask);
    surface.draw(masked);
}

}  // namespace

void PlantView::drawOverlay(OrlPixels::Surface& surface) {
    drawGlows(surface);
    drawSeed(surface);
    drawHover(surface);
    drawRingAndHandle(surface);
}

void PlantView::drawGlows(OrlPixels::Surface& surface) {
    for (int i = 0; i < BRANCH_COUNT; ++i) {
        const float glow = motion_.glow[i];
        if (!(glow > 0.0f)) continue;
        // A strong note is a small hot dot, a fading one wide and dim.
        const Fomal::PointF at = branchPoint(i, distanceOf(motion_.target[i]));
        const double r = 4.0 + 16.0 * (1.0 - glow);
        const auto byte = static_cast<OrlPixels::Pixel>(std::min(255.0f, glow * 255.99998f + 0.5f));
        OrlPixels::RadialRampMask ramp(at.x, at.y, r, r);
        OrlPixels::SolidRaster light(byte * 0x01010101u);
        OrlPixels::MaskedRaster masked(light, ramp);
        surface.draw(masked, OrlPixels::ADD_MODE);
    }
}

void PlantView::drawSeed(OrlPixels::Surface& surface) {
    if (!overlay_.seedImage) return;
    int branch = motion_.plantingBranch;
    double distance = motion_.dropDistance;
    if (branch < 0) {
        branch = program_ != nullptr ? program_->selectedBranch() : -1;
        if (branch < 0 || branch >= BRANCH_COUNT) return;
        distance = distanceOf(motion_.target[branch]);
    }
    OrlPixels::Image& image = *overlay_.seedImage;
    const Fomal::PointF at = branchPoint(branch, distance);
    const double left = at.x + overlay_.seedOffset.x - image.width / 2.0;
    const double top = at.y + overlay_.seedOffset.y - image.height / 2.0;
    if (auto* plain = dynamic_cast<OrlPixels::PlainImage*>(&image)) {
        OrlPixels::TransformedRaster placed(plain->block(), OrlPixels::AffineTransformation::translation(left, top), false);
        surface.draw(placed);
    } else {
        image.draw(surface, static_cast<int>(std::floor(left + 0.5)), static_cast<int>(std::floor(top + 0.5)));
    }
}

void PlantView::drawHover(OrlPixels::Surface& surface) {
    const int branch = drag_ && drag_->branch() >= 0 ? drag_->branch() : hoverBranch_;
    if (branch < 0) return;
    if (overlay_.hoverGuidesPen) {
        // The sector's two borders, from the core to the rim.
        OrlPixels::Polygon guides;
        const double core = settings.coreSize;
        for (const double side : {-15.0, 15.0}) {
            const double angle = ((branch * 30.0) - 90.0 + motion_.rotationShown + side) * DEGREE;
            const double ux = std::cos(angle), uy = std::sin(angle);
            guides.moveTo(cx_ - ux * core, cy_ - uy * core);
            guides.lineTo(cx_ - ux * radius, cy_ - uy * radius);
        }
        fillOutline(surface, guides, *overlay_.hoverGuidesPen);
    }
    const Fomal::PointF dot = branchPoint(branch, distanceOf(motion_.target[branch]));
    const bool atStop = motion_.target[branch] >= 1.0f;
    fillCircle(surface, dot.x, dot.y, overlay_.hoverSeedSize, atStop ? overlay_.saturationColor : overlay_.hoverSeedColor);
}

void PlantView::drawRingAndHandle(OrlPixels::Surface& surface) {
    const double turn = (motion_.rotationShown + 90.0) * DEGREE;
    if (ringShown()) {
        const OrlPixels::Pen* pen = overWheel_ && overlay_.hoverWheelPen ? &*overlay_.hoverWheelPen
                                    : overlay_.modWheelPen             ? &*overlay_.modWheelPen
                                                                       : nullptr;
        const double r = ringRadius();
        if (pen != nullptr && r > 0.0) {
            // The dash pattern's unit is half the ring's circumference, so
            // the ring always shows the same number of dashes.
            OrlPixels::Pen ringPen = *pen;
            ringPen.dash *= PI * r;
            ringPen.gap *= PI * r;
            ringPen.dashOffset *= PI * r;
            const double step = std::max(2.0 / r, 2.0 * PI / 100.0);
            const double start = overlay_.modWheelOpeningSweep * DEGREE;
            const double sweep = (360.0 - 2.0 * overlay_.modWheelOpeningSweep) * DEGREE;
            OrlPixels::Polygon ring;
            const bool whole = sweep >= 2.0 * PI;
            const int steps = std::max(1, static_cast<int>(std::ceil(std::fabs(sweep) / step)));
            for (int k = 0; k <= steps; ++k) {
                if (whole && k == steps) break;
                const double a = start + sweep * k / steps + turn;
                const double x = cx_ + r * std::cos(a), y = cy_ + r * std::sin(a);
                if (k == 0)
                    ring.moveTo(x, y);
                else
                    ring.lineTo(x, y);
            }
            if (whole && ring.pointCount() > 1) ring.close(0);
            fillOutline(surface, ring, ringPen);
        }
    }
    if (handleShown()) {
        const OrlPixels::Pen* pen = overHandle_ && overlay_.hoverHandlePen ? &*overlay_.hoverHandlePen
                                    : overlay_.rotationHandlePen          ? &*overlay_.rotationHandlePen
                                                                          : nullptr;
        if (pen != nullptr) {
            const Fomal::PointF at = handlePoint();
            OrlPixels::Polygon handle;
            handle.addCircle(at.x, at.y, overlay_.rotationHandleSize, 1.0);
            fillOutline(surface, handle, *pen);
        }
    }
}

}  // namespace views
