// 256 colours indexed by coverage, with a flag that tells whether every
// entry is opaque. Built from gradient stops.
#pragma once

#include <vector>

#include "pixels/Pixel.h"

namespace OrlPixels {

struct GradientStop {
    double position;  // 0.0 to 1.0
    Pixel color;
};

struct ColorTable {
    Pixel entries[256] = {};
    bool opaque = false;
};

// Builds the table of a gradient. The stops are taken as sorted; a single
// stop gives a constant table, two stops at one position a hard step.
ColorTable buildGradientTable(const std::vector<GradientStop>& stops);

}  // namespace OrlPixels
