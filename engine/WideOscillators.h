// The voice's two oscillator loops eight samples at a time, for processors
// with 256-bit registers. They take the same steps on every sample as the
// four-sample loops, so a voice sounds the same bit for bit on any x86
// processor; only the speed differs.
#pragma once

#include "engine/OscillatorA.h"
#include "engine/WaveShape.h"
#include "engine/WideProcessor.h"

namespace engine::wide {

// The same as engine::renderVoiceA and engine::renderVoiceB; call only when
// available().
void renderVoiceA(float& aPhase, const float* step16, float meanStep, const WaveShape& shape, float aGain,
                  const float* b16, float bGain, const float* noise16, float* out16);
void renderVoicesA(const VoiceAJob* jobs, int count);
void renderVoiceB(float bPhase, float subPhase, float fB, const WaveShape& shape, float subAmount, float tone,
                  const float* noise16, float* out16);

}  // namespace engine::wide
