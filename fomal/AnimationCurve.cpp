#include "fomal/AnimationCurve.h"

#include <cmath>

namespace Fomal {

double animationCurve(double t, double c) {
    if (t <= 0) return 0;
    if (t >= 1) return 1;
    const double d = (2 * c - 1) * t + 1 - c;
    if (d == 0) return t < 0.5 ? 0 : 1;
    return c * t / d;
}

AnimationPose animationPose(const AnimationEnds& e, double t) {
    AnimationPose p;
    if (t >= 1) return p;
    p.atRest = false;
    const double a = e.alphaStart * 255.99999;
    p.alpha = int(std::trunc(a + (255.99999 - a) * animationCurve(t, e.alphaCurve)));
    p.zoom = e.zoomStart + (1 - e.zoomStart) * animationCurve(t, e.zoomCurve);
    p.drawsNothing = p.zoom < 0.00001;
    const double o = 1 - animationCurve(t, e.offsetCurve);
    p.offsetX = e.offsetStartX * o;
    p.offsetY = e.offsetStartY * o;
    p.rotation = e.rotationStartDegrees * 0.01745329252 * (1 - animationCurve(t, e.rotationCurve));
    return p;
}

}  // namespace Fomal
