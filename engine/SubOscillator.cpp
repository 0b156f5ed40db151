#include "engine/SubOscillator.h"

#include <cmath>

#include "engine/FrameSize.h"

namespace engine {

void applySubOscillator(float* b, float subPhase, float fB, float amount) {
    if (amount < 1e-5f) return;
    const __m128 half = _mm_set1_ps(fB / 2.0f);
    const __m128 start = _mm_set1_ps(subPhase);
    const __m128 gain = _mm_set1_ps(amount);
    __m128 index = _mm_setr_ps(0.0f, 1.0f, 2.0f, 3.0f);
    for (int i = 0; i < kFrameSamples; i += 4) {
        _mm_storeu_ps(b + i, _mm_mul_ps(_mm_loadu_ps(b + i), subOscillatorSwing(index, start, half, gain)));
        index = _mm_add_ps(index, _mm_set1_ps(4.0f));
    }
}

float advanceSubPhase(float subPhase, float fB) {
    const float p = subPhase + 8.0f * fB;
    return p - std::floor(p);
}

}  // namespace engine
