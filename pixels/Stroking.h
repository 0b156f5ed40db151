// Turning centre lines into outlines: dashing cuts the edges, stroking
// offsets them. Both replace the polygon in place; the result is filled
// with the non-zero rule.
#pragma once

#include "pixels/Pen.h"
#include "pixels/Polygon.h"

namespace OrlPixels {

// Cuts every contour into dashes, the pattern restarting at each contour. A
// dash that runs over the closing point of a closed contour stays one piece.
// Nothing happens when the gap is below 1e-8.
void dash(Polygon& polygon, double dash, double gap, double offset);

// Replaces the centre lines with outlines `width` wide.
void stroke(Polygon& polygon, double width, PenCaps caps, PenJoints joints, double miterLimit, double quality);

// Dash (when the pen has one) and stroke; a pen whose stroke is not above 0
// clears the polygon.
void applyPen(Polygon& polygon, const Pen& pen);

// Rotates points [first, last) in place so that `middle` comes first, by
// following the cycles of the permutation (no second buffer).
void rotatePoints(Polygon& polygon, std::size_t first, std::size_t middle, std::size_t last);

}  // namespace OrlPixels
