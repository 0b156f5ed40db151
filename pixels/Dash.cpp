#include <cmath>
#include <numeric>

#include "pixels/Stroking.h"

namespace OrlPixels {

void rotatePoints(Polygon& polygon, std::size_t first, std::size_t middle, std::size_t last) {
    const std::size_t n = last - first;
    const std::size_t k = middle - first;
    if (n == 0 || k == 0 || k >= n) return;
    std::vector<Point>& p = polygon.points();
    const std::size_t cycles = std::gcd(n, k);
    for (std::size_t c = 0; c < cycles; ++c) {
        const Point held = p[first + c];
        std::size_t i = c;
        for (;;) {
            std::size_t next = i + k;
            if (next >= n) next -= n;
            if (next == c) break;
            p[first + i] = p[first + next];
            i = next;
        }
        p[first + i] = held;
    }
}

void dash(Polygon& polygon, double dashLength, double gap, double offset) {
    if (!(gap >= 1e-8) || !(dashLength > 0)) return;
    // An edge of more than a million periods (or not finite) is left solid:
    // its pieces would not even be representable apart.
    const double longest = (dashLength + gap) * 1e6;
    for (std::size_t k = 0; k < polygon.edgeCount(); ++k) {
        const Point a = polygon.point(2 * k);
        const Point b = polygon.point(2 * k + 1);
        const double l = std::sqrt((b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y));
        if (!(l <= longest)) return;
    }
    Polygon out;
    out.reserve(polygon.pointCount());
    const double phase = std::fmod(dashLength - offset, dashLength + gap);
    const std::size_t edges = polygon.edgeCount();
    std::size_t i = 0;
    while (i < edges) {
        std::size_t j = i + 1;
        while (j < edges && polygon.point(2 * j) == polygon.point(2 * j - 1)) ++j;

        const Point first = polygon.point(2 * i);
        const std::size_t contourStart = out.edgeCount();
        std::size_t lastStart = contourStart;
        out.moveTo(first.x, first.y);
        bool on = phase >= 0;
        double left = on ? phase : gap + phase;
        for (std::size_t k = i; k < j; ++k) {
            const Point a = polygon.point(2 * k);
            const Point b = polygon.point(2 * k + 1);
            const double dx = b.x - a.x;
            const double dy = b.y - a.y;
            const double squared = dx * dx + dy * dy;
            if (squared < 1e-8) continue;
            double l = std::sqrt(squared);
            const double ux = dx / l;
            const double uy = dy / l;
            double px = a.x;
            double py = a.y;
            while (l > 0) {
                const double step = left < l ? left : l;
                l -= step;
                left -= step;
                px += ux * step;
                py += uy * step;
                if (on) {
                    out.lineTo(px, py);
                    if (left <= 0) {
                        left += gap;
                        on = false;
                    }
                } else if (left <= 0) {
                    lastStart = out.edgeCount();
                    out.moveTo(px, py);
                    left += dashLength;
                    on = true;
                }
            }
        }
        const Point last = polygon.point(2 * j - 1);
        if (out.pointCount() % 2 == 1) {
            out.points().pop_back();  // a start with no edge behind it
        } else if (on && last == first && out.pointCount() > 0) {
            out.points().back() = first;
            rotatePoints(out, contourStart * 2, lastStart * 2, out.pointCount());
        }
        i = j;
    }
    polygon.swap(out);
}

}  // namespace OrlPixels
