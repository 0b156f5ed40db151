#include "pixels/Png.h"

namespace OrlPixels {

std::vector<std::uint8_t> straightRgba(const Pixel* pixels, int width, int height, int stride) {
    std::vector<std::uint8_t> out;
    if (width <= 0 || height <= 0) return out;
    out.reserve(std::size_t(width) * std::size_t(height) * 4);
    for (int y = 0; y < height; ++y) {
        const Pixel* row = pixels + std::ptrdiff_t(y) * stride;
        for (int x = 0; x < width; ++x) {
            const Pixel p = row[x];
            const std::uint32_t a = p >> 24;
            const std::uint32_t channels[3] = {(p >> 16) & 0xFFu, (p >> 8) & 0xFFu, p & 0xFFu};
            for (std::uint32_t c : channels) {
                std::uint32_t v = 0;
                if (a != 0) {
                    v = (c * 255 + a / 2) / a;
                    if (v > 255) v = 255;
                }
                out.push_back(std::uint8_t(v));
            }
            out.push_back(std::uint8_t(a));
        }
    }
    return out;
}

}  // namespace OrlPixels
