// The sub-oscillator ring-modulates oscillator B with a sine-like wave one
// octave below it: B's amplitude swings between 1 - amount and 1 + amount.
#pragma once

namespace engine {

// Below an amount of 1e-5 the frame is left alone.
void applySubOscillator(float* b16, float subPhase, float fB, float amount);

// The sub phase after a frame: 16 samples at fB / 2, wrapped by floor.
float advanceSubPhase(float subPhase, float fB);

}  // namespace engine
