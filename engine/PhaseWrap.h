// Fractional part of a phase without a branch: add 48, so that the float lies
// between 32 and 64 where the exponent is fixed, mask off the top five
// mantissa bits, subtract 32. The result keeps 18 bits of resolution, which is
// the resolution of every sample-rate oscillator phase. Valid for phases from
// -16 to 16.
#pragma once

#include "engine/Lanes.h"

namespace engine {

template <int W>
TENDRANE_LANES_INLINE Lanes<W> wrapPhase(Lanes<W> p) {
    return andBits(p + Lanes<W>(48.0f), 0x4203FFFFu) - Lanes<W>(32.0f);
}

inline float wrapPhase(float p) { return wrapPhase(Lanes<1>(p))[0]; }

// The same trick at the scale 128 to 256 (16 bits), for the reverb's slow
// modulators: valid from -64 to 64.
template <int W>
TENDRANE_LANES_INLINE Lanes<W> wrapSlowPhase(Lanes<W> p) {
    return andBits(p + Lanes<W>(192.0f), 0x4300FFFFu) - Lanes<W>(128.0f);
}

}  // namespace engine
