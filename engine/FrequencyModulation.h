// Oscillator B modulates the phase step of oscillator A. The index is
// limited so that the step can't pass the band limit even at the top of a
// swing; negative steps are allowed.
#pragma once

#include "engine/FrameSize.h"
#include "engine/Lanes.h"

namespace engine {

// depth = fmDepth + fmDepthMod * modHold, clamped to +-max(maxFreq / fA - 1, 0).
float limitedFmDepth(float fmDepth, float fmDepthMod, float modHold, float fA, float maxFreq);

// step[i] = (b[i] * depth + 1) * fA
inline void fmSteps(const float* b16, float depth, float fA, float* step16) {
    using L = Lanes<4>;
    const L d(depth), f(fA), one(1.0f);
    for (int i = 0; i < kFrameSamples; i += 4) ((L::load(b16 + i) * d + one) * f).store(step16 + i);
}

}  // namespace engine
