#include "engine/SubOscillator.h"

#include <emmintrin.h>

#include <cmath>

#include "engine/FrameSize.h"
#include "engine/PhaseWrap.h"

namespace engine {

void applySubOscillator(float* b, float subPhase, float fB, float amount) {
    if (amount < 1e-5f) return;
    const __m128 absMask = _mm_castsi128_ps(_mm_set1_epi32(0x7FFFFFFF));
    const __m128 half = _mm_set1_ps(fB / 2.0f);
    const __m128 start = _mm_set1_ps(subPhase);
    const __m128 gain = _mm_set1_ps(amount);
    const __m128 one = _mm_set1_ps(1.0f);
    __m128 index = _mm_setr_ps(0.0f, 1.0f, 2.0f, 3.0f);
    for (int i = 0; i < kFrameSamples; i += 4) {
        const __m128 u = _mm_sub_ps(wrapPhase(_mm_add_ps(start, _mm_mul_ps(index, half))), _mm_set1_ps(0.5f));
        // (24 - 32 |u|) u^2 - 1
        const __m128 s = _mm_sub_ps(
            _mm_mul_ps(_mm_sub_ps(_mm_set1_ps(24.0f), _mm_mul_ps(_mm_set1_ps(32.0f), _mm_and_ps(u, absMask))),
                       _mm_mul_ps(u, u)),
            one);
        _mm_storeu_ps(b + i, _mm_mul_ps(_mm_loadu_ps(b + i), _mm_add_ps(_mm_mul_ps(s, gain), one)));
        index = _mm_add_ps(index, _mm_set1_ps(4.0f));
    }
}

float advanceSubPhase(float subPhase, float fB) {
    const float p = subPhase + 8.0f * fB;
    return p - std::floor(p);
}

}  // namespace engine
