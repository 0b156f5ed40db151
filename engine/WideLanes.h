// Helpers for the loops that use 256-bit registers. Every function that
// touches such a register carries the target attribute: the rest of the
// program stays free of those instructions, and a processor check decides
// whether the wide loops run at all.
#pragma once

#include <immintrin.h>

#define TENDRANE_WIDE __attribute__((target("avx"), always_inline)) inline
#define TENDRANE_WIDE_ENTRY __attribute__((target("avx")))

namespace engine::wide {

TENDRANE_WIDE __m256 add(__m256 a, __m256 b) { return _mm256_add_ps(a, b); }
TENDRANE_WIDE __m256 sub(__m256 a, __m256 b) { return _mm256_sub_ps(a, b); }
TENDRANE_WIDE __m256 mul(__m256 a, __m256 b) { return _mm256_mul_ps(a, b); }
TENDRANE_WIDE __m256 all(float x) { return _mm256_set1_ps(x); }
// Four values into the low half, four into the high half.
TENDRANE_WIDE __m256 halves(const float* low4, const float* high4) {
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(low4)), _mm_loadu_ps(high4), 1);
}
TENDRANE_WIDE void storeHalves(__m256 v, float* low4, float* high4) {
    _mm_storeu_ps(low4, _mm256_castps256_ps128(v));
    _mm_storeu_ps(high4, _mm256_extractf128_ps(v, 1));
}
// The denormal step of the four-lane loops.
TENDRANE_WIDE __m256 dropTinyBits8(__m256 x) { return sub(add(x, all(0.0001f)), all(0.0001f)); }

}  // namespace engine::wide
