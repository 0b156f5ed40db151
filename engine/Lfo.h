// The voice's triangle LFO, advanced once per block, and the tremolo it
// drives.
#pragma once

#include <cmath>

namespace engine {

// A triangle from 1 to -1 to 1 over the phase.
inline float lfoValue(float lfoPhase) {
    return std::fabs(4.0f * lfoPhase - 2.0f) - 1.0f;
}

inline float advanceLfo(float lfoPhase, float step) {
    const float p = lfoPhase + step;
    return p - std::floor(p);
}

inline float tremoloGain(float lfo, float tremolo) {
    return ((0.5f * lfo + 0.5f) * 1.4142135f - 1.0f) * tremolo + 1.0f;
}

}  // namespace engine
