// The gradient views' rasters: a colour table looked up by a linear ramp
// (clipped to the view rectangle) or by a radial ramp. Each is one stack
// object holding its whole tree.
#pragma once

#include <vector>

#include "pixels/ClippedRaster.h"
#include "pixels/ColorTable.h"
#include "pixels/LinearRampMask.h"
#include "pixels/LookupRaster.h"
#include "pixels/RadialRampMask.h"

namespace OrlPixels {

class LinearGradient : public Raster {
public:
    LinearGradient(const IntRect& viewRect, double startX, double startY, double endX, double endY,
                   const std::vector<GradientStop>& stops)
        : table_(buildGradientTable(stops)),
          ramp_(startX, startY, endX, endY),
          lookup_(ramp_, &table_),
          clipped_(lookup_, viewRect) {}
    LinearGradient(const LinearGradient&) = delete;
    LinearGradient& operator=(const LinearGradient&) = delete;

    void calcBounds(IntRect& out) override { clipped_.calcBounds(out); }
    void render(int x, int y, int length, SpanOutput& out) override { clipped_.render(x, y, length, out); }
    const ColorTable& table() const { return table_; }

private:
    ColorTable table_;
    LinearRampMask ramp_;
    LookupRaster lookup_;
    ClippedRaster clipped_;
};

class RadialGradient : public Raster {
public:
    RadialGradient(const IntRect& viewRect, double cx, double cy, double rx, double ry,
                   const std::vector<GradientStop>& stops)
        : table_(buildGradientTable(stops)), ramp_(cx, cy, rx, ry), lookup_(ramp_, &table_), clipped_(lookup_, viewRect) {}
    RadialGradient(const RadialGradient&) = delete;
    RadialGradient& operator=(const RadialGradient&) = delete;

    void calcBounds(IntRect& out) override { clipped_.calcBounds(out); }
    void render(int x, int y, int length, SpanOutput& out) override { clipped_.render(x, y, length, out); }

private:
    ColorTable table_;
    RadialRampMask ramp_;
    LookupRaster lookup_;
    ClippedRaster clipped_;
};

}  // namespace OrlPixels
