// Oscillator B modulates the phase step of oscillator A. The index is
// limited so that the step can't pass the band limit even at the top of a
// swing; negative steps are allowed.
#pragma once

#include <emmintrin.h>

#include "engine/FrameSize.h"

namespace engine {

// depth = fmDepth + fmDepthMod * modHold, clamped to +-max(maxFreq / fA - 1, 0).
float limitedFmDepth(float fmDepth, float fmDepthMod, float modHold, float fA, float maxFreq);

// step[i] = (b[i] * depth + 1) * fA
inline void fmSteps(const float* b16, float depth, float fA, float* step16) {
    const __m128 d = _mm_set1_ps(depth);
    const __m128 f = _mm_set1_ps(fA);
    const __m128 one = _mm_set1_ps(1.0f);
    for (int i = 0; i < kFrameSamples; i += 4)
        _mm_storeu_ps(step16 + i, _mm_mul_ps(_mm_add_ps(_mm_mul_ps(_mm_loadu_ps(b16 + i), d), one), f));
}

}  // namespace engine
