#include "engine/WaveShape.h"

#include <algorithm>

namespace engine {

namespace {

// Raised to at least 1e-5, then lowered to at most 0.5.
float bounded(float x) { return std::min(std::max(x, 1e-5f), 0.5f); }

}  // namespace

WaveShape WaveShape::make(float form, float freq) {
    // The shortest allowed edge: edges soften as the pitch rises.
    const float s = (1.4142135f * freq + 2.0f) * freq;
    WaveShape w;
    if (form < 0.33333f) {
        const float g = 1.0f - form / 0.33333f;
        w.fall = bounded(std::max(s, 0.5f * g * g));
        w.rise = w.fall;
        w.top = 1.0f;
        w.fallGain = 4.0f / w.fall;
        w.riseGain = 4.0f / (1.0f - w.fall);
        w.offset = 1.0003182f;
        return w;
    }
    w.fall = bounded(s);
    if (form < 0.66666f) {
        const float t = 1.0f - (form - 0.33333f) / 0.33333f;
        const float q = t * t;
        const float h = 0.5f * q + 0.5f;
        w.rise = std::min(std::max((1.0f - q) * h, w.fall), 1.0f - w.fall);
        w.top = std::max(w.fall + w.rise, h);
    } else {
        const float t = 1.0f - (form - 0.66666f) / 0.33334f;
        const float p = 0.5f * (t * t);
        w.rise = std::min(std::max(p, w.fall), 1.0f - w.fall);
        w.top = std::max(w.fall + w.rise, p);
    }
    w.fallGain = 4.0f / w.fall;
    w.riseGain = 4.0f / (w.top - w.rise);
    // Takes out the mean of a wave with unequal low and high stretches.
    w.offset = (1.0f - w.top - w.rise + w.fall) + 1.0003182f;
    return w;
}

}  // namespace engine
