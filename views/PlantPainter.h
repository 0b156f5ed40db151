// The plant's line painter: thin anti-aliased lines one pixel wide, written
// straight into the surface by their own loop rather than through raster
// trees, because the plant's hundreds of short pieces are the one hot path
// of its drawing.
#pragma once

#include <cstdint>

#include "pixels/Pixel.h"
#include "pixels/Surface.h"
#include "views/PlantGeometry.h"

namespace views {

// The coverage table of a gamma: table[i] = floor(255 * (i / 255)^(1 / gamma)).
struct PlantCoverageTable {
    std::uint8_t value[256] = {};
    explicit PlantCoverageTable(double gamma);
};

// A line from (x0, y0) to (x1, y1) in panel pixels (pixel (i, j) covers
// i to i + 1 and j to j + 1). Coordinates become 22.10 fixed point; along
// the axis of the larger difference, each pixel whose centre lies between
// the ends touches the two pixels next to the exact position on the other
// axis, with the fraction and its complement as coverage (in 256ths, looked
// up in the table), and composes `color` over them. Only pixels within the
// surface's bounds are touched; a line with ends beyond any drawable range
// is not drawn.
void drawPlantLine(double x0, double y0, double x1, double y1, OrlPixels::Surface& surface,
                   const PlantCoverageTable& table, OrlPixels::Pixel color);

// Every piece of every line, in drawing order: the line's opaque colour
// scaled by the piece's byte.
void paintPlant(OrlPixels::Surface& surface, const PlantGeometry& plant, const PlantCoverageTable& table);

}  // namespace views
