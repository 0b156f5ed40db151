#include "engine/StateVariableFilter.h"

#include <emmintrin.h>

#include <algorithm>

#include "engine/Denormal.h"
#include "engine/FrameSize.h"
#include "engine/LaneChunks.h"
#include "engine/WideFilters.h"

namespace engine {

// Written once for a float and once for four: the same steps in the same order.
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

namespace {

// filterCoefficients for four filters at once, step for step.
inline void filterCoefficients4(__m128 f, __m128 logDamp, __m128& c, __m128& d) {
    const __m128 f2 = _mm_mul_ps(f, f);
    const __m128 f4 = _mm_mul_ps(f2, f2);
    const __m128 D = _mm_mul_ps(_mm_sub_ps(_mm_set1_ps(1.0f), _mm_mul_ps(_mm_set1_ps(4.0f), f2)), logDamp);
    __m128 e = _mm_add_ps(_mm_set1_ps(1.0f),
                          _mm_mul_ps(_mm_mul_ps(_mm_set1_ps(0.0625f), D),
                                     _mm_add_ps(_mm_set1_ps(1.0f), _mm_mul_ps(_mm_set1_ps(0.03125f), D))));
    e = _mm_mul_ps(e, e);
    e = _mm_mul_ps(e, e);
    e = _mm_mul_ps(e, e);
    e = _mm_mul_ps(e, e);
    d = e;
    const __m128 tune = _mm_add_ps(_mm_sub_ps(_mm_set1_ps(6.281745f), _mm_mul_ps(_mm_set1_ps(10.28326f), f2)),
                                   _mm_mul_ps(_mm_set1_ps(4.635304f), f4));
    const __m128 pull = _mm_add_ps(_mm_sub_ps(_mm_set1_ps(9.813636f), _mm_mul_ps(_mm_set1_ps(30.95644f), f2)),
                                   _mm_mul_ps(_mm_set1_ps(30.93228f), f4));
    c = _mm_sub_ps(_mm_mul_ps(f, tune), _mm_mul_ps(_mm_mul_ps(e, f2), pull));
}

// R registers of two voices each (one voice in lanes 0 and 1, the next in 2
// and 3), all in one loop so that their chains of dependent steps overlap.
template <int R>
void filterRegisters(const FilterVoice* const* v) {
    __m128 c[R], d[R], low[R], band[R];
    for (int q = 0; q < R; ++q) {
        const FilterVoice& x = *v[2 * q];
        const FilterVoice& y = *v[2 * q + 1];
        filterCoefficients4(_mm_setr_ps(x.f1, x.f2, y.f1, y.f2),
                            _mm_setr_ps(x.logDamp, x.logDamp, y.logDamp, y.logDamp), c[q], d[q]);
        low[q] = _mm_setr_ps(x.low[0], x.low[1], y.low[0], y.low[1]);
        band[q] = _mm_setr_ps(x.band[0], x.band[1], y.band[0], y.band[1]);
    }
    for (int i = 0; i < kFrameSamples; i += 4) {
        __m128 out[R][4];
#pragma GCC unroll 8
        for (int q = 0; q < R; ++q) {
            // Four samples of both voices, each spread over its voice's lanes.
            const __m128 x = _mm_load_ps(v[2 * q]->in + i), y = _mm_load_ps(v[2 * q + 1]->in + i);
            const __m128 lo = _mm_unpacklo_ps(x, y), hi = _mm_unpackhi_ps(x, y);
            out[q][0] = _mm_shuffle_ps(lo, lo, _MM_SHUFFLE(1, 1, 0, 0));
            out[q][1] = _mm_shuffle_ps(lo, lo, _MM_SHUFFLE(3, 3, 2, 2));
            out[q][2] = _mm_shuffle_ps(hi, hi, _MM_SHUFFLE(1, 1, 0, 0));
            out[q][3] = _mm_shuffle_ps(hi, hi, _MM_SHUFFLE(3, 3, 2, 2));
        }
#pragma GCC unroll 4
        for (int n = 0; n < 4; ++n) {
#pragma GCC unroll 8
            for (int q = 0; q < R; ++q) out[q][n] = filterStep(out[q][n], low[q], band[q], c[q], d[q]);
            if (n == 1)
                for (int q = 0; q < R; ++q) band[q] = dropTinyBits(band[q]);
        }
#pragma GCC unroll 8
        for (int q = 0; q < R; ++q) {
            band[q] = dropTinyBits(band[q]);
            low[q] = dropTinyBits(low[q]);
            // Each voice hears the sum of its two lows.
            const __m128 s01 = _mm_add_ps(_mm_shuffle_ps(out[q][0], out[q][1], _MM_SHUFFLE(2, 0, 2, 0)),
                                          _mm_shuffle_ps(out[q][0], out[q][1], _MM_SHUFFLE(3, 1, 3, 1)));
            const __m128 s23 = _mm_add_ps(_mm_shuffle_ps(out[q][2], out[q][3], _MM_SHUFFLE(2, 0, 2, 0)),
                                          _mm_shuffle_ps(out[q][2], out[q][3], _MM_SHUFFLE(3, 1, 3, 1)));
            _mm_store_ps(v[2 * q]->out + i, _mm_shuffle_ps(s01, s23, _MM_SHUFFLE(2, 0, 2, 0)));
            _mm_store_ps(v[2 * q + 1]->out + i, _mm_shuffle_ps(s01, s23, _MM_SHUFFLE(3, 1, 3, 1)));
        }
    }
    for (int q = 0; q < R; ++q) {
        alignas(16) float l[4], b[4];
        _mm_store_ps(l, low[q]);
        _mm_store_ps(b, band[q]);
        const FilterVoice& x = *v[2 * q];
        const FilterVoice& y = *v[2 * q + 1];
        x.low[0] = l[0];
        x.low[1] = l[1];
        y.low[0] = l[2];
        y.low[1] = l[3];
        x.band[0] = b[0];
        x.band[1] = b[1];
        y.band[0] = b[2];
        y.band[1] = b[3];
    }
}

// At most this many registers share one loop: more would only spill.
constexpr int kRegistersTogether = 6;

alignas(16) const float kSilence[kFrameSamples] = {};

}  // namespace

SpareFilterVoice::SpareFilterVoice() {
    voice.low = low;
    voice.band = band;
    voice.in = kSilence;
    voice.out = out;
}

void renderFilterVoices(const FilterVoice* voices, int count) {
    if (wide::available()) return wide::renderFilterVoices(voices, count);
    const SpareFilterVoice spare;
    inLaneChunks<2, kRegistersTogether>(voices, count, spare.voice, [](int registers, const FilterVoice* const* lanes) {
        withRegisters<kRegistersTogether>(registers, [lanes]<int R>() { filterRegisters<R>(lanes); });
    });
}

}  // namespace engine
