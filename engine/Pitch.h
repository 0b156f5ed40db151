// The frequency ratio of a voice for one block: the record's pitch in
// octaves, tuning, the pitch wheel, vibrato and the key.
#pragma once

#include <cmath>

namespace engine {

// bend is the channel's signed wheel (-8192 to 8191), wheelRange in semitones.
inline float voicePitch(float recordPitch, float tuningOct, float wheelRange, int bend, float vibrato, float lfo,
                        float keyPitch) {
    const float octaves = recordPitch + tuningOct + wheelRange * float(bend) * 1.0172526e-5f + vibrato * lfo;
    return std::exp2(octaves) * keyPitch;
}

// How far the filter follows the key.
inline float keyFollowFactor(float pitch, float keyFollow) {
    return std::pow(pitch, keyFollow);
}

}  // namespace engine
