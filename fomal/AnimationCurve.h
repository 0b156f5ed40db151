// How an animated view stands at a moment of its transition: the one
// rational curve that shapes each quantity's run, and the view's alpha,
// zoom, offset and rotation at a position t between the far end (0) and
// rest (1). All in double precision.
#pragma once

namespace Fomal {

// f(t, c) = c t / ((2c - 1) t + 1 - c): f(0, c) = 0 and f(1, c) = 1 for any
// c; 0.5 is linear, a smaller c starts slowly, a larger one quickly.
double animationCurve(double t, double c);

struct AnimationEnds {
    double offsetStartX = 0, offsetStartY = 0, offsetCurve = 0.5;
    double zoomStart = 1.0, zoomCurve = 0.5;
    double alphaStart = 1.0, alphaCurve = 0.5;
    double rotationStartDegrees = 0.0, rotationCurve = 0.5;
};

struct AnimationPose {
    int alpha = 256;  // a byte while animated; 256 at rest
    double zoom = 1.0;
    double offsetX = 0, offsetY = 0;
    double rotation = 0;  // radians
    bool atRest = true;
    bool drawsNothing = false;  // zoom below 0.00001
};

AnimationPose animationPose(const AnimationEnds& ends, double t);

}  // namespace Fomal
