// Aliasing of the oscillators is held down by averaging one to three phase
// points per sample, chosen by the frequency in cycles per sample.
#pragma once

#include "engine/PhaseWrap.h"
#include "engine/WaveShape.h"

namespace engine {

// 1 below 0.0025, 2 below 0.01, else 3.
inline int oversamplingPoints(float f) {
    return f < 0.0025f ? 1 : (f < 0.01f ? 2 : 3);
}

// Four samples: phase already in 0 to 1, f the step of each lane. The extra
// points p + f/2 (or p + f/3 and p + 2f/3) are wrapped like any phase.
template <int W>
TENDRANE_LANES_INLINE Lanes<W> oversampledShape(const ShapeLanes<W>& w, Lanes<W> phase, Lanes<W> f, int points) {
    using L = Lanes<W>;
    const L s0 = w.shape(phase);
    if (points == 1) return s0;
    if (points == 2) {
        const L s1 = w.shape(wrapPhase(phase + f * L(0.5f)));
        return (s0 + s1) * L(0.5f);
    }
    const L s1 = w.shape(wrapPhase(phase + f * L(1.0f / 3.0f)));
    const L s2 = w.shape(wrapPhase(phase + f * L(2.0f / 3.0f)));
    return (s0 + s1 + s2) * L(1.0f / 3.0f);
}

}  // namespace engine
