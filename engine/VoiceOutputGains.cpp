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

void rampInto(const float* x, float target, float gainStep, float& gain, float* bus) {
    const float s = (target - gain) * gainStep;
    const __m128 quarter = _mm_set1_ps(s / 4.0f);
    __m128 g = _mm_add_ps(_mm_set1_ps(gain), _mm_mul_ps(_mm_setr_ps(0.0f, 1.0f, 2.0f, 3.0f), quarter));
    const __m128 advance = _mm_set1_ps(s);  // four samples of s / 4
    for (int i = 0; i < kFrameSamples; i += 4) {
        _mm_storeu_ps(bus + i, _mm_add_ps(_mm_loadu_ps(bus + i), _mm_mul_ps(_mm_loadu_ps(x + i), g)));
        g = _mm_add_ps(g, advance);
    }
    gain = dropTinyBits(gain + 4.0f * s);
}

}  // namespace

void addFrameToBuses(const float* x, const VoiceOutputGains& gains, float amp, float gainStep, float& gainLeft,
                     float& gainRight, float& gainSend, float* left, float* right, float* send) {
    rampInto(x, gains.left * amp, gainStep, gainLeft, left);
    rampInto(x, gains.right * amp, gainStep, gainRight, right);
    rampInto(x, gains.send * amp, gainStep, gainSend, send);
}

}  // namespace engine
