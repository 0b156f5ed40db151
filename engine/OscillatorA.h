// Oscillator A: its phase follows a step per sample (frequency modulation
// included; a negative step runs it backwards). The accumulator is reduced
// with floor at every fourth sample; the oversampling points use each
// sample's own step, while their number follows the smoothed mean step.
#pragma once

#include "engine/WaveShape.h"

namespace engine {

// meanStep += (stepSmooth / 16) * sum |step|, before the oscillator runs.
float addMeanStep(float meanStep, const float* step16, float stepSmooth);

// Sample i sounds the phase before its own step is added.
void renderOscillatorA(float& aPhase, const float* step16, float meanStep, const WaveShape& shape, float* out16);

}  // namespace engine
