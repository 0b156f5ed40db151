#include "engine/StateVariableFilter.h"

#include <emmintrin.h>

#include <algorithm>

#include "engine/Denormal.h"
#include "engine/FrameSize.h"

namespace engine {

FilterCoefficients filterCoefficients(float f, float logDamp) {
    const float f2 = f * f;
    const float f4 = f2 * f2;
    // Damping changes with the frequency.
    const float D = (1.0f - 4.0f * f2) * logDamp;
    // exp(D) as (1 + D/16 (1 + D/32))^16, by four squarings.
    float e = 1.0f + 0.0625f * D * (1.0f + 0.03125f * D);
    e *= e;
    e *= e;
    e *= e;
    e *= e;
    FilterCoefficients k;
    k.d = e;
    // 2 sin(pi f), tuned to make up for the pitch shift of damping.
    k.c = f * (6.281745f - 10.28326f * f2 + 4.635304f * f4) - k.d * f2 * (9.813636f - 30.95644f * f2 + 30.93228f * f4);
    return k;
}

void filterFrequencies(float fc, float separation, float& f1, float& f2) {
    f1 = std::min(fc, 0.49f);
    f2 = std::min(fc * separation, 0.49f);
}

namespace {

// One sample of both filters; returns the new low states.
inline __m128 filterStep(__m128 x, __m128& low, __m128& band, __m128 c, __m128 d) {
    low = _mm_add_ps(low, _mm_mul_ps(c, band));
    const __m128 high = _mm_sub_ps(_mm_sub_ps(x, low), _mm_mul_ps(d, band));
    __m128 t = _mm_mul_ps(_mm_add_ps(_mm_mul_ps(c, high), band), _mm_set1_ps(0.04058442f));
    t = _mm_min_ps(_mm_max_ps(t, _mm_set1_ps(-1.0f)), _mm_set1_ps(1.0f));
    band = _mm_mul_ps(_mm_mul_ps(_mm_set1_ps(24.64f), t),
                      _mm_sub_ps(_mm_set1_ps(1.0f), _mm_mul_ps(_mm_set1_ps(0.3506494f), _mm_mul_ps(t, t))));
    return low;
}

inline float sumOfLows(__m128 low) {
    return _mm_cvtss_f32(low) + _mm_cvtss_f32(_mm_shuffle_ps(low, low, _MM_SHUFFLE(1, 1, 1, 1)));
}

}  // namespace

void renderFilterPair(float* low2, float* band2, const FilterCoefficients& first, const FilterCoefficients& second,
                      const float* in, float* out) {
    const __m128 c = _mm_setr_ps(first.c, second.c, 0.0f, 0.0f);
    const __m128 d = _mm_setr_ps(first.d, second.d, 0.0f, 0.0f);
    __m128 low = _mm_setr_ps(low2[0], low2[1], 0.0f, 0.0f);
    __m128 band = _mm_setr_ps(band2[0], band2[1], 0.0f, 0.0f);
    for (int i = 0; i < kFrameSamples; i += 4) {
        out[i] = sumOfLows(filterStep(_mm_set1_ps(in[i]), low, band, c, d));
        out[i + 1] = sumOfLows(filterStep(_mm_set1_ps(in[i + 1]), low, band, c, d));
        band = dropTinyBits(band);
        out[i + 2] = sumOfLows(filterStep(_mm_set1_ps(in[i + 2]), low, band, c, d));
        out[i + 3] = sumOfLows(filterStep(_mm_set1_ps(in[i + 3]), low, band, c, d));
        band = dropTinyBits(band);
        low = dropTinyBits(low);
    }
    alignas(16) float lanes[4];
    _mm_store_ps(lanes, low);
    low2[0] = lanes[0];
    low2[1] = lanes[1];
    _mm_store_ps(lanes, band);
    band2[0] = lanes[0];
    band2[1] = lanes[1];
}

void renderFilterPairs(float* lowA, float* bandA, const FilterCoefficients& firstA, const FilterCoefficients& secondA,
                       const float* inA, float* outA, float* lowB, float* bandB, const FilterCoefficients& firstB,
                       const FilterCoefficients& secondB, const float* inB, float* outB) {
    const __m128 c = _mm_setr_ps(firstA.c, secondA.c, firstB.c, secondB.c);
    const __m128 d = _mm_setr_ps(firstA.d, secondA.d, firstB.d, secondB.d);
    __m128 low = _mm_setr_ps(lowA[0], lowA[1], lowB[0], lowB[1]);
    __m128 band = _mm_setr_ps(bandA[0], bandA[1], bandB[0], bandB[1]);
    auto input = [&](int i) { return _mm_setr_ps(inA[i], inA[i], inB[i], inB[i]); };
    alignas(16) float lanes[4];
    auto store = [&](int i, __m128 l) {
        _mm_store_ps(lanes, l);
        outA[i] = lanes[0] + lanes[1];
        outB[i] = lanes[2] + lanes[3];
    };
    for (int i = 0; i < kFrameSamples; i += 4) {
        store(i, filterStep(input(i), low, band, c, d));
        store(i + 1, filterStep(input(i + 1), low, band, c, d));
        band = dropTinyBits(band);
        store(i + 2, filterStep(input(i + 2), low, band, c, d));
        store(i + 3, filterStep(input(i + 3), low, band, c, d));
        band = dropTinyBits(band);
        low = dropTinyBits(low);
    }
    _mm_store_ps(lanes, low);
    lowA[0] = lanes[0];
    lowA[1] = lanes[1];
    lowB[0] = lanes[2];
    lowB[1] = lanes[3];
    _mm_store_ps(lanes, band);
    bandA[0] = lanes[0];
    bandA[1] = lanes[1];
    bandB[0] = lanes[2];
    bandB[1] = lanes[3];
}

}  // namespace engine
