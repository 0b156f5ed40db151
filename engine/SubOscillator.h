// The sub-oscillator ring-modulates oscillator B with a sine-like wave one
// octave below it: B's amplitude swings between 1 - amount and 1 + amount.
#pragma once

#include <emmintrin.h>

#include "engine/PhaseWrap.h"

namespace engine {

// The swing of four samples: (24 - 32 |u|) u^2 - 1 with u the sub phase less
// one half, times amount, plus 1. index counts samples from the frame start.
inline __m128 subOscillatorSwing(__m128 index, __m128 subPhase, __m128 halfStep, __m128 amount) {
    const __m128 absMask = _mm_castsi128_ps(_mm_set1_epi32(0x7FFFFFFF));
    const __m128 one = _mm_set1_ps(1.0f);
    const __m128 u = _mm_sub_ps(wrapPhase(_mm_add_ps(subPhase, _mm_mul_ps(index, halfStep))), _mm_set1_ps(0.5f));
    const __m128 s = _mm_sub_ps(
        _mm_mul_ps(_mm_sub_ps(_mm_set1_ps(24.0f), _mm_mul_ps(_mm_set1_ps(32.0f), _mm_and_ps(u, absMask))),
                   _mm_mul_ps(u, u)),
        one);
    return _mm_add_ps(_mm_mul_ps(s, amount), one);
}

// Below an amount of 1e-5 the frame is left alone.
void applySubOscillator(float* b16, float subPhase, float fB, float amount);

// The sub phase after a frame: 16 samples at fB / 2, wrapped by floor.
float advanceSubPhase(float subPhase, float fB);

}  // namespace engine
