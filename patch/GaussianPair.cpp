#include "patch/GaussianPair.h"

#include <cmath>

bool gaussianFromPoint(int32_t x, int32_t y, GaussianPair& pair) {
    const int64_t s = static_cast<int64_t>(x) * x + static_cast<int64_t>(y) * y;
    const int32_t high = static_cast<int32_t>(static_cast<uint64_t>(s) >> 32);
    if (high < 16 || high >= 0x0FFFFFF0) return false;

    const float fx = static_cast<float>(x) * 0x1p-30f;
    const float fy = static_cast<float>(y) * 0x1p-30f;
    const float w = static_cast<float>(s) * 0x1p-60f;
    // The 32-bit logarithm correctly rounded: taken through double precision so
    // that every platform's library gives the same bits.
    const float ln = static_cast<float>(std::log(static_cast<double>(w)));
    const float r = std::sqrt(-2.0f * ln / w);
    pair.first = fx * r;
    pair.second = fy * r;
    return true;
}

GaussianPair nextGaussianPair(SeededGenerator& generator) {
    GaussianPair pair;
    for (;;) {
        generator.step();
        if (gaussianFromPoint(halfOfWord(generator.a), halfOfWord(generator.b), pair)) return pair;
    }
}
