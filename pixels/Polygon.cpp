#include "pixels/Polygon.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace OrlPixels {

namespace {
const double MIN_CURVE_STEP = 0.06283185307179587;  // 2 pi / 100
const double FULL_TURN_LIMIT = 6.283185297179586;   // 2 pi less 1e-8
const double FULL_TURN = 6.283185307179586;
}  // namespace

double Polygon::curveStep(double radius, double quality) {
    return std::max(2 / (radius * quality), MIN_CURVE_STEP);
}

void Polygon::append(const Point& p) {
    if (points_.size() >= MAX_POINTS) throw std::length_error("Polygon too large");
    points_.push_back(p);
}

void Polygon::moveTo(double x, double y) {
    if (points_.size() % 2 == 0)
        append({x, y});
    else
        points_.back() = {x, y};
}

void Polygon::lineTo(double x, double y) {
    if (points_.empty()) {
        // A polygon starts with moveTo; a stray lineTo starts there.
        append({x, y});
        return;
    }
    if (points_.size() % 2 == 0) append(points_.back());
    append({x, y});
}

void Polygon::close(std::size_t startIndex) {
    if (startIndex >= points_.size()) throw std::length_error("Polygon index out of range");
    const Point p = points_[startIndex];
    lineTo(p.x, p.y);
}

void Polygon::addLine(double x0, double y0, double x1, double y1) {
    moveTo(x0, y0);
    lineTo(x1, y1);
}

void Polygon::addRectangle(double x, double y, double w, double h) {
    moveTo(x, y);
    const std::size_t start = points_.size() - 1;
    lineTo(x + w, y);
    lineTo(x + w, y + h);
    lineTo(x, y + h);
    close(start);
}

void Polygon::addEllipse(double cx, double cy, double rx, double ry, double quality) {
    const double s = curveStep(std::max(std::fabs(rx), std::fabs(ry)), quality);
    const double rc = std::cos(s);
    const double rs = std::sin(s);
    moveTo(cx + rx, cy);
    const std::size_t start = points_.size() - 1;
    double co = 1;
    double si = 0;
    for (double angle = s; angle < FULL_TURN_LIMIT; angle += s) {
        const double nc = co * rc - si * rs;
        const double ns = co * rs + si * rc;
        co = nc;
        si = ns;
        lineTo(cx + rx * co, cy + ry * si);
    }
    close(start);
}

void Polygon::addCircle(double cx, double cy, double r, double quality) { addEllipse(cx, cy, r, r, quality); }

void Polygon::addArc(double cx, double cy, double rx, double ry, double startAngle, double sweep, double quality) {
    const double s = curveStep(std::max(std::fabs(rx), std::fabs(ry)), quality);
    const double rc = std::cos(s);
    const double rs = sweep < 0 ? -std::sin(s) : std::sin(s);
    double co = std::cos(startAngle);
    double si = std::sin(startAngle);
    moveTo(cx + rx * co, cy + ry * si);
    const std::size_t start = points_.size() - 1;
    const double limit = std::fabs(sweep) - 1e-8;
    for (double angle = s; angle < limit; angle += s) {
        const double nc = co * rc - si * rs;
        const double ns = co * rs + si * rc;
        co = nc;
        si = ns;
        lineTo(cx + rx * co, cy + ry * si);
    }
    if (std::fabs(sweep) == FULL_TURN)
        close(start);
    else
        lineTo(cx + rx * std::cos(startAngle + sweep), cy + ry * std::sin(startAngle + sweep));
}

void Polygon::transform(const AffineTransformation& t) {
    for (Point& p : points_) t.apply(p.x, p.y);
}

PolygonBounds Polygon::calcBounds() const {
    PolygonBounds b;
    if (points_.empty()) return b;
    b.left = b.right = points_[0].x;
    b.top = b.bottom = points_[0].y;
    for (const Point& p : points_) {
        b.left = std::min(b.left, p.x);
        b.right = std::max(b.right, p.x);
        b.top = std::min(b.top, p.y);
        b.bottom = std::max(b.bottom, p.y);
    }
    return b;
}

}  // namespace OrlPixels
