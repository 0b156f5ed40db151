#include "engine/NoiseFilters.h"

#include <emmintrin.h>

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

void filterNoisesFour(const NoiseJob* j) {
    alignas(16) float k[4], g[4], s1[4], s2[4], a[4], aGain[4], aCoef[4];
    for (int v = 0; v < 4; ++v) {
        // A quiet filter has zero states: with zero coefficients its lane
        // computes +0 throughout, the zeros it would have been given.
        k[v] = j[v].bQuiet ? 0.0f : 1.0f - std::exp(-6.2831855f * j[v].fB);
        g[v] = j[v].bQuiet ? 0.0f : std::sqrt(j[v].bNoise * 0.5f / j[v].fB);
        s1[v] = *j[v].bState1;
        s2[v] = *j[v].bState2;
        a[v] = *j[v].aState;
        aGain[v] = j[v].aQuiet ? 0.0f : j[v].aGain;
        aCoef[v] = j[v].aQuiet ? 0.0f : j[v].aCoef;
    }
    const __m128 K = _mm_load_ps(k), G = _mm_load_ps(g), AG = _mm_load_ps(aGain), AC = _mm_load_ps(aCoef);
    __m128 S1 = _mm_load_ps(s1), S2 = _mm_load_ps(s2), A = _mm_load_ps(a);
    for (int i = 0; i < kFrameSamples; i += 4) {
        // Four samples of four voices, turned so that each register holds
        // one sample of every voice.
        __m128 b0 = _mm_loadu_ps(j[0].bRaw + i), b1 = _mm_loadu_ps(j[1].bRaw + i);
        __m128 b2 = _mm_loadu_ps(j[2].bRaw + i), b3 = _mm_loadu_ps(j[3].bRaw + i);
        __m128 r0 = _mm_loadu_ps(j[0].aRaw + i), r1 = _mm_loadu_ps(j[1].aRaw + i);
        __m128 r2 = _mm_loadu_ps(j[2].aRaw + i), r3 = _mm_loadu_ps(j[3].aRaw + i);
        _MM_TRANSPOSE4_PS(b0, b1, b2, b3);
        _MM_TRANSPOSE4_PS(r0, r1, r2, r3);
        __m128 bRaw[4] = {b0, b1, b2, b3}, aRaw[4] = {r0, r1, r2, r3};
        __m128 bOut[4], aOut[4];
        for (int n = 0; n < 4; ++n) {
            S1 = _mm_add_ps(S1, _mm_mul_ps(_mm_sub_ps(_mm_mul_ps(bRaw[n], G), S1), K));
            A = _mm_add_ps(A, _mm_mul_ps(_mm_sub_ps(_mm_mul_ps(aRaw[n], AG), A), AC));
            S2 = _mm_add_ps(S2, _mm_mul_ps(_mm_sub_ps(S1, S2), K));
            bOut[n] = S2;
            aOut[n] = A;
        }
        _MM_TRANSPOSE4_PS(bOut[0], bOut[1], bOut[2], bOut[3]);
        _MM_TRANSPOSE4_PS(aOut[0], aOut[1], aOut[2], aOut[3]);
        for (int v = 0; v < 4; ++v) {
            _mm_store_ps(j[v].bOut + i, bOut[v]);
            _mm_store_ps(j[v].aOut + i, aOut[v]);
        }
    }
    S1 = dropTinyBits(S1);
    S2 = dropTinyBits(S2);
    A = dropTinyBits(A);
    _mm_store_ps(s1, S1);
    _mm_store_ps(s2, S2);
    _mm_store_ps(a, A);
    for (int v = 0; v < 4; ++v) {
        *j[v].bState1 = s1[v];
        *j[v].bState2 = s2[v];
        *j[v].aState = a[v];
    }
}

}  // namespace engine
