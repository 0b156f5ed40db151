// Oscillator B modulates the phase step of oscillator A. The index is
// limited so that the step can't pass the band limit even at the top of a
// swing; negative steps are allowed.
#pragma once

namespace engine {

// depth = fmDepth + fmDepthMod * modHold, clamped to +-max(maxFreq / fA - 1, 0).
float limitedFmDepth(float fmDepth, float fmDepthMod, float modHold, float fA, float maxFreq);

// step[i] = (b[i] * depth + 1) * fA
void fmSteps(const float* b16, float depth, float fA, float* step16);

}  // namespace engine
