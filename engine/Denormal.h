// Recursive audio states pass through an add-and-subtract of 0.0001 at fixed
// places. That throws away every bit below the offset's size, so no state can
// decay into denormal numbers and the sound is the same with and without
// flush-to-zero. Where it stands is part of the sound: do not move it.
#pragma once

#include <emmintrin.h>

namespace engine {

inline float dropTinyBits(float x) {
    return (x + 0.0001f) - 0.0001f;
}

inline __m128 dropTinyBits(__m128 x) {
    const __m128 offset = _mm_set1_ps(0.0001f);
    return _mm_sub_ps(_mm_add_ps(x, offset), offset);
}

}  // namespace engine
