// Oscillator B: 16 samples of the wave shape at a constant step. Its phase
// is not accumulated: it is derived every frame from the sub-oscillator's,
// at exactly twice its rate, so the two stay locked.
#pragma once

#include "engine/WaveShape.h"

namespace engine {

// bPhase = 2 (subPhase - 0.5) when subPhase >= 0.5, else 2 subPhase.
inline float bPhaseFromSubPhase(float subPhase) {
    return 2.0f * (subPhase >= 0.5f ? subPhase - 0.5f : subPhase);
}

void renderOscillatorB(float bPhase, float fB, const WaveShape& shape, float* out16);

// B as the voice hears it before the hold, in one pass: the wave, swung by
// the sub-oscillator (from subAmount 1e-5 on), times tone, plus noise16.
// The same as renderOscillatorB, applySubOscillator, then out * tone + noise.
void renderVoiceB(float bPhase, float subPhase, float fB, const WaveShape& shape, float subAmount, float tone,
                  const float* noise16, float* out16);

}  // namespace engine
