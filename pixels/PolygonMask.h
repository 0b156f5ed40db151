// Coverage of a polygon by exact signed-area accumulation in integers: no
// supersampling, one pass over each row, and constant coverage between the
// edges handed up as solid spans. Rows must be asked for top down.
#pragma once

#include <cstdint>
#include <vector>

#include "pixels/FillRule.h"
#include "pixels/Polygon.h"
#include "pixels/Raster.h"

namespace OrlPixels {

struct PolygonEdge {
    std::int32_t top;           // 24.8 y of the upper end, clipped
    std::int32_t bottom;        // 24.8 y of the lower end
    std::int64_t startX;        // x at top: 24.8 in the upper word, more fraction below
    std::int64_t currentX;      // x at the top of the row being rendered
    std::int64_t slope;         // dx per dy, same format
    std::int32_t coverageStep;  // 16.16 area gained per column crossed; negative upward
    std::int32_t firstPixel;    // columns touched in this row, relative to the strip
    std::int32_t endPixel;
    std::int32_t direction;     // +1 downward, -1 upward (the sign of the area)
};

class PolygonMask : public Mask {
public:
    PolygonMask(const Polygon& polygon, const IntRect& clip, const FillRule& rule = nonZeroFillRule);
    PolygonMask(const PolygonMask&) = delete;
    PolygonMask& operator=(const PolygonMask&) = delete;

    void calcBounds(IntRect& out) override { out = bounds_; }
    void render(int x, int y, int length, MaskSpanOutput& out) override;

    // For tests: the converted edges, in polygon order, without the sentinel.
    const std::vector<PolygonEdge>& edges() const { return edges_; }
    std::size_t edgeCount() const { return edgeCount_; }

    static constexpr std::int32_t DEAD = -0x7FFFFFFF;

private:
    void startRow(int y);
    void joinEdges(int x, int y);
    void accumulate(int x, int y, int n);
    void integrate(int n, MaskSpanOutput& out);

    std::vector<PolygonEdge> edges_;
    std::size_t edgeCount_ = 0;
    IntRect clip_;
    IntRect bounds_;
    const FillRule* rule_;
    std::int64_t row_;
    std::size_t firstActive_ = 0;
    std::size_t endActive_ = 0;
    std::vector<std::int32_t> acc_;
    std::vector<PolygonEdge*> entry_;
    std::vector<PolygonEdge*> active_;
};

}  // namespace OrlPixels
