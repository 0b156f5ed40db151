#include "pixels/IntRect.h"

#include <algorithm>
#include <limits>

namespace OrlPixels {

const IntRect INFINITE_RECT(-0x40000000, -0x40000000, 0x7FFFFFFF, 0x7FFFFFFF);

namespace {

std::int32_t clampToInt(std::int64_t v) {
    return std::int32_t(std::clamp<std::int64_t>(v, std::numeric_limits<std::int32_t>::min(),
                                                  std::numeric_limits<std::int32_t>::max()));
}

}  // namespace

IntRect intersection(const IntRect& a, const IntRect& b) {
    const std::int64_t left = std::max(a.left, b.left);
    const std::int64_t top = std::max(a.top, b.top);
    const std::int64_t width = std::min(a.right(), b.right()) - left;
    const std::int64_t height = std::min(a.bottom(), b.bottom()) - top;
    if (width < 1 || height < 1) return IntRect();
    return IntRect(std::int32_t(left), std::int32_t(top), clampToInt(width), clampToInt(height));
}

IntRect unionOf(const IntRect& a, const IntRect& b) {
    if (a.width == 0 && a.height == 0) return b;
    if (b.width == 0 && b.height == 0) return a;
    const std::int64_t left = std::min(a.left, b.left);
    const std::int64_t top = std::min(a.top, b.top);
    const std::int64_t right = std::max(a.right(), b.right());
    const std::int64_t bottom = std::max(a.bottom(), b.bottom());
    return IntRect(std::int32_t(left), std::int32_t(top), clampToInt(right - left), clampToInt(bottom - top));
}

}  // namespace OrlPixels
