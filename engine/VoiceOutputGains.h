// A voice's levels into the left, right and send buses, from its pan, with
// constant power to within a parabolic sine; and the ramps that carry a
// frame into the buses.
#pragma once

namespace engine {

struct VoiceOutputGains {
    float left = 0.0f;
    float right = 0.0f;
    float send = 0.0f;
};

// |4 u (|u| - 1)| with u the phase of x / (2 pi) mapped to -1..1.
float parabolicSine(float x);

// Per block, from the smoothed pan (-1 to 1); each flushed to 0 below 1e-8.
VoiceOutputGains voiceOutputGains(float pan, float dryGain, float sendGain);

// Adds one 16-sample frame into the three buses. Each bus gain moves a
// quarter of (target - gain) * gainStep per sample towards gains * amp and
// ends the frame through the denormal step.
void addFrameToBuses(const float* x16, const VoiceOutputGains& gains, float amp, float gainStep, float& gainLeft,
                     float& gainRight, float& gainSend, float* left16, float* right16, float* send16);

}  // namespace engine
