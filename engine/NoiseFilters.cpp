#include "engine/NoiseFilters.h"

#include <cmath>

#include "engine/Denormal.h"
#include "engine/FrameSize.h"

namespace engine {

void filterBNoise(float& state1, float& state2, const float* noise, float fB, float bNoise, float* out) {
    const float k = 1.0f - std::exp(-6.2831855f * fB);
    const float g = std::sqrt(bNoise * 0.5f / fB);
    float s1 = state1, s2 = state2;
    for (int i = 0; i < kFrameSamples; ++i) {
        s1 += (noise[i] * g - s1) * k;
        s2 += (s1 - s2) * k;
        out[i] = s2;
    }
    state1 = dropTinyBits(s1);
    state2 = dropTinyBits(s2);
}

void filterANoise(float& state, const float* noise, float gain, float coef, float* out) {
    float s = state;
    for (int i = 0; i < kFrameSamples; ++i) {
        s += (noise[i] * gain - s) * coef;
        out[i] = s;
    }
    state = dropTinyBits(s);
}

}  // namespace engine
