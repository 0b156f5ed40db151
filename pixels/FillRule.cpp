#include "pixels/FillRule.h"

#include <cstdint>

namespace OrlPixels {

namespace {

class NonZeroFillRule : public FillRule {
public:
    void convert(int count, const int* areas, unsigned char* coverage) const override {
        for (int i = 0; i < count; ++i) {
            const std::uint32_t v = std::uint32_t(areas[i]);
            const std::uint32_t a = (areas[i] < 0 ? 0u - v : v) >> 8;
            coverage[i] = (unsigned char)(a < 255 ? a : 255);
        }
    }
};

class EvenOddFillRule : public FillRule {
public:
    void convert(int count, const int* areas, unsigned char* coverage) const override {
        for (int i = 0; i < count; ++i) {
            const std::uint32_t area = std::uint32_t(areas[i]);
            std::uint32_t a = area & 0xFFFFu;
            if (area & 0x10000u) a = (~area & 0xFFFFu) + 1;
            a >>= 8;
            coverage[i] = (unsigned char)(a < 255 ? a : 255);
        }
    }
};

const NonZeroFillRule nonZeroInstance;
const EvenOddFillRule evenOddInstance;

}  // namespace

const FillRule& nonZeroFillRule = nonZeroInstance;
const FillRule& evenOddFillRule = evenOddInstance;

}  // namespace OrlPixels
