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

void filterNoises(float& bState1, float& bState2, const float* bRaw, float fB, float bNoise, float& aState,
                  const float* aRaw, float aGain, float aCoef, float* bOut, float* aOut) {
    const float k = 1.0f - std::exp(-6.2831855f * fB);
    const float g = std::sqrt(bNoise * 0.5f / fB);
    float s1 = bState1, s2 = bState2, a = aState;
    for (int i = 0; i < kFrameSamples; ++i) {
        s1 += (bRaw[i] * g - s1) * k;
        a += (aRaw[i] * aGain - a) * aCoef;
        s2 += (s1 - s2) * k;
        bOut[i] = s2;
        aOut[i] = a;
    }
    bState1 = dropTinyBits(s1);
    bState2 = dropTinyBits(s2);
    aState = dropTinyBits(a);
}

}  // namespace engine
