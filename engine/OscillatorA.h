// Oscillator A: its phase follows a step per sample (frequency modulation
// included; a negative step runs it backwards). The accumulator is reduced
// with floor at every fourth sample; the oversampling points use each
// sample's own step, while their number follows the smoothed mean step.
#pragma once

#include <emmintrin.h>

#include "engine/FrameSize.h"
#include "engine/WaveShape.h"

namespace engine {

// meanStep += (stepSmooth / 16) * sum |step|, before the oscillator runs.
inline float addMeanStep(float meanStep, const float* step16, float stepSmooth) {
    const __m128 absMask = _mm_castsi128_ps(_mm_set1_epi32(0x7FFFFFFF));
    __m128 sum = _mm_setzero_ps();
    for (int i = 0; i < kFrameSamples; i += 4) sum = _mm_add_ps(sum, _mm_and_ps(_mm_loadu_ps(step16 + i), absMask));
    // (0 + 1) + (2 + 3), lanes taken from the register.
    const __m128 pairs = _mm_add_ps(sum, _mm_shuffle_ps(sum, sum, _MM_SHUFFLE(2, 3, 0, 1)));
    const float total = _mm_cvtss_f32(_mm_add_ss(pairs, _mm_movehl_ps(pairs, pairs)));
    return meanStep + (stepSmooth / 16.0f) * total;
}

// Sample i sounds the phase before its own step is added.
void renderOscillatorA(float& aPhase, const float* step16, float meanStep, const WaveShape& shape, float* out16);

// The voice's mix in the same pass: out = (A aGain + b bGain) + noise, with A
// as renderOscillatorA gives it.
void renderVoiceA(float& aPhase, const float* step16, float meanStep, const WaveShape& shape, float aGain,
                  const float* b16, float bGain, const float* noise16, float* out16);

// One voice's part in renderVoicesA: the arguments of renderVoiceA.
struct VoiceAJob {
    float* phase = nullptr;
    const float* step = nullptr;
    float meanStep = 0.0f;
    const WaveShape* shape = nullptr;
    float aGain = 0.0f;
    const float* b = nullptr;
    float bGain = 0.0f;
    const float* noise = nullptr;
    float* out = nullptr;
};

// Several voices at once, their phase chains side by side: each gets
// exactly what renderVoiceA gives it.
void renderVoicesA(const VoiceAJob* jobs, int count);

}  // namespace engine
