#include "views/PlantPainter.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace views {

using OrlPixels::Pixel;

PlantCoverageTable::PlantCoverageTable(double gamma) {
    for (int i = 0; i < 256; ++i) {
        const double v = std::floor(255.0 * std::pow(i / 255.0, 1.0 / gamma));
        value[i] = v >= 255.0 ? 255 : v > 0.0 ? static_cast<std::uint8_t>(v) : 0;
    }
}

namespace {

// Beyond this many pixels from the origin a line is not drawn: its fixed
// point arithmetic would no longer be exact.
constexpr double DRAWABLE_RANGE = 1.0e9;

std::int64_t fixed(double v) { return static_cast<std::int64_t>(std::floor(v * 1024.0 + 0.5)); }

void compose(Pixel* p, Pixel color, std::uint8_t coverage) {
    if (coverage == 0) return;
    *p = OrlPixels::overPixel(OrlPixels::scalePixel(color, OrlPixels::scaleFactor(coverage)), *p);
}

}  // namespace

void drawPlantLine(double x0, double y0, double x1, double y1, OrlPixels::Surface& surface,
                   const PlantCoverageTable& table, Pixel color) {
    for (const double v : {x0, y0, x1, y1})
        if (!(std::fabs(v) < DRAWABLE_RANGE)) return;
    if (surface.bounds.isEmpty()) return;
    std::int64_t ax = fixed(x0), ay = fixed(y0), bx = fixed(x1), by = fixed(y1);
    const bool xMajor = std::llabs(bx - ax) >= std::llabs(by - ay);
    // Major coordinate first.
    std::int64_t a0 = xMajor ? ax : ay, b0 = xMajor ? ay : ax;
    std::int64_t a1 = xMajor ? bx : by, b1 = xMajor ? by : bx;
    if (a1 == a0) return;  // both differences are 0
    if (a1 < a0) {
        std::swap(a0, a1);
        std::swap(b0, b1);
    }
    const std::int64_t slope = ((b1 - b0) * 1024) / (a1 - a0);

    const OrlPixels::IntRect& r = surface.bounds;
    const std::int64_t majorLow = xMajor ? r.left : r.top, majorHigh = xMajor ? r.right() : r.bottom();
    const std::int64_t minorLow = xMajor ? r.top : r.left, minorHigh = xMajor ? r.bottom() : r.right();
    // Pixels whose centre (i * 1024 + 512) lies within the ends, within the bounds.
    std::int64_t first = (a0 - 512 + 1023) >> 10;
    std::int64_t last = (a1 - 512) >> 10;
    first = std::max(first, majorLow);
    last = std::min(last, majorHigh - 1);
    for (std::int64_t i = first; i <= last; ++i) {
        const std::int64_t centre = i * 1024 + 512;
        const std::int64_t at = b0 + ((slope * (centre - a0)) >> 10) - 512;
        const std::int64_t j = at >> 10;
        const int f = static_cast<int>((at & 1023) >> 2);  // 256ths towards pixel j + 1
        for (int side = 0; side < 2; ++side) {
            const std::int64_t m = j + side;
            if (m < minorLow || m >= minorHigh) continue;
            const std::uint8_t coverage = table.value[side ? f : 255 - f];
            Pixel* p = xMajor ? surface.address(int(i), int(m)) : surface.address(int(m), int(i));
            compose(p, color, coverage);
        }
    }
}

void paintPlant(OrlPixels::Surface& surface, const PlantGeometry& plant, const PlantCoverageTable& table) {
    for (const PlantLine& line : plant.lines()) {
        const Pixel color = 0xFF000000u | Pixel(line.red) << 16 | Pixel(line.green) << 8 | Pixel(line.blue);
        const auto points = plant.points(line);
        for (const PlantPiece& piece : plant.pieces(line)) {
            const Pixel scaled = OrlPixels::scalePixel(color, OrlPixels::scaleFactor(piece.byte));
            if (scaled == 0) continue;
            const PlantPoint& a = points[piece.first];
            const PlantPoint& b = points[piece.last];
            drawPlantLine(a.x, a.y, b.x, b.y, surface, table, scaled);
        }
    }
}

}  // namespace views
