// A flat list of straight edges in double precision, read in pairs: points
// 2i and 2i+1 are the start and end of edge i. A chain stores each shared
// point twice; consecutive edges form one contour exactly when the end of
// the first equals the start of the second. An odd point count means a
// pending move: the last point is a start without an end yet.
#pragma once

#include <cstddef>
#include <vector>

#include "pixels/AffineTransformation.h"

namespace OrlPixels {

struct Point {
    double x;
    double y;
    bool operator==(const Point& o) const { return x == o.x && y == o.y; }
    bool operator!=(const Point& o) const { return !(*this == o); }
};

struct PolygonBounds {
    double left = 0, top = 0, right = 0, bottom = 0;
};

class Polygon {
public:
    static constexpr std::size_t MAX_POINTS = 0x0FFFFFFF;

    void moveTo(double x, double y);
    void lineTo(double x, double y);
    // lineTo the point at `startIndex`; throws std::length_error when out of range.
    void close(std::size_t startIndex);
    void addLine(double x0, double y0, double x1, double y1);
    // Four edges, clockwise on screen.
    void addRectangle(double x, double y, double w, double h);
    void addEllipse(double cx, double cy, double rx, double ry, double quality = 1.0);
    void addCircle(double cx, double cy, double r, double quality = 1.0);
    // Angles in radians; a negative sweep runs the other way.
    void addArc(double cx, double cy, double rx, double ry, double startAngle, double sweep, double quality = 1.0);
    void transform(const AffineTransformation& t);
    PolygonBounds calcBounds() const;

    void clear() { points_.clear(); }
    bool isEmpty() const { return points_.empty(); }
    void swap(Polygon& other) { points_.swap(other.points_); }

    std::size_t pointCount() const { return points_.size(); }
    std::size_t edgeCount() const { return points_.size() / 2; }
    const Point& point(std::size_t i) const { return points_[i]; }
    Point& point(std::size_t i) { return points_[i]; }
    const std::vector<Point>& points() const { return points_; }
    std::vector<Point>& points() { return points_; }
    void reserve(std::size_t n) { points_.reserve(n); }

    // The step, in radians, of flattened curves of this radius and quality.
    static double curveStep(double radius, double quality);

private:
    void append(const Point& p);
    std::vector<Point> points_;
};

}  // namespace OrlPixels
