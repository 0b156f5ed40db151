#include "engine/VoiceOutputGains.h"

#include <cmath>

#include "engine/Denormal.h"
#include "engine/FrameSize.h"
#include "engine/Lanes.h"

namespace engine {

float parabolicSine(float x) {
    const float turns = x / 6.2831855f;
    const float u = 2.0f * (turns - std::floor(turns)) - 1.0f;
    return std::fabs(4.0f * u * (std::fabs(u) - 1.0f));
}

VoiceOutputGains voiceOutputGains(float pan, float dryGain, float sendGain) {
    const float th = (pan + 1.0f) * 0.7853982f;
    auto flushed = [](float g) { return std::fabs(g) < 1e-8f ? 0.0f : g; };
    VoiceOutputGains g;
    g.left = flushed(parabolicSine(th + 1.5707964f) * dryGain);
    g.right = flushed(parabolicSine(th) * dryGain);
    g.send = flushed(sendGain);
    return g;
}

namespace {

// A gain's first four samples and its advance over four: it moves a quarter
// of (target - gain) * gainStep per sample.
struct Ramp {
    Ramp(float target, float gainStep, float gain) {
        s = (target - gain) * gainStep;
        now = Lanes<4>(gain) + Lanes<4>::ramp() * Lanes<4>(s / 4.0f);
        advance = Lanes<4>(s);
    }
    float end(float gain) const { return dropTinyBits(gain + 4.0f * s); }
    float s;
    Lanes<4> now, advance;
};

}  // namespace

void addFrameToBuses(const float* x, const VoiceOutputGains& gains, float amp, float gainStep, float& gainLeft,
                     float& gainRight, float& gainSend, float* left, float* right, float* send) {
    // The three buses in one pass over the frame.
    Ramp l(gains.left * amp, gainStep, gainLeft), r(gains.right * amp, gainStep, gainRight),
        s(gains.send * amp, gainStep, gainSend);
    using L = Lanes<4>;
    for (int i = 0; i < kFrameSamples; i += 4) {
        const L v = L::load(x + i);
        (L::load(left + i) + v * l.now).store(left + i);
        (L::load(right + i) + v * r.now).store(right + i);
        (L::load(send + i) + v * s.now).store(send + i);
        l.now = l.now + l.advance;
        r.now = r.now + r.advance;
        s.now = s.now + s.advance;
    }
    gainLeft = l.end(gainLeft);
    gainRight = r.end(gainRight);
    gainSend = s.end(gainSend);
}

}  // namespace engine
