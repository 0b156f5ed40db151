#include "engine/FrequencyModulation.h"

#include <emmintrin.h>

#include <algorithm>

#include "engine/FrameSize.h"

namespace engine {

float limitedFmDepth(float fmDepth, float fmDepthMod, float modHold, float fA, float maxFreq) {
    const float depth = fmDepth + fmDepthMod * modHold;
    const float lim = std::max(maxFreq / fA - 1.0f, 0.0f);
    return std::min(std::max(depth, -lim), lim);
}

void fmSteps(const float* b, float depth, float fA, float* step) {
    const __m128 d = _mm_set1_ps(depth);
    const __m128 f = _mm_set1_ps(fA);
    const __m128 one = _mm_set1_ps(1.0f);
    for (int i = 0; i < kFrameSamples; i += 4)
        _mm_storeu_ps(step + i, _mm_mul_ps(_mm_add_ps(_mm_mul_ps(_mm_loadu_ps(b + i), d), one), f));
}

}  // namespace engine
