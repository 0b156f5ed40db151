#include "pixels/Surface.h"

#include <cstdint>
#include <cstring>

#include "pixels/AddRaster.h"
#include "pixels/MultiplyRaster.h"
#include "pixels/OverRaster.h"
#include "pixels/RowCut.h"

namespace OrlPixels {

int drawModeFromText(const char* text) {
    if (std::strcmp(text, "add") == 0) return ADD_MODE;
    if (std::strcmp(text, "multiply") == 0) return MULTIPLY_MODE;
    return NORMAL_MODE;
}

Surface::Surface(Pixel* topLeft, int stride_, const IntRect& bounds_, bool opaque_)
    : stride(stride_), bounds(bounds_), opaque(opaque_) {
    pixels = topLeft - (std::ptrdiff_t(bounds_.top) * stride_ + bounds_.left);
}

Surface Surface::clipped(const IntRect& clip) const {
    Surface s = *this;
    s.bounds = intersection(bounds, clip);
    return s;
}

void Surface::render(int x, int y, int length, SpanOutput& out) {
    if (length <= 0) return;
    if (bounds.isEmpty() || y < bounds.top || y >= bounds.bottom()) {
        out.putSolid(length, 0, false);
        return;
    }
    const RowCut c = RowCut::of(bounds, x, length);
    if (c.before > 0) out.putSolid(c.before, 0, false);
    if (c.inside > 0) out.putRaw(c.inside, address(x + c.before, y), opaque);
    if (c.after > 0) out.putSolid(c.after, 0, false);
}

void Surface::draw(Raster& source, int mode) {
    IntRect sourceBounds;
    source.calcBounds(sourceBounds);
    const IntRect target = intersection(bounds, sourceBounds);
    if (target.isEmpty()) return;
    switch (mode) {
        case ADD_MODE: {
            AddRaster root(*this, source);
            pull(root, target);
            break;
        }
        case MULTIPLY_MODE: {
            MultiplyRaster root(*this, source);
            pull(root, target);
            break;
        }
        default: {
            OverRaster root(*this, source);
            pull(root, target);
            break;
        }
    }
}

void Surface::fill(Raster& source, const IntRect& rect) {
    const IntRect target = intersection(bounds, rect);
    if (target.isEmpty()) return;
    pull(source, target);
}

namespace {

// Copies and fills go 8 bytes at a time once the target is 16-byte aligned.
void copyPixels(Pixel* to, const Pixel* from, int n) {
    const std::uintptr_t t = reinterpret_cast<std::uintptr_t>(to);
    const std::uintptr_t f = reinterpret_cast<std::uintptr_t>(from);
    const std::uintptr_t bytes = std::uintptr_t(n) * sizeof(Pixel);
    if (t < f + bytes && f < t + bytes) {
        std::memmove(to, from, bytes);  // a block drawn onto itself, shifted
        return;
    }
    while (n > 0 && (reinterpret_cast<std::uintptr_t>(to) & 15) != 0) {
        *to++ = *from++;
        --n;
    }
    for (; n >= 2; n -= 2, to += 2, from += 2) {
        std::uint64_t pair;
        std::memcpy(&pair, from, 8);
        std::memcpy(to, &pair, 8);
    }
    if (n > 0) *to = *from;
}

void fillPixels(Pixel* to, Pixel value, int n) {
    while (n > 0 && (reinterpret_cast<std::uintptr_t>(to) & 15) != 0) {
        *to++ = value;
        --n;
    }
    const std::uint64_t pair = (std::uint64_t(value) << 32) | value;
    for (; n >= 2; n -= 2, to += 2) std::memcpy(to, &pair, 8);
    if (n > 0) *to = value;
}

}  // namespace

void Surface::pull(Raster& root, const IntRect& target) {
    Span table[MAX_SPAN_REQUEST];
    const std::int64_t bottom = target.bottom();
    const std::int64_t right = target.right();
    for (std::int64_t y = target.top; y < bottom; ++y) {
        for (std::int64_t x = target.left; x < right; x += MAX_SPAN_REQUEST) {
            const int n = int(right - x < MAX_SPAN_REQUEST ? right - x : MAX_SPAN_REQUEST);
            Pixel* row = address(int(x), int(y));
            SpanOutput out(table, row);
            root.render(int(x), int(y), n, out);
            for (int i = 0; i < n;) {
                const Span s = table[i];
                const int len = s.length();
                if (s.solid())
                    fillPixels(row + i, *s.data, len);
                else if (s.data != row + i)
                    copyPixels(row + i, s.data, len);
                i += len;
            }
        }
    }
}

}  // namespace OrlPixels
