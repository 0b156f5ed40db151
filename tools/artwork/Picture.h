// A picture being drawn: premultiplied pixels, transparent at first, with
// the few strokes the artwork is made of. Every coordinate is given at the
// panel's own density and multiplied by the picture's scale, so the same
// drawing code makes a set at twice the density.
#pragma once

#include <string>
#include <vector>

#include "pixels/ColorTable.h"
#include "pixels/Pen.h"
#include "pixels/Polygon.h"
#include "pixels/Raster.h"
#include "pixels/Surface.h"

namespace artwork {

using OrlPixels::GradientStop;
using OrlPixels::Pixel;
using OrlPixels::Polygon;

// A straight colour with alpha 0 to 255, premultiplied.
Pixel rgba(int r, int g, int b, int a = 255);
// The colour with its alpha (and so its channels) scaled by `opacity`.
Pixel faded(Pixel color, double opacity);

class Picture {
public:
    // Width and height at density 1.
    Picture(int width, int height, int scale);

    int width() const { return width_; }    // in pixels, scale included
    int height() const { return height_; }
    int scale() const { return scale_; }
    const std::vector<Pixel>& pixels() const { return pixels_; }
    OrlPixels::Surface& surface() { return surface_; }

    // Paths at density 1; the picture scales them.
    void fill(Polygon path, Pixel color, int mode = OrlPixels::NORMAL_MODE);
    void stroke(Polygon path, const OrlPixels::Pen& pen, int mode = OrlPixels::NORMAL_MODE);
    void linear(Polygon path, double x0, double y0, double x1, double y1, const std::vector<GradientStop>& stops,
                int mode = OrlPixels::NORMAL_MODE);
    // Stops count from the centre (0) out to the radii (1); beyond them the last colour holds.
    void radial(Polygon path, double cx, double cy, double rx, double ry, const std::vector<GradientStop>& stops,
                int mode = OrlPixels::NORMAL_MODE);
    // Clears to transparent what the path covers.
    void cut(Polygon path);
    // A line of text in a panel font (resources/fonts) with the top of its
    // line at y; returns its width. At a scale above 1 the text is drawn at
    // density 1 and enlarged.
    int text(const char* font, double gamma, std::string_view line, double x, double y, Pixel color);
    // Draws another picture with its top left corner at (x, y), density-1 units.
    void paste(const Picture& other, double x, double y, int mode = OrlPixels::NORMAL_MODE);

private:
    void scaled(Polygon& path) const;
    // Paints through the area of a density-1 path.
    void through(Polygon path, OrlPixels::Raster& paint, int mode);

    int width_;
    int height_;
    int scale_;
    std::vector<Pixel> pixels_;
    OrlPixels::Surface surface_;
};

// Frames of equal size one under the other: the films of buttons and keys.
Picture filmOf(const std::vector<Picture>& frames);

// Path helpers, at density 1.
Polygon circle(double cx, double cy, double r);
Polygon ellipse(double cx, double cy, double rx, double ry);
Polygon rect(double x, double y, double w, double h);
Polygon roundRect(double x, double y, double w, double h, double r);
Polygon ring(double cx, double cy, double inner, double outer);
Polygon arc(double cx, double cy, double r, double startDegrees, double sweepDegrees);  // open
Polygon sector(double cx, double cy, double inner, double outer, double startDegrees, double sweepDegrees);
Polygon polyline(std::initializer_list<std::pair<double, double>> points, bool closed);

OrlPixels::Pen pen(Pixel color, double width, OrlPixels::PenCaps caps = OrlPixels::ROUND_CAPS,
                   OrlPixels::PenJoints joints = OrlPixels::CURVE_JOINTS);

}  // namespace artwork
