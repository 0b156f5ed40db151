#include "pixels/LinearRampMask.h"

#include <cmath>
#include <cstdint>

namespace OrlPixels {

namespace {

// trunc() into an integer, saturating far outside the ramp (NaN gives 0),
// so that a row of 256 steps can never overflow.
std::int64_t truncToInt64(double v) {
    const double limit = 1125899906842624.0;  // 2^50
    if (!(v == v)) return 0;
    if (v >= limit) return std::int64_t(limit);
    if (v <= -limit) return -std::int64_t(limit);
    return std::int64_t(std::trunc(v));
}

Coverage clampedValue(std::int64_t v) {
    if (v <= 0) return 0;
    if (v >= 0x10000) return 255;
    return Coverage(v >> 8);
}

int category(std::int64_t v) { return v <= 0 ? 0 : (v < 0x10000 ? 1 : 2); }

}  // namespace

LinearRampMask::LinearRampMask(double startX, double startY, double endX, double endY)
    : startX_(startX), startY_(startY), dx_(0), dy_(0) {
    const double vx = endX - startX;
    const double vy = endY - startY;
    const double l = std::sqrt(vx * vx + vy * vy);
    if (l != 0) {
        const double q = (1 / l) * 65536 * (1 / l);
        dx_ = vx * q;
        dy_ = vy * q;
    }
}

void LinearRampMask::render(int x, int y, int length, MaskSpanOutput& out) {
    if (length <= 0) return;
    std::int64_t v = truncToInt64((x - startX_) * dx_ + (y - startY_) * dy_);
    const std::int64_t step = truncToInt64(dx_);
    if (step == 0) {
        const Coverage c = clampedValue(v);
        out.putSolid(length, c, c == 255);
        return;
    }
    int i = 0;
    while (i < length) {
        const int cat = category(v);
        int j = i;
        if (cat == 1) {
            Coverage* p = out.beginRaw();
            while (j < length && category(v) == 1) {
                p[j - i] = Coverage(v >> 8);
                v += step;
                ++j;
            }
            out.putRaw(j - i, p, false);
        } else {
            while (j < length && category(v) == cat) {
                v += step;
                ++j;
            }
            out.putSolid(j - i, cat == 0 ? 0 : 255, cat == 2);
        }
        i = j;
    }
}

}  // namespace OrlPixels
