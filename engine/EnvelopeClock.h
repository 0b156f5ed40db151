// One envelope clock per voice, at frame rate: attack up to 1, decay down to
// 0, and loop, each loop lower by loopDecay, until the loop height dies.
// States: 0 done, 1 attack, 2 decay.
#pragma once

#include <cstdint>

#include "engine/BranchParams.h"

namespace engine {

struct EnvelopeCurveChoice {
    float vol = 0.0f;  // bias constant of this frame's volume curve
    float mod = 0.0f;  // and of the modulation curve
};

inline EnvelopeCurveChoice stepEnvelopeClock(uint8_t& envState, float& envPos, float& susRamp, float& loopScale,
                                             const BranchParams& p) {
    EnvelopeCurveChoice curves;
    if (envState == 1) {
        envPos += p.atkRate;
        susRamp = susRamp + p.atkRate < 1.0f ? susRamp + p.atkRate : 1.0f;
        if (envPos >= 1.0f) {
            envPos = susRamp = 1.0f;
            envState = 2;
        }
        curves.vol = p.volAtkBias;
        curves.mod = p.modAtkBias;
    } else if (envState == 2) {
        envPos -= p.dcyRate;
        if (envPos < 0.0f) {
            envPos = 0.0f;
            loopScale *= p.loopDecay;
            if (loopScale < 0.0001f) loopScale = 0.0f;
            envState = loopScale != 0.0f ? 1 : 0;
        }
        curves.vol = p.volDcyBias;
        curves.mod = p.modDcyBias;
    }
    return curves;
}

// With the clock done and no sustain the voice ends by itself.
inline bool envelopeEnds(uint8_t envState, float smoothedVolSus) {
    return envState == 0 && smoothedVolSus < 1e-5f;
}

// The release: an exponential fall once the key is up (factor below 1), and
// a linear fade on top for killed and stolen voices. False when the gain
// died: the gain is then 0.
inline bool stepReleaseGain(float& releaseGain, float factor, float fadeRate) {
    const float g = factor * releaseGain - fadeRate;
    if (g < 1e-5f) {
        releaseGain = 0.0f;
        return false;
    }
    releaseGain = g;
    return true;
}

}  // namespace engine
