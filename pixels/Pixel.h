// One pixel is a premultiplied 32-bit word A<<24 | R<<16 | G<<8 | B; one
// coverage value is a byte. The helpers here are the arithmetic every node
// shares: the factor k(), the opacity test and the channel-pair operations.
#pragma once

#include <cstdint>

namespace OrlPixels {

typedef std::uint32_t Pixel;
typedef std::uint8_t Coverage;

// A pixel counts as opaque from alpha 0xFE up, on purpose.
const Pixel OPAQUE_LIMIT = 0xFE000000u;

inline bool isOpaquePixel(Pixel p) { return p >= OPAQUE_LIMIT; }
inline bool isOpaqueCoverage(Coverage c) { return c == 255; }

// k(v) = v + 1 for v != 0, k(0) = 0: 0 stays 0 and 255 scales by 256/256.
inline std::uint32_t scaleFactor(std::uint32_t v) { return v != 0 ? v + 1 : 0; }

// Scales all four channels by f / 256 (f from 0 to 256).
inline Pixel scalePixel(Pixel c, std::uint32_t f) {
    return (((c & 0x00FF00FFu) * f >> 8) & 0x00FF00FFu) + ((((c & 0xFF00FF00u) >> 8) * f) & 0xFF00FF00u);
}

// Source s over backdrop d.
inline Pixel overPixel(Pixel s, Pixel d) {
    const std::uint32_t f = scaleFactor(s >> 24);
    return s + d - (((d & 0x00FF00FFu) * f >> 8) & 0x00FF00FFu) - ((((d & 0xFF00FF00u) >> 8) * f) & 0xFF00FF00u);
}

// Channel-wise saturated sum, four bytes at once.
inline Pixel addPixel(Pixel a, Pixel b) {
    const std::uint32_t p = (a & 0x7F7F7F7Fu) + (b & 0x7F7F7F7Fu);
    const std::uint32_t h = (a | b) & 0x80808080u;
    const std::uint32_t c = (a & b & 0x80808080u) | (p & h);
    return p | h | (((c >> 7) + 0x7F7F7F7Fu) ^ 0x7F7F7F7Fu);
}

// Channel-wise a * k(b) >> 8, alpha included.
inline Pixel multiplyPixel(Pixel a, Pixel b) {
    Pixel r = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const std::uint32_t ca = (a >> shift) & 0xFFu;
        const std::uint32_t cb = (b >> shift) & 0xFFu;
        r |= ((ca * scaleFactor(cb)) >> 8) << shift;
    }
    return r;
}

// Blend from c0 to c1 by weight t (0 to 256), odd and even channels apart.
inline Pixel lerpPixel(Pixel c0, Pixel c1, std::uint32_t t) {
    const std::uint32_t high =
        ((c0 & 0xFF00FF00u) + (((c1 & 0xFF00FF00u) >> 8) - ((c0 & 0xFF00FF00u) >> 8)) * t) & 0xFF00FF00u;
    const std::uint32_t low =
        ((c0 & 0x00FF00FFu) + ((t * ((c1 & 0x00FF00FFu) - (c0 & 0x00FF00FFu))) >> 8)) & 0x00FF00FFu;
    return high + low;
}

}  // namespace OrlPixels
