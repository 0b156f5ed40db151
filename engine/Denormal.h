// Recursive audio states pass through an add-and-subtract of 0.0001 at fixed
// places. That throws away every bit below the offset's size, so no state can
// decay into denormal numbers and the sound is the same with and without
// flush-to-zero. Where it stands is part of the sound: do not move it.
#pragma once

#include "engine/Lanes.h"

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#endif

namespace engine {

template <int W>
TENDRANE_LANES_INLINE Lanes<W> dropTinyBits(Lanes<W> x) {
    const Lanes<W> offset(0.0001f);
    return (x + offset) - offset;
}

inline float dropTinyBits(float x) { return dropTinyBits(Lanes<1>(x))[0]; }

#if defined(__SSE2__) || defined(_M_X64)
// The same on a register of the loops still written for the processor.
inline __m128 dropTinyBits(__m128 x) {
    alignas(16) float v[4];
    _mm_store_ps(v, x);
    dropTinyBits(Lanes<4>::load(v)).store(v);
    return _mm_load_ps(v);
}
#endif

}  // namespace engine
