// How an outline is drawn: colour, width, caps, joints, curve quality and
// the dash pattern.
#pragma once

#include "pixels/Pixel.h"

namespace OrlPixels {

enum PenCaps { BUTT_CAPS = 0, ROUND_CAPS = 1, SQUARE_CAPS = 2 };
enum PenJoints { BEVEL_JOINTS = 0, CURVE_JOINTS = 1, MITER_JOINTS = 2 };

struct Pen {
    Pixel color = 0;
    double stroke = 0;
    PenCaps caps = BUTT_CAPS;
    PenJoints joints = BEVEL_JOINTS;
    double miterLimit = 2.0;
    double quality = 1.0;
    double dash = 0;       // 0: no dashing
    double gap = 0;        // defaults to dash when read
    double dashOffset = 0;
};

}  // namespace OrlPixels
