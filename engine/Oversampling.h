// Aliasing of the oscillators is held down by averaging one to three phase
// points per sample, chosen by the frequency in cycles per sample.
#pragma once

#include <emmintrin.h>

#include "engine/PhaseWrap.h"
#include "engine/WaveShape.h"

namespace engine {

// 1 below 0.0025, 2 below 0.01, else 3.
inline int oversamplingPoints(float f) {
    return f < 0.0025f ? 1 : (f < 0.01f ? 2 : 3);
}

// Four samples: phase already in 0 to 1, f the step of each lane. The extra
// points p + f/2 (or p + f/3 and p + 2f/3) are wrapped like any phase.
inline __m128 oversampledShape(const ShapeLanes& w, __m128 phase, __m128 f, int points) {
    const __m128 s0 = w.shape(phase);
    if (points == 1) return s0;
    if (points == 2) {
        const __m128 s1 = w.shape(wrapPhase(_mm_add_ps(phase, _mm_mul_ps(f, _mm_set1_ps(0.5f)))));
        return _mm_mul_ps(_mm_add_ps(s0, s1), _mm_set1_ps(0.5f));
    }
    const __m128 s1 = w.shape(wrapPhase(_mm_add_ps(phase, _mm_mul_ps(f, _mm_set1_ps(1.0f / 3.0f)))));
    const __m128 s2 = w.shape(wrapPhase(_mm_add_ps(phase, _mm_mul_ps(f, _mm_set1_ps(2.0f / 3.0f)))));
    return _mm_mul_ps(_mm_add_ps(_mm_add_ps(s0, s1), s2), _mm_set1_ps(1.0f / 3.0f));
}

inline __m128 oversampledShape(const WaveShape& w, __m128 phase, __m128 f, int points) {
    return oversampledShape(ShapeLanes(w), phase, f, points);
}

}  // namespace engine
