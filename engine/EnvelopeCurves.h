// The envelope position is read through two curves: one for the volume, one
// for the modulation. bias(x, b) bends 0..1 onto itself; b = 0.5 is the
// straight line.
#pragma once

#include <algorithm>

namespace engine {

inline float bias(float x, float b) {
    return b * x / (1.0f - b + (2.0f * b - 1.0f) * x);
}

// The frame's amplitude: the curve to the fourth power, scaled by the loop
// height, with the sustain as a floor that rises with the first attack.
inline float envelopeAmp(float envPos, float volCurve, float loopScale, float susRamp, float volSus, float velGain,
                         float releaseGain, float tremoloGain) {
    const float e = bias(envPos, volCurve);
    const float e2 = e * e;
    const float v = e2 * e2 * loopScale;
    return (v + (0.70710677f - v) * susRamp * volSus) * velGain * releaseGain * tremoloGain;
}

// The modulation signal, sampled and held at modHoldRate per frame (1 means
// every frame). It has no sustain: it follows only the loops.
inline void stepModHold(float& modHold, float& accumulator, float rate, float loopScale, float envPos, float modCurve,
                        float modVelocity) {
    accumulator += rate;
    if (accumulator >= 1.0f) {
        accumulator -= 1.0f;
        modHold = std::min(std::max(loopScale * bias(envPos, modCurve) * modVelocity, 0.0f), 1.0f);
    }
}

}  // namespace engine
