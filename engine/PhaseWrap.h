// Fractional part of a phase without a branch: add 48, so that the float lies
// between 32 and 64 where the exponent is fixed, mask off the top five
// mantissa bits, subtract 32. The result keeps 18 bits of resolution, which is
// the resolution of every sample-rate oscillator phase. Valid for phases from
// -16 to 16.
#pragma once

#include <emmintrin.h>

#include <cstdint>
#include <cstring>

namespace engine {

inline __m128 wrapPhase(__m128 p) {
    const __m128 mask = _mm_castsi128_ps(_mm_set1_epi32(0x4203FFFF));
    return _mm_sub_ps(_mm_and_ps(_mm_add_ps(p, _mm_set1_ps(48.0f)), mask), _mm_set1_ps(32.0f));
}

inline float wrapPhase(float p) {
    return _mm_cvtss_f32(wrapPhase(_mm_set_ss(p)));
}

// The same trick at the scale 128 to 256 (16 bits), for the reverb's slow
// modulators: valid from -64 to 64.
inline __m128 wrapSlowPhase(__m128 p) {
    const __m128 mask = _mm_castsi128_ps(_mm_set1_epi32(0x4300FFFF));
    return _mm_sub_ps(_mm_and_ps(_mm_add_ps(p, _mm_set1_ps(192.0f)), mask), _mm_set1_ps(128.0f));
}

}  // namespace engine
