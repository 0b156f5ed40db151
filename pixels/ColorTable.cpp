#include "pixels/ColorTable.h"

#include <cmath>
#include <cstdint>

namespace OrlPixels {

namespace {

struct IndexedStop {
    std::int32_t index;
    Pixel color;
};

std::int32_t stopIndex(double position) {
    const double v = std::trunc(position * 255 + 0.5);
    if (!(v > -1e6)) return -1000000;  // also NaN
    if (v > 1e6) return 1000000;
    return std::int32_t(v);
}

}  // namespace

ColorTable buildGradientTable(const std::vector<GradientStop>& stops) {
    ColorTable table;
    if (stops.empty()) {
        table.opaque = false;
        return table;
    }
    std::vector<IndexedStop> list;
    list.reserve(stops.size() + 2);
    list.push_back({0, stops.front().color});
    for (const GradientStop& s : stops) list.push_back({stopIndex(s.position), s.color});
    list.push_back({256, stops.back().color});

    bool opaque = true;
    std::size_t k = 0;  // segment [list[k], list[k + 1])
    std::int32_t step = 0;
    std::size_t stepSegment = std::size_t(-1);
    for (std::int32_t i = 0; i < 256; ++i) {
        while (k + 2 < list.size() && i >= list[k + 1].index) ++k;
        const std::int32_t p0 = list[k].index;
        const std::int32_t p1 = list[k + 1].index;
        if (stepSegment != k) {
            step = p1 > p0 ? std::int32_t(0x40000000) / (p1 - p0) : 0;
            stepSegment = k;
        }
        std::int32_t t = std::int32_t((std::int64_t(i - p0) * step) >> 22);
        if (t < 0) t = 0;
        if (t > 256) t = 256;
        const Pixel entry = lerpPixel(list[k].color, list[k + 1].color, std::uint32_t(t));
        table.entries[i] = entry;
        if (!isOpaquePixel(entry)) opaque = false;
    }
    table.opaque = opaque;
    return table;
}

}  // namespace OrlPixels
