#include <cmath>
#include <vector>

#include "pixels/Stroking.h"

namespace OrlPixels {

namespace {

// A stretch of the centre line: start, direction scaled to half the width,
// length in half widths.
struct Stretch {
    double x, y, dx, dy, length;
};

Stretch reversed(const Stretch& s, const Stretch& next) { return {next.x, next.y, -s.dx, -s.dy, s.length}; }

class Outliner {
public:
    Outliner(Polygon& out, PenJoints joints, double miterBound, double c, double s)
        : out_(out), joints_(joints), miterBound_(miterBound), c_(c), s_(s) {}

    std::size_t placeHolder() {
        const std::size_t at = out_.pointCount();
        out_.moveTo(0, 0);
        return at;
    }
    void closeAt(std::size_t at) { out_.point(at) = out_.point(out_.pointCount() - 1); }

    void lineTo(double x, double y) { out_.lineTo(x, y); }

    // Around (px, py) from offset v, turning until the end direction is passed.
    void arc(double px, double py, double vx, double vy, double endX, double endY) {
        int guard = 0;
        do {
            lineTo(px + vx, py + vy);
            const double nx = vx * c_ - vy * s_;
            const double ny = vx * s_ + vy * c_;
            vx = nx;
            vy = ny;
        } while (vx * endX + vy * endY < 0 && ++guard < 200);
    }

    // The corner from stretch a into stretch b, on the left side.
    void join(const Stretch& a, const Stretch& b) {
        const double ax = a.dx, ay = a.dy, bx = b.dx, by = b.dy;
        const double ox = a.x + ay, oy = a.y - ax;
        const double j1x = b.x + ay, j1y = b.y - ax;
        const double j2x = b.x + by, j2y = b.y - bx;
        const double D = bx * ay - ax * by;
        if ((j1y - j2y) * by < (j2x - j1x) * bx + 2e-8) {
            switch (joints_) {
                case MITER_JOINTS: {
                    const double t = std::fabs(D) < 1e-8 ? 0 : ((ox - j2x) * ay - (oy - j2y) * ax) / D;
                    if (t <= miterBound_) {
                        lineTo(j1x - ax * miterBound_, j1y - ay * miterBound_);
                        lineTo(j2x + bx * miterBound_, j2y + by * miterBound_);
                    } else {
                        lineTo(j2x + bx * t, j2y + by * t);
                    }
                    break;
                }
                case CURVE_JOINTS:
                    arc(b.x, b.y, ay, -ax, bx, by);
                    lineTo(j2x, j2y);
                    break;
                default:
                    lineTo(j1x, j1y);
                    lineTo(j2x, j2y);
                    break;
            }
            return;
        }
        double u = 0, v = 0;
        if (std::fabs(D) >= 1e-8) {
            u = (by * (ox - j2x) - bx * (oy - j2y)) / D;
            v = ((ox - j2x) * ay - (oy - j2y) * ax) / D;
        }
        if (u >= 0 && u <= a.length && v >= 0 && v <= b.length) {
            lineTo(ox + ax * u, oy + ay * u);
        } else {
            lineTo(j1x, j1y);
            lineTo(j2x, j2y);
        }
    }

    // The cap at (px, py) for a line arriving with direction (dx, dy).
    void cap(double px, double py, double dx, double dy, PenCaps caps) {
        const double lx = px + dy, ly = py - dx;
        const double rx = px - dy, ry = py + dx;
        if (caps == ROUND_CAPS) {
            arc(px, py, dy, -dx, -dx, -dy);
            lineTo(rx, ry);
        } else {
            lineTo(lx, ly);
            lineTo(rx, ry);
        }
    }

private:
    Polygon& out_;
    PenJoints joints_;
    double miterBound_;
    double c_;
    double s_;
};

}  // namespace

void stroke(Polygon& polygon, double width, PenCaps caps, PenJoints joints, double miterLimit, double quality) {
    if (polygon.pointCount() % 2 == 1) polygon.points().pop_back();
    if (!(width >= 1e-8)) {
        const std::size_t n = polygon.pointCount();
        polygon.reserve(2 * n);
        for (std::size_t i = n; i-- > 0;) polygon.points().push_back(polygon.point(i));
        return;
    }
    const double k = 2 / width;
    const double miterBound = joints == MITER_JOINTS ? -std::sqrt(miterLimit * miterLimit - 1) : 0;
    double c = 1, s = 0;
    if (joints == CURVE_JOINTS || caps == ROUND_CAPS) {
        const double angle = Polygon::curveStep(width, quality);
        c = std::cos(angle);
        s = std::sin(angle);
    }

    Polygon out;
    Outliner outline(out, joints, miterBound, c, s);
    std::vector<Stretch> r;
    const std::size_t edges = polygon.edgeCount();
    std::size_t i = 0;
    while (i < edges) {
        std::size_t j = i + 1;
        while (j < edges && polygon.point(2 * j) == polygon.point(2 * j - 1)) ++j;

        r.clear();
        for (std::size_t e = i; e < j; ++e) {
            const Point a = polygon.point(2 * e);
            const Point b = polygon.point(2 * e + 1);
            const double vx = b.x - a.x, vy = b.y - a.y;
            const double squared = vx * vx + vy * vy;
            if (a == b || squared < 1e-8) continue;
            const double l = std::sqrt(squared);
            r.push_back({a.x, a.y, vx / (l * k), vy / (l * k), l * k});
        }
        const Point firstPoint = polygon.point(2 * i);
        const Point lastPoint = polygon.point(2 * j - 1);
        i = j;
        const std::size_t n = r.size();
        if (n == 0) continue;  // a point draws nothing, round caps or not
        r.push_back({lastPoint.x, lastPoint.y, 0, 0, 0});

        if (lastPoint != firstPoint) {
            if (caps == SQUARE_CAPS) {
                r[0].x -= r[0].dx;
                r[0].y -= r[0].dy;
                r[0].length += 1;
                r[n].x += r[n - 1].dx;
                r[n].y += r[n - 1].dy;
                r[n - 1].length += 1;
            }
            const std::size_t at = outline.placeHolder();
            for (std::size_t q = 0; q + 1 < n; ++q) outline.join(r[q], r[q + 1]);
            outline.cap(r[n].x, r[n].y, r[n - 1].dx, r[n - 1].dy, caps);
            for (std::size_t q = n - 1; q >= 1; --q) outline.join(reversed(r[q], r[q + 1]), reversed(r[q - 1], r[q]));
            outline.cap(r[0].x, r[0].y, -r[0].dx, -r[0].dy, caps);
            outline.closeAt(at);
        } else {
            std::size_t at = outline.placeHolder();
            for (std::size_t q = 0; q + 1 < n; ++q) outline.join(r[q], r[q + 1]);
            outline.join(r[n - 1], r[0]);
            outline.closeAt(at);
            at = outline.placeHolder();
            for (std::size_t q = n - 1; q >= 1; --q) outline.join(reversed(r[q], r[q + 1]), reversed(r[q - 1], r[q]));
            outline.join(reversed(r[0], r[1]), reversed(r[n - 1], r[n]));
            outline.closeAt(at);
        }
    }
    polygon.swap(out);
}

void applyPen(Polygon& polygon, const Pen& pen) {
    if (!(pen.stroke > 0)) {
        polygon.clear();
        return;
    }
    if (pen.dash != 0) dash(polygon, pen.dash, pen.gap, pen.dashOffset);
    stroke(polygon, pen.stroke, pen.caps, pen.joints, pen.miterLimit, pen.quality);
}

}  // namespace OrlPixels
