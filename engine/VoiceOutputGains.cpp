#include "engine/VoiceOutputGains.h"

#include <emmintrin.h>

#include <cmath>

#include "engine/Denormal.h"
#include "engine/FrameSize.h"

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
        const __m128 quarter = _mm_set1_ps(s / 4.0f);
        now = _mm_add_ps(_mm_set1_ps(gain), _mm_mul_ps(_mm_setr_ps(0.0f, 1.0f, 2.0f, 3.0f), quarter));
        advance = _mm_set1_ps(s);
    }
    float end(float gain) const { return dropTinyBits(gain + 4.0f * s); }
    float s;
    __m128 now, advance;
};

}  // namespace

void addFrameToBuses(const float* x, const VoiceOutputGains& gains, float amp, float gainStep, float& gainLeft,
                     float& gainRight, float& gainSend, float* left, float* right, float* send) {
    // The three buses in one pass over the frame.
    Ramp l(gains.left * amp, gainStep, gainLeft), r(gains.right * amp, gainStep, gainRight),
        s(gains.send * amp, gainStep, gainSend);
    for (int i = 0; i < kFrameSamples; i += 4) {
        const __m128 v = _mm_loadu_ps(x + i);
        _mm_storeu_ps(left + i, _mm_add_ps(_mm_loadu_ps(left + i), _mm_mul_ps(v, l.now)));
        _mm_storeu_ps(right + i, _mm_add_ps(_mm_loadu_ps(right + i), _mm_mul_ps(v, r.now)));
        _mm_storeu_ps(send + i, _mm_add_ps(_mm_loadu_ps(send + i), _mm_mul_ps(v, s.now)));
        l.now = _mm_add_ps(l.now, l.advance);
        r.now = _mm_add_ps(r.now, r.advance);
        s.now = _mm_add_ps(s.now, s.advance);
    }
    gainLeft = l.end(gainLeft);
    gainRight = r.end(gainRight);
    gainSend = s.end(gainSend);
}

}  // namespace engine
