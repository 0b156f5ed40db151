#include "pixels/AffineTransformation.h"

#include <cmath>

namespace OrlPixels {

AffineTransformation AffineTransformation::rotation(double radians) {
    const double co = std::cos(radians);
    const double si = std::sin(radians);
    return AffineTransformation(co, -si, 0, si, co, 0);
}

AffineTransformation AffineTransformation::then(const AffineTransformation& n) const {
    return AffineTransformation(n.a * a + n.b * d, n.a * b + n.b * e, n.a * c + n.b * f + n.c,
                                n.d * a + n.e * d, n.d * b + n.e * e, n.d * c + n.e * f + n.f);
}

bool AffineTransformation::invert(AffineTransformation& out) const {
    const double det = a * e - b * d;
    if (!(std::fabs(det) >= 1e-8)) return false;
    const double ia = e / det;
    const double ib = -b / det;
    const double id = -d / det;
    const double ie = a / det;
    out = AffineTransformation(ia, ib, -(ia * c + ib * f), id, ie, -(id * c + ie * f));
    return true;
}

}  // namespace OrlPixels
