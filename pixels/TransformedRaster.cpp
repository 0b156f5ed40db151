#include "pixels/TransformedRaster.h"

#include <algorithm>
#include <cmath>

namespace OrlPixels {

namespace {

const double WHOLE_LIMIT = 1073741824.0;  // 2^30: whole parts are kept within this

std::uint32_t fractionWord(std::int64_t v) { return std::uint32_t(std::uint64_t(v) & 0xFFFFFFFFu); }
bool isWhole(std::int64_t v) { return fractionWord(v) == 0; }
// The filter sees only the top 8 fraction bits of a translation.
bool isWholeTranslation(std::int64_t v) { return (fractionWord(v) >> 24) == 0; }

std::int64_t mul(std::int64_t fixed, std::int64_t n) {
    return std::int64_t(std::uint64_t(fixed) * std::uint64_t(n));
}
std::int64_t add(std::int64_t a, std::int64_t b) { return std::int64_t(std::uint64_t(a) + std::uint64_t(b)); }

std::int32_t clampedInt(double v) {
    if (!(v == v)) return 0;
    return std::int32_t(std::clamp(v, -1073741824.0, 1073741823.0));
}

}  // namespace

std::int64_t TransformedRaster::toFixed(double v) {
    if (!(v == v)) return 0;
    v = std::clamp(v, -WHOLE_LIMIT, WHOLE_LIMIT);
    const double whole = std::floor(v + 1.1641532182693481e-10);
    double fraction = (v - whole) * 4294967296.0;
    if (fraction < 0) fraction = 0;
    if (fraction > 4294967295.0) fraction = 4294967295.0;
    return std::int64_t(std::uint64_t(std::int64_t(whole)) << 32) + std::int64_t(fraction);
}

TransformedRaster::TransformedRaster(const PixelBlock& source, const AffineTransformation& t, bool wrap)
    : source_(source), wrap_(wrap) {
    AffineTransformation inv;
    if (source.isEmpty() || !t.invert(inv)) {
        class_ = 0;
        bounds_ = IntRect();
        return;
    }
    a_ = toFixed(inv.a);
    b_ = toFixed(inv.b);
    c_ = toFixed(inv.c);
    d_ = toFixed(inv.d);
    e_ = toFixed(inv.e);
    f_ = toFixed(inv.f);

    const std::int64_t one = std::int64_t(1) << 32;
    const bool xRowWhole = isWhole(a_) && isWhole(b_) && isWholeTranslation(c_);
    const bool yRowWhole = isWhole(d_) && isWhole(e_) && isWholeTranslation(f_);
    if (xRowWhole && yRowWhole) {
        class_ = (a_ == one && b_ == 0 && d_ == 0 && e_ == one) ? 1 : 2;
    } else {
        const std::int64_t xScaleWhole = a_ >> 32;
        if ((xScaleWhole == -1 || xScaleWhole == 0) && b_ == 0)
            class_ = 3;
        else if (yRowWhole)
            class_ = 4;
        else if (xRowWhole)
            class_ = 5;
        else
            class_ = 6;
    }

    if (wrap_) {
        bounds_ = INFINITE_RECT;
        return;
    }
    // Every target pixel whose sample touches the block, with a margin of one.
    const double xs[2] = {-1.0, double(source.width)};
    const double ys[2] = {-1.0, double(source.height)};
    double minX = 0, minY = 0, maxX = 0, maxY = 0;
    bool first = true;
    for (double sx : xs) {
        for (double sy : ys) {
            double px = sx, py = sy;
            t.apply(px, py);
            if (first) {
                minX = maxX = px;
                minY = maxY = py;
                first = false;
            } else {
                minX = std::min(minX, px);
                maxX = std::max(maxX, px);
                minY = std::min(minY, py);
                maxY = std::max(maxY, py);
            }
        }
    }
    const std::int32_t left = clampedInt(std::floor(minX) - 1);
    const std::int32_t top = clampedInt(std::floor(minY) - 1);
    const std::int32_t right = clampedInt(std::ceil(maxX) + 2);
    const std::int32_t bottom = clampedInt(std::ceil(maxY) + 2);
    bounds_ = intersection(IntRect(left, top, right - left, bottom - top), INFINITE_RECT);
}

Pixel TransformedRaster::fetch(std::int64_t ix, std::int64_t iy) const {
    const std::int64_t w = source_.width;
    const std::int64_t h = source_.height;
    if (wrap_) {
        ix = ix >= 0 ? ix % w : w - (-1 - ix) % w - 1;
        iy = iy >= 0 ? iy % h : h - (-1 - iy) % h - 1;
    } else if (ix < 0 || ix >= w || iy < 0 || iy >= h) {
        return 0;
    }
    return source_.pixels[iy * source_.stride + ix];
}

Pixel TransformedRaster::sample(std::int64_t sx, std::int64_t sy) const {
    const std::int64_t ix = sx >> 32;
    const std::int64_t iy = sy >> 32;
    const std::uint32_t fx = (std::uint32_t(sx) >> 24) & 0xFFu;
    const std::uint32_t fy = (std::uint32_t(sy) >> 24) & 0xFFu;
    const Pixel upper = lerpPixel(fetch(ix, iy), fetch(ix + 1, iy), fx);
    const Pixel lower = lerpPixel(fetch(ix, iy + 1), fetch(ix + 1, iy + 1), fx);
    return lerpPixel(upper, lower, fy);
}

// Bit 0: left of the block, 1: right, 2: above, 3: below, so far that no
// neighbour of the sample lies inside.
unsigned TransformedRaster::outerSides(std::int64_t sx, std::int64_t sy) const {
    const std::int64_t ix = sx >> 32;
    const std::int64_t iy = sy >> 32;
    unsigned m = 0;
    if (ix < -1) m |= 1;
    if (ix >= source_.width) m |= 2;
    if (iy < -1) m |= 4;
    if (iy >= source_.height) m |= 8;
    return m;
}

void TransformedRaster::render(int x, int y, int length, SpanOutput& out) {
    if (length <= 0) return;
    if (class_ == 0) {
        out.putSolid(length, 0, false);
        return;
    }
    std::int64_t sx = add(add(mul(a_, x), mul(b_, y)), c_);
    std::int64_t sy = add(add(mul(d_, x), mul(e_, y)), f_);
    if (wrap_) {
        Pixel* p = out.beginRaw();
        for (int i = 0; i < length; ++i) {
            p[i] = sample(sx, sy);
            sx = add(sx, a_);
            sy = add(sy, d_);
        }
        out.putRaw(length, p, source_.opaque);
        return;
    }
    int i = 0;
    while (i < length) {
        // Skip untouched stretches in steps of 256, 128, ... 1.
        int zeros = 0;
        for (;;) {
            bool took = false;
            for (int step = 256; step >= 1; step >>= 1) {
                if (step > length - i) continue;
                const std::int64_t ex = add(sx, mul(a_, step - 1));
                const std::int64_t ey = add(sy, mul(d_, step - 1));
                if ((outerSides(sx, sy) & outerSides(ex, ey)) != 0) {
                    sx = add(sx, mul(a_, step));
                    sy = add(sy, mul(d_, step));
                    i += step;
                    zeros += step;
                    took = true;
                    break;
                }
            }
            if (!took || i >= length) break;
        }
        if (zeros > 0) out.putSolid(zeros, 0, false);
        if (i >= length) break;
        Pixel* p = out.beginRaw();
        int count = 0;
        while (i < length && outerSides(sx, sy) == 0) {
            p[count++] = sample(sx, sy);
            sx = add(sx, a_);
            sy = add(sy, d_);
            ++i;
        }
        if (count == 0) {
            // Outside on one side only for this pixel but not for a run: one sample.
            p[count++] = sample(sx, sy);
            sx = add(sx, a_);
            sy = add(sy, d_);
            ++i;
        }
        out.putRaw(count, p, false);
    }
}

}  // namespace OrlPixels
