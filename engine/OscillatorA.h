// Oscillator A: its phase follows a step per sample (frequency modulation
// included; a negative step runs it backwards). The accumulator is reduced
// with floor at every fourth sample; the oversampling points use each
// sample's own step, while their number follows the smoothed mean step.
#pragma once

#include "engine/FrameSize.h"
#include "engine/Lanes.h"
#include "engine/WaveShape.h"

namespace engine {

// meanStep += (stepSmooth / 16) * sum |step|, before the oscillator runs.
inline float addMeanStep(float meanStep, const float* step16, float stepSmooth) {
    using L = Lanes<4>;
    L sum(0.0f);
    for (int i = 0; i < kFrameSamples; i += 4) sum = sum + andBits(L::load(step16 + i), 0x7FFFFFFFu);
    const float total = (sum[0] + sum[1]) + (sum[2] + sum[3]);
    return meanStep + (stepSmooth / 16.0f) * total;
}

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
