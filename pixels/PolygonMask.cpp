#include "pixels/PolygonMask.h"

#include "pixels/RowCut.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace OrlPixels {

namespace {

// Coordinates are kept within 2^22 pixels, so 24.8 values and their
// differences stay inside 32 bits.
const IntRect DRAWABLE(-0x400000, -0x400000, 0x800000, 0x800000);
const double COORDINATE_LIMIT = 1073741824.0;  // 2^30 in 24.8

std::int32_t to24_8(double v) {
    const double r = std::floor(v * 256 + 0.5);
    if (!(r == r)) return 0;
    return std::int32_t(std::clamp(r, -COORDINATE_LIMIT, COORDINATE_LIMIT));
}

std::int64_t wrapMul(std::int64_t a, std::int64_t b) {
    return std::int64_t(std::uint64_t(a) * std::uint64_t(b));
}
std::int64_t wrapAdd(std::int64_t a, std::int64_t b) { return std::int64_t(std::uint64_t(a) + std::uint64_t(b)); }
std::int32_t wrapAdd32(std::int32_t a, std::int64_t b) { return std::int32_t(std::uint32_t(a) + std::uint32_t(b)); }

std::int32_t upperWord(std::int64_t v) { return std::int32_t(v >> 32); }

// n / d as 32.32 with truncation (n, d positive, n below 2^31).
std::uint64_t fixedQuotient(std::uint64_t n, std::uint64_t d) { return (n << 32) / d; }

}  // namespace

PolygonMask::PolygonMask(const Polygon& polygon, const IntRect& clip, const FillRule& rule)
    : clip_(intersection(clip, DRAWABLE)), rule_(&rule), row_(std::numeric_limits<std::int64_t>::min()) {
    const std::size_t count = polygon.edgeCount();
    edges_.reserve(count + 1);
    const std::int32_t clipTop = clip_.top * 256;
    const std::int32_t clipBottom = std::int32_t(clip_.bottom() * 256);
    const std::int32_t clipRight = std::int32_t(clip_.right() * 256);

    std::int32_t minX = 0, minY = 0, maxX = 0, maxY = 0;
    bool any = false;
    std::int32_t prevX = 0, prevY = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const Point& p0 = polygon.point(2 * i);
        const Point& p1 = polygon.point(2 * i + 1);
        std::int32_t sx, sy;
        if (i > 0 && p0 == polygon.point(2 * i - 1)) {
            sx = prevX;  // the shared point is converted once: chains never open
            sy = prevY;
        } else {
            sx = to24_8(p0.x);
            sy = to24_8(p0.y);
        }
        const std::int32_t ex = to24_8(p1.x);
        const std::int32_t ey = to24_8(p1.y);
        prevX = ex;
        prevY = ey;

        const bool up = sy > ey;
        const std::int32_t x0 = up ? ex : sx, y0 = up ? ey : sy;
        const std::int32_t x1 = up ? sx : ex, y1 = up ? sy : ey;

        if (!any) {
            minX = maxX = x0;
            minY = maxY = y0;
            any = true;
        }
        minX = std::min({minX, x0, x1});
        maxX = std::max({maxX, x0, x1});
        minY = std::min(minY, y0);
        maxY = std::max(maxY, y1);

        if (y0 == y1 || y1 <= clipTop || y0 >= clipBottom || std::min(x0, x1) >= clipRight) continue;

        const std::int64_t dx = std::int64_t(x1) - x0;
        const std::int64_t dy = std::int64_t(y1) - y0;
        const std::uint64_t adx = std::uint64_t(dx < 0 ? -dx : dx);
        PolygonEdge e;
        std::int32_t step;
        if (dx == 0) {
            e.slope = 0;
            step = 0x8000;
        } else {
            const std::uint64_t q = fixedQuotient(adx, std::uint64_t(dy));
            e.slope = dx < 0 ? -std::int64_t(q) : std::int64_t(q);
            const std::uint64_t c = fixedQuotient(std::uint64_t(dy), adx);
            const std::uint64_t whole = c >> 32;
            step = whole > 0x7FFF ? 0x8000 : std::int32_t((whole << 16) | ((c & 0xFFFFFFFFu) >> 16));
        }
        e.coverageStep = up ? -step : step;
        e.direction = up ? -1 : 1;
        e.bottom = y1;
        if (y0 < clipTop) {
            e.startX = wrapAdd(std::int64_t(std::uint64_t(std::int64_t(x0)) << 32),
                               wrapMul(e.slope, std::int64_t(clipTop) - y0));
            e.top = clipTop;
        } else {
            e.startX = std::int64_t(std::uint64_t(std::int64_t(x0)) << 32);
            e.top = y0;
        }
        e.currentX = e.startX;
        e.firstPixel = e.endPixel = upperWord(e.startX) >> 8;
        edges_.push_back(e);
    }
    edgeCount_ = edges_.size();
    PolygonEdge sentinel{};
    sentinel.top = 0x7FFFFFFF;
    sentinel.bottom = 0x7FFFFFFF;
    edges_.push_back(sentinel);

    entry_.resize(edgeCount_);
    for (std::size_t i = 0; i < edgeCount_; ++i) entry_[i] = &edges_[i];
    std::sort(entry_.begin(), entry_.end(), [](const PolygonEdge* a, const PolygonEdge* b) {
        const std::int32_t ta = a->top >> 8, tb = b->top >> 8;
        if (ta != tb) return ta < tb;
        return a->firstPixel < b->firstPixel;
    });
    active_ = entry_;

    if (any) {
        const std::int32_t left = minX >> 8;
        const std::int32_t top = minY >> 8;
        const std::int32_t width = ((maxX + 0xFF) >> 8) - left;
        const std::int32_t height = ((maxY + 0xFF) >> 8) - top;
        bounds_ = intersection(IntRect(left, top, width, height), clip_);
    }
    const std::int32_t cells = std::min<std::int32_t>(clip_.width, MAX_SPAN_REQUEST) + 1;
    acc_.assign(std::size_t(cells > 1 ? cells : 1), 0);
}

void PolygonMask::startRow(int y) {
    row_ = y;
    const std::int64_t rowTop = std::int64_t(y) * 256;
    for (std::size_t k = firstActive_; k < endActive_; ++k) {
        PolygonEdge* e = active_[k];
        if (e->top < rowTop) e->currentX = wrapAdd(e->startX, wrapMul(e->slope, rowTop - e->top));
    }
}

void PolygonMask::joinEdges(int x, int y) {
    const std::int64_t rowTop = std::int64_t(y) * 256;
    while (endActive_ < edgeCount_ && active_[endActive_]->top < rowTop + 256) {
        PolygonEdge* e = active_[endActive_];
        e->currentX = e->top < rowTop ? wrapAdd(e->startX, wrapMul(e->slope, rowTop - e->top)) : e->startX;
        const std::int64_t key = std::int64_t(e->firstPixel) - x;
        std::size_t j = endActive_;
        while (j > firstActive_ && active_[j - 1]->firstPixel > key) {
            active_[j] = active_[j - 1];
            --j;
        }
        active_[j] = e;
        ++endActive_;
    }
}

void PolygonMask::accumulate(int x, int y, int n) {
    const std::int64_t rowTop = std::int64_t(y) * 256;
    const std::int64_t rowBottom = rowTop + 256;
    std::int32_t* acc = acc_.data();
    std::size_t dead = firstActive_;
    for (std::size_t k = firstActive_; k < endActive_; ++k) {
        PolygonEdge* e = active_[k];
        if (e->bottom <= rowTop) {
            e->firstPixel = DEAD;
            std::swap(active_[k], active_[dead]);
            ++dead;
            continue;
        }
        std::int64_t area;
        std::int64_t travel;
        if (e->top <= rowTop && e->bottom >= rowBottom) {
            area = e->direction * 0x10000;
            travel = std::int64_t(std::uint64_t(e->slope) << 8);
        } else {
            const std::int64_t h = std::min<std::int64_t>(e->bottom, rowBottom) - std::max<std::int64_t>(e->top, rowTop);
            area = e->direction * 256 * h;
            travel = wrapMul(e->slope, h);
        }
        const std::int64_t xa = e->currentX;
        const std::int64_t xb = wrapAdd(xa, travel);
        const std::int32_t xl = upperWord(std::min(xa, xb));
        const std::int32_t xr = upperWord(std::max(xa, xb));
        const std::int64_t first = std::int64_t(xl >> 8) - x;
        const std::int64_t last = std::int64_t(xr >> 8) - x;
        const std::int64_t fl = xl & 0xFF;
        const std::int64_t fr = xr & 0xFF;

        if (first >= n) {
            e->firstPixel = e->endPixel = n;
        } else if (last < 0) {
            e->firstPixel = e->endPixel = 0;
            acc[0] = wrapAdd32(acc[0], area);
        } else if (first == last) {
            const std::int64_t a = ((512 - fl - fr) * area) >> 9;
            acc[first] = wrapAdd32(acc[first], a);
            acc[first + 1] = wrapAdd32(acc[first + 1], area - a);
            e->firstPixel = std::int32_t(first);
            e->endPixel = std::int32_t(first + 1);
        } else {
            const std::int64_t c = e->coverageStep;
            std::int64_t s;
            std::int64_t start;
            if (first < 0) {
                s = (last - first + std::min<std::int64_t>(-last, 0)) * c - ((fl * c) >> 8);
                acc[0] = wrapAdd32(acc[0], s);
                e->firstPixel = 0;
                start = 0;
            } else {
                s = (c * (256 - fl)) >> 8;
                const std::int64_t a = ((256 - fl) * s) >> 9;
                acc[first] = wrapAdd32(acc[first], a);
                acc[first + 1] = wrapAdd32(acc[first + 1], s - a);
                e->firstPixel = std::int32_t(first);
                start = first + 1;
            }
            // Columns crossed completely; when the edge runs on past the
            // strip, the strip's last column is one of them.
            const std::int64_t m = std::min<std::int64_t>(last, n) - start;
            if (m > 0) {
                const std::int64_t h = c >> 1;
                acc[start] = wrapAdd32(acc[start], h);
                for (std::int64_t i = 1; i < m; ++i) acc[start + i] = wrapAdd32(acc[start + i], c);
                acc[start + m] = wrapAdd32(acc[start + m], c - h);
            }
            if (last < n) {
                const std::int64_t r = area - s - c * (m > 0 ? m : 0);
                const std::int64_t a = ((512 - fr) * r) >> 9;
                acc[last] = wrapAdd32(acc[last], a);
                acc[last + 1] = wrapAdd32(acc[last + 1], r - a);
                e->endPixel = std::int32_t(last + 1);
            } else {
                e->endPixel = n;
            }
        }
    }
    firstActive_ = dead;
    // Back into firstPixel order, by insertion.
    for (std::size_t k = firstActive_ + 1; k < endActive_; ++k) {
        PolygonEdge* e = active_[k];
        std::size_t j = k;
        while (j > firstActive_ && active_[j - 1]->firstPixel > e->firstPixel) {
            active_[j] = active_[j - 1];
            --j;
        }
        active_[j] = e;
    }
}

void PolygonMask::integrate(int n, MaskSpanOutput& out) {
    std::int32_t* acc = acc_.data();
    std::int32_t sum = 0;
    int i = 0;
    std::size_t k = firstActive_;
    while (i < n) {
        if (k == endActive_ || i < active_[k]->firstPixel) {
            const int stop = k == endActive_ ? n : std::min(active_[k]->firstPixel, n);
            sum = wrapAdd32(sum, acc[i]);
            acc[i] = 0;
            unsigned char c;
            rule_->convert(1, &sum, &c);
            out.putSolid(stop - i, c, c == 255);
            i = stop;
            continue;
        }
        int end = active_[k]->endPixel;
        ++k;
        while (k < endActive_ && active_[k]->firstPixel <= end + 4) {
            end = std::max(end, active_[k]->endPixel);
            ++k;
        }
        if (end > n) end = n;
        if (end <= i) continue;
        for (int j = i; j < end; ++j) {
            sum = wrapAdd32(sum, acc[j]);
            acc[j] = sum;
        }
        Coverage* p = out.beginRaw();
        rule_->convert(end - i, acc + i, p);
        std::fill(acc + i, acc + end, 0);
        out.putRaw(end - i, p, false);
        i = end;
    }
    acc[n] = 0;
}

void PolygonMask::render(int x, int y, int length, MaskSpanOutput& out) {
    if (length <= 0) return;
    if (bounds_.isEmpty() || y < bounds_.top || y >= bounds_.bottom()) {
        out.putSolid(length, 0, false);
        return;
    }
    // Only the columns inside the bounds are worked out, so a strip never
    // exceeds the accumulator, which is as wide as the clip.
    const RowCut c = RowCut::of(bounds_, x, length);
    if (c.inside == 0) {
        out.putSolid(length, 0, false);
        return;
    }
    if (c.before > 0) out.putSolid(c.before, 0, false);
    if (y != row_) startRow(y);
    joinEdges(x + c.before, y);
    accumulate(x + c.before, y, c.inside);
    integrate(c.inside, out);
    if (c.after > 0) out.putSolid(c.after, 0, false);
}

}  // namespace OrlPixels
