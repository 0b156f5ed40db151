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

void renderFilterPairs(const FilterPairJob& a, const FilterPairJob& b, const FilterPairJob& c, const FilterPairJob& d) {
    const __m128 cP = _mm_setr_ps(a.first.c, a.second.c, b.first.c, b.second.c);
    const __m128 dP = _mm_setr_ps(a.first.d, a.second.d, b.first.d, b.second.d);
    const __m128 cQ = _mm_setr_ps(c.first.c, c.second.c, d.first.c, d.second.c);
    const __m128 dQ = _mm_setr_ps(c.first.d, c.second.d, d.first.d, d.second.d);
    __m128 lowP = _mm_setr_ps(a.low[0], a.low[1], b.low[0], b.low[1]);
    __m128 bandP = _mm_setr_ps(a.band[0], a.band[1], b.band[0], b.band[1]);
    __m128 lowQ = _mm_setr_ps(c.low[0], c.low[1], d.low[0], d.low[1]);
    __m128 bandQ = _mm_setr_ps(c.band[0], c.band[1], d.band[0], d.band[1]);
    // The sums of each voice's two lows: lanes 0 + 1 and 2 + 3.
    alignas(16) float lanes[8];
    auto step = [&](int i) __attribute__((always_inline)) {
        const __m128 yP = filterStep(_mm_setr_ps(a.in[i], a.in[i], b.in[i], b.in[i]), lowP, bandP, cP, dP);
        const __m128 yQ = filterStep(_mm_setr_ps(c.in[i], c.in[i], d.in[i], d.in[i]), lowQ, bandQ, cQ, dQ);
        _mm_store_ps(lanes, yP);
        _mm_store_ps(lanes + 4, yQ);
        a.out[i] = lanes[0] + lanes[1];
        b.out[i] = lanes[2] + lanes[3];
        c.out[i] = lanes[4] + lanes[5];
        d.out[i] = lanes[6] + lanes[7];
    };
    for (int i = 0; i < kFrameSamples; i += 4) {
        step(i);
        step(i + 1);
        bandP = dropTinyBits(bandP);
        bandQ = dropTinyBits(bandQ);
        step(i + 2);
        step(i + 3);
        bandP = dropTinyBits(bandP);
        bandQ = dropTinyBits(bandQ);
        lowP = dropTinyBits(lowP);
        lowQ = dropTinyBits(lowQ);
    }
    auto keep = [&lanes](__m128 v, float* first, float* second) {
        _mm_store_ps(lanes, v);
        first[0] = lanes[0];
        first[1] = lanes[1];
        second[0] = lanes[2];
        second[1] = lanes[3];
    };
    keep(lowP, a.low, b.low);
    keep(bandP, a.band, b.band);
    keep(lowQ, c.low, d.low);
    keep(bandQ, c.band, d.band);
}

}  // namespace engine
