// The sub-oscillator ring-modulates oscillator B with a sine-like wave one
// octave below it: B's amplitude swings between 1 - amount and 1 + amount.
#pragma once

#include "engine/PhaseWrap.h"

namespace engine {

// The swing of four samples: (24 - 32 |u|) u^2 - 1 with u the sub phase less
// one half, times amount, plus 1. index counts samples from the frame start.
template <int W>
TENDRANE_LANES_INLINE Lanes<W> subOscillatorSwing(Lanes<W> index, Lanes<W> subPhase, Lanes<W> halfStep,
                                                  Lanes<W> amount) {
    using L = Lanes<W>;
    const L u = wrapPhase(subPhase + index * halfStep) - L(0.5f);
    const L s = (L(24.0f) - L(32.0f) * andBits(u, 0x7FFFFFFFu)) * (u * u) - L(1.0f);
    return s * amount + L(1.0f);
}

void applySubOscillator(float* b16, float subPhase, float fB, float amount);

// The sub phase after a frame: 16 samples at fB / 2, wrapped by floor.
float advanceSubPhase(float subPhase, float fB);

}  // namespace engine
