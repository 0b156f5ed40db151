#include "engine/StateVariableFilter.h"

#include <algorithm>

#include "engine/Denormal.h"
#include "engine/FrameSize.h"
#include "engine/Lanes.h"
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

using L4 = Lanes<4>;

// One sample of both filters; returns the new low states.
TENDRANE_LANES_INLINE L4 filterStep(L4 x, L4& low, L4& band, L4 c, L4 d) {
    low = low + c * band;
    const L4 high = x - low - d * band;
    L4 t = (c * high + band) * L4(0.04058442f);
    t = min(max(t, L4(-1.0f)), L4(1.0f));
    band = L4(24.64f) * t * (L4(1.0f) - L4(0.3506494f) * (t * t));
    return low;
}

TENDRANE_LANES_INLINE float sumOfLows(L4 low) { return low[0] + low[1]; }

}  // namespace

void renderFilterPair(float* low2, float* band2, const FilterCoefficients& first, const FilterCoefficients& second,
                      const float* in, float* out) {
    const float cs[4] = {first.c, second.c, 0.0f, 0.0f}, ds[4] = {first.d, second.d, 0.0f, 0.0f};
    const float lows[4] = {low2[0], low2[1], 0.0f, 0.0f}, bands[4] = {band2[0], band2[1], 0.0f, 0.0f};
    const L4 c = L4::load(cs), d = L4::load(ds);
    L4 low = L4::load(lows), band = L4::load(bands);
    for (int i = 0; i < kFrameSamples; i += 4) {
        out[i] = sumOfLows(filterStep(L4(in[i]), low, band, c, d));
        out[i + 1] = sumOfLows(filterStep(L4(in[i + 1]), low, band, c, d));
        band = dropTinyBits(band);
        out[i + 2] = sumOfLows(filterStep(L4(in[i + 2]), low, band, c, d));
        out[i + 3] = sumOfLows(filterStep(L4(in[i + 3]), low, band, c, d));
        band = dropTinyBits(band);
        low = dropTinyBits(low);
    }
    low2[0] = low[0];
    low2[1] = low[1];
    band2[0] = band[0];
    band2[1] = band[1];
}

namespace {

// filterCoefficients for four filters at once, step for step.
TENDRANE_LANES_INLINE void filterCoefficients4(L4 f, L4 logDamp, L4& c, L4& d) {
    const L4 f2 = f * f;
    const L4 f4 = f2 * f2;
    const L4 D = (L4(1.0f) - L4(4.0f) * f2) * logDamp;
    L4 e = L4(1.0f) + L4(0.0625f) * D * (L4(1.0f) + L4(0.03125f) * D);
    e = e * e;
    e = e * e;
    e = e * e;
    e = e * e;
    d = e;
    const L4 tune = L4(6.281745f) - L4(10.28326f) * f2 + L4(4.635304f) * f4;
    const L4 pull = L4(9.813636f) - L4(30.95644f) * f2 + L4(30.93228f) * f4;
    c = f * tune - e * f2 * pull;
}

// R registers of two voices each (one voice in lanes 0 and 1, the next in 2
// and 3), all in one loop so that their chains of dependent steps overlap.
template <int R>
void filterRegisters(const FilterVoice* const* v) {
    L4 c[R], d[R], low[R], band[R];
    for (int q = 0; q < R; ++q) {
        const FilterVoice& x = *v[2 * q];
        const FilterVoice& y = *v[2 * q + 1];
        const float f[4] = {x.f1, x.f2, y.f1, y.f2}, damp[4] = {x.logDamp, x.logDamp, y.logDamp, y.logDamp};
        const float lows[4] = {x.low[0], x.low[1], y.low[0], y.low[1]};
        const float bands[4] = {x.band[0], x.band[1], y.band[0], y.band[1]};
        filterCoefficients4(L4::load(f), L4::load(damp), c[q], d[q]);
        low[q] = L4::load(lows);
        band[q] = L4::load(bands);
    }
    for (int i = 0; i < kFrameSamples; i += 4) {
        L4 out[R][4];
#pragma GCC unroll 8
        for (int q = 0; q < R; ++q) {
            // Four samples of both voices, each spread over its voice's lanes.
            const L4 x = L4::load(v[2 * q]->in + i), y = L4::load(v[2 * q + 1]->in + i);
            const L4 lo = pick<0, 4, 1, 5>(x, y), hi = pick<2, 6, 3, 7>(x, y);
            out[q][0] = pick<0, 0, 1, 1>(lo, lo);
            out[q][1] = pick<2, 2, 3, 3>(lo, lo);
            out[q][2] = pick<0, 0, 1, 1>(hi, hi);
            out[q][3] = pick<2, 2, 3, 3>(hi, hi);
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
            const L4 s01 = pick<0, 2, 4, 6>(out[q][0], out[q][1]) + pick<1, 3, 5, 7>(out[q][0], out[q][1]);
            const L4 s23 = pick<0, 2, 4, 6>(out[q][2], out[q][3]) + pick<1, 3, 5, 7>(out[q][2], out[q][3]);
            pick<0, 2, 4, 6>(s01, s23).store(v[2 * q]->out + i);
            pick<1, 3, 5, 7>(s01, s23).store(v[2 * q + 1]->out + i);
        }
    }
    for (int q = 0; q < R; ++q) {
        const FilterVoice& x = *v[2 * q];
        const FilterVoice& y = *v[2 * q + 1];
        x.low[0] = low[q][0];
        x.low[1] = low[q][1];
        y.low[0] = low[q][2];
        y.low[1] = low[q][3];
        x.band[0] = band[q][0];
        x.band[1] = band[q][1];
        y.band[0] = band[q][2];
        y.band[1] = band[q][3];
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
#if TENDRANE_WIDE_LOOPS
    if (wide::laneWidth() == 8) return wide::renderFilterVoices(voices, count);
#endif
    const SpareFilterVoice spare;
    inLaneChunks<2, kRegistersTogether>(voices, count, spare.voice, [](int registers, const FilterVoice* const* lanes) {
        withRegisters<kRegistersTogether>(registers, [lanes]<int R>() { filterRegisters<R>(lanes); });
    });
}

}  // namespace engine
