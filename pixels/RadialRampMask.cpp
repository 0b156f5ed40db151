#include "pixels/RadialRampMask.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace OrlPixels {

namespace {

unsigned char radialTable[4096];

std::int32_t clampedInt(double v) {
    if (!(v == v)) return 0;
    return std::int32_t(std::clamp(v, -1073741824.0, 1073741823.0));
}

std::int64_t clampedInt64(double v) {
    if (!(v == v)) return 0;
    return std::int64_t(std::clamp(v, -1099511627776.0, 1099511627776.0));  // 2^40: 256 steps stay in range
}

const std::int64_t FINE_LIMIT = 0x400000;  // within 1/16 of the radius

unsigned char fineValue(const unsigned char* t, std::int64_t d) { return (unsigned char)((t[d >> 10] + 0xEF1) >> 4); }
unsigned char coarseValue(const unsigned char* t, std::int64_t d) { return t[d >> 18]; }

}  // namespace

const unsigned char* RadialRampMask::table() {
    if (radialTable[0] == 0) {
        for (int i = 0; i < 4096; ++i)
            radialTable[i] = (unsigned char)(255 - int(std::floor(std::sqrt(i / 4095.0) * 255 + 0.5)));
    }
    return radialTable;
}

RadialRampMask::RadialRampMask(double cx, double cy, double rx, double ry)
    : cx_(cx), cy_(cy), rx_(std::fabs(rx)), ry_(std::fabs(ry)) {
    kx_ = 1073741824.0 / (rx_ * rx_);
    ky_ = 1073741824.0 / (ry_ * ry_);
    const std::int32_t left = clampedInt(std::floor(cx - rx_));
    const std::int32_t top = clampedInt(std::floor(cy - ry_));
    const std::int32_t right = clampedInt(std::ceil(cx + rx_));
    const std::int32_t bottom = clampedInt(std::ceil(cy + ry_));
    bounds_ = intersection(IntRect(left, top, right - left, bottom - top), INFINITE_RECT);
}

void RadialRampMask::render(int x, int y, int length, MaskSpanOutput& out) {
    if (length <= 0) return;
    const double dy = y + 0.5 - cy_;
    const double t = 1 - dy * dy / (ry_ * ry_);
    const double w = t > 1e-8 ? std::sqrt(t) * rx_ : 0;
    const double c = cx_ + 0.5 - x;
    const double lf = std::floor(c - w);
    const double rf = std::floor(c + w);
    const int left = lf <= 0 ? 0 : (lf >= length ? length : int(lf));
    int right = rf >= length ? length : (rf <= 0 ? 0 : int(rf));
    if (right <= left) {
        out.putSolid(length, 0, false);
        return;
    }
    if (left > 0) out.putSolid(left, 0, false);
    if (right > left) {
        const unsigned char* tab = table();
        const int n = right - left;
        Coverage* p = out.beginRaw();
        const double u = (double(x) + left) - cx_;
        const double e = kx_ + (2 * u - 1) * kx_;
        const std::int64_t S = clampedInt64(std::floor(2 * kx_ + 0.5));
        const std::int64_t E = clampedInt64(std::floor(e + 0.5));
        std::int64_t D = clampedInt64(std::floor(e / 2 + ky_ * dy * dy + kx_ * u * u + 0.5));
        std::int64_t diff = E;
        std::int64_t values[4];
        int i = 0;
        for (; i + 4 <= n; i += 4) {
            bool fine = true;
            for (int k = 0; k < 4; ++k) {
                values[k] = std::clamp<std::int64_t>(D, 0, 0x3FFFFFFF);
                if (values[k] >= FINE_LIMIT) fine = false;
                diff += S;
                D += diff;
            }
            for (int k = 0; k < 4; ++k) p[i + k] = fine ? fineValue(tab, values[k]) : coarseValue(tab, values[k]);
        }
        for (; i < n; ++i) {
            const std::int64_t v = std::clamp<std::int64_t>(D, 0, 0x3FFFFFFF);
            p[i] = v < FINE_LIMIT ? fineValue(tab, v) : coarseValue(tab, v);
            diff += S;
            D += diff;
        }
        out.putRaw(n, p, false);
    }
    if (right < length) out.putSolid(length - right, 0, false);
}

}  // namespace OrlPixels
