#include "engine/WideFilters.h"

#if TENDRANE_WIDE_LOOPS

#include <algorithm>
#include <cmath>

#include "engine/FrameSize.h"
#include "engine/LaneChunks.h"
#include "engine/WideLanes.h"

#define WIDE TENDRANE_WIDE
#define WIDE_ENTRY TENDRANE_WIDE_ENTRY

namespace engine::wide {

namespace {

// Four samples of four voices in each half, turned so that each register
// holds one sample of all eight voices (lanes 0-3 and 4-7); or back.
WIDE void turn(__m256& r0, __m256& r1, __m256& r2, __m256& r3) {
    const __m256 t0 = _mm256_unpacklo_ps(r0, r1), t1 = _mm256_unpacklo_ps(r2, r3);
    const __m256 t2 = _mm256_unpackhi_ps(r0, r1), t3 = _mm256_unpackhi_ps(r2, r3);
    r0 = _mm256_shuffle_ps(t0, t1, _MM_SHUFFLE(1, 0, 1, 0));
    r1 = _mm256_shuffle_ps(t0, t1, _MM_SHUFFLE(3, 2, 3, 2));
    r2 = _mm256_shuffle_ps(t2, t3, _MM_SHUFFLE(1, 0, 1, 0));
    r3 = _mm256_shuffle_ps(t2, t3, _MM_SHUFFLE(3, 2, 3, 2));
}

// G registers of eight voices each: voices 0-3 of a group in the low half,
// 4-7 in the high half.
template <int G>
WIDE_ENTRY void noiseGroups(const NoiseJob* const* j) {
    __m256 K[G], Gain[G], AG[G], AC[G], S1[G], S2[G], A[G];
    for (int q = 0; q < G; ++q) {
        const NoiseJob* const* v = j + 8 * q;
        auto k = [](const NoiseJob* job) { return job->bQuiet ? 0.0f : job->bCoef; };
        auto aGain = [](const NoiseJob* job) { return job->aQuiet ? 0.0f : job->aGain; };
        auto aCoef = [](const NoiseJob* job) { return job->aQuiet ? 0.0f : job->aCoef; };
        auto sounding = [](const NoiseJob* job) { return job->bQuiet ? 0 : -1; };
        const __m256 g = _mm256_sqrt_ps(_mm256_div_ps(
            mul(_mm256_setr_ps(v[0]->bNoise, v[1]->bNoise, v[2]->bNoise, v[3]->bNoise, v[4]->bNoise, v[5]->bNoise,
                               v[6]->bNoise, v[7]->bNoise),
                all(0.5f)),
            _mm256_setr_ps(v[0]->fB, v[1]->fB, v[2]->fB, v[3]->fB, v[4]->fB, v[5]->fB, v[6]->fB, v[7]->fB)));
        const __m256 mask = _mm256_castsi256_ps(_mm256_setr_epi32(sounding(v[0]), sounding(v[1]), sounding(v[2]),
                                                                  sounding(v[3]), sounding(v[4]), sounding(v[5]),
                                                                  sounding(v[6]), sounding(v[7])));
        Gain[q] = _mm256_and_ps(g, mask);
        K[q] = _mm256_setr_ps(k(v[0]), k(v[1]), k(v[2]), k(v[3]), k(v[4]), k(v[5]), k(v[6]), k(v[7]));
        AG[q] = _mm256_setr_ps(aGain(v[0]), aGain(v[1]), aGain(v[2]), aGain(v[3]), aGain(v[4]), aGain(v[5]),
                               aGain(v[6]), aGain(v[7]));
        AC[q] = _mm256_setr_ps(aCoef(v[0]), aCoef(v[1]), aCoef(v[2]), aCoef(v[3]), aCoef(v[4]), aCoef(v[5]),
                               aCoef(v[6]), aCoef(v[7]));
        S1[q] = _mm256_setr_ps(*v[0]->bState1, *v[1]->bState1, *v[2]->bState1, *v[3]->bState1, *v[4]->bState1,
                               *v[5]->bState1, *v[6]->bState1, *v[7]->bState1);
        S2[q] = _mm256_setr_ps(*v[0]->bState2, *v[1]->bState2, *v[2]->bState2, *v[3]->bState2, *v[4]->bState2,
                               *v[5]->bState2, *v[6]->bState2, *v[7]->bState2);
        A[q] = _mm256_setr_ps(*v[0]->aState, *v[1]->aState, *v[2]->aState, *v[3]->aState, *v[4]->aState,
                              *v[5]->aState, *v[6]->aState, *v[7]->aState);
    }
    for (int i = 0; i < kFrameSamples; i += 4) {
        __m256 bRaw[G][4], aRaw[G][4];
#pragma GCC unroll 8
        for (int q = 0; q < G; ++q) {
            const NoiseJob* const* v = j + 8 * q;
#pragma GCC unroll 4
            for (int n = 0; n < 4; ++n) {
                bRaw[q][n] = halves(v[n]->bRaw + i, v[n + 4]->bRaw + i);
                aRaw[q][n] = halves(v[n]->aRaw + i, v[n + 4]->aRaw + i);
            }
            turn(bRaw[q][0], bRaw[q][1], bRaw[q][2], bRaw[q][3]);
            turn(aRaw[q][0], aRaw[q][1], aRaw[q][2], aRaw[q][3]);
        }
#pragma GCC unroll 4
        for (int n = 0; n < 4; ++n) {
#pragma GCC unroll 8
            for (int q = 0; q < G; ++q) {
                S1[q] = add(S1[q], mul(sub(mul(bRaw[q][n], Gain[q]), S1[q]), K[q]));
                A[q] = add(A[q], mul(sub(mul(aRaw[q][n], AG[q]), A[q]), AC[q]));
                S2[q] = add(S2[q], mul(sub(S1[q], S2[q]), K[q]));
                bRaw[q][n] = S2[q];  // the raw sample is used up: its slot takes the output
                aRaw[q][n] = A[q];
            }
        }
#pragma GCC unroll 8
        for (int q = 0; q < G; ++q) {
            const NoiseJob* const* v = j + 8 * q;
            turn(bRaw[q][0], bRaw[q][1], bRaw[q][2], bRaw[q][3]);
            turn(aRaw[q][0], aRaw[q][1], aRaw[q][2], aRaw[q][3]);
#pragma GCC unroll 4
            for (int n = 0; n < 4; ++n) {
                storeHalves(bRaw[q][n], v[n]->bOut + i, v[n + 4]->bOut + i);
                storeHalves(aRaw[q][n], v[n]->aOut + i, v[n + 4]->aOut + i);
            }
        }
    }
    for (int q = 0; q < G; ++q) {
        const NoiseJob* const* v = j + 8 * q;
        alignas(32) float s1[8], s2[8], a[8];
        _mm256_store_ps(s1, dropTinyBits8(S1[q]));
        _mm256_store_ps(s2, dropTinyBits8(S2[q]));
        _mm256_store_ps(a, dropTinyBits8(A[q]));
        for (int n = 0; n < 8; ++n) {
            *v[n]->bState1 = s1[n];
            *v[n]->bState2 = s2[n];
            *v[n]->aState = a[n];
        }
    }
}

// filterCoefficients for eight filters at once, step for step.
WIDE void filterCoefficients8(__m256 f, __m256 logDamp, __m256& c, __m256& d) {
    const __m256 f2 = mul(f, f);
    const __m256 f4 = mul(f2, f2);
    const __m256 D = mul(sub(all(1.0f), mul(all(4.0f), f2)), logDamp);
    __m256 e = add(all(1.0f), mul(mul(all(0.0625f), D), add(all(1.0f), mul(all(0.03125f), D))));
    e = mul(e, e);
    e = mul(e, e);
    e = mul(e, e);
    e = mul(e, e);
    d = e;
    const __m256 tune = add(sub(all(6.281745f), mul(all(10.28326f), f2)), mul(all(4.635304f), f4));
    const __m256 pull = add(sub(all(9.813636f), mul(all(30.95644f), f2)), mul(all(30.93228f), f4));
    c = sub(mul(f, tune), mul(mul(e, f2), pull));
}

// One sample of the filter pairs in a register; returns the new lows.
WIDE __m256 filterStep8(__m256 x, __m256& low, __m256& band, __m256 c, __m256 d) {
    low = add(low, mul(c, band));
    const __m256 high = sub(sub(x, low), mul(d, band));
    __m256 t = mul(add(mul(c, high), band), all(0.04058442f));
    t = _mm256_min_ps(_mm256_max_ps(t, all(-1.0f)), all(1.0f));
    band = mul(mul(all(24.64f), t), sub(all(1.0f), mul(all(0.3506494f), mul(t, t))));
    return low;
}

// R registers of four voices each: voices 0 and 1 of four in the low half
// (lanes 0, 1 and 2, 3), voices 2 and 3 in the high half.
template <int R>
WIDE_ENTRY void filterRegisters(const FilterVoice* const* voices) {
    __m256 c[R], d[R], low[R], band[R];
    for (int q = 0; q < R; ++q) {
        const FilterVoice& w = *voices[4 * q];
        const FilterVoice& x = *voices[4 * q + 1];
        const FilterVoice& y = *voices[4 * q + 2];
        const FilterVoice& z = *voices[4 * q + 3];
        filterCoefficients8(_mm256_setr_ps(w.f1, w.f2, x.f1, x.f2, y.f1, y.f2, z.f1, z.f2),
                            _mm256_setr_ps(w.logDamp, w.logDamp, x.logDamp, x.logDamp, y.logDamp, y.logDamp,
                                           z.logDamp, z.logDamp),
                            c[q], d[q]);
        low[q] = _mm256_setr_ps(w.low[0], w.low[1], x.low[0], x.low[1], y.low[0], y.low[1], z.low[0], z.low[1]);
        band[q] =
            _mm256_setr_ps(w.band[0], w.band[1], x.band[0], x.band[1], y.band[0], y.band[1], z.band[0], z.band[1]);
    }
    for (int i = 0; i < kFrameSamples; i += 4) {
        __m256 out[R][4];
#pragma GCC unroll 8
        for (int q = 0; q < R; ++q) {
            const FilterVoice* const* v = voices + 4 * q;
            // Four samples of each voice, spread over its voice's lanes.
            const __m256 wy = halves(v[0]->in + i, v[2]->in + i), xz = halves(v[1]->in + i, v[3]->in + i);
            const __m256 lo = _mm256_unpacklo_ps(wy, xz), hi = _mm256_unpackhi_ps(wy, xz);
            out[q][0] = _mm256_shuffle_ps(lo, lo, _MM_SHUFFLE(1, 1, 0, 0));
            out[q][1] = _mm256_shuffle_ps(lo, lo, _MM_SHUFFLE(3, 3, 2, 2));
            out[q][2] = _mm256_shuffle_ps(hi, hi, _MM_SHUFFLE(1, 1, 0, 0));
            out[q][3] = _mm256_shuffle_ps(hi, hi, _MM_SHUFFLE(3, 3, 2, 2));
        }
#pragma GCC unroll 4
        for (int n = 0; n < 4; ++n) {
#pragma GCC unroll 8
            for (int q = 0; q < R; ++q) out[q][n] = filterStep8(out[q][n], low[q], band[q], c[q], d[q]);
            if (n == 1)
                for (int q = 0; q < R; ++q) band[q] = dropTinyBits8(band[q]);
        }
#pragma GCC unroll 8
        for (int q = 0; q < R; ++q) {
            const FilterVoice* const* v = voices + 4 * q;
            band[q] = dropTinyBits8(band[q]);
            low[q] = dropTinyBits8(low[q]);
            // Each voice hears the sum of its two lows.
            const __m256 s01 = add(_mm256_shuffle_ps(out[q][0], out[q][1], _MM_SHUFFLE(2, 0, 2, 0)),
                                   _mm256_shuffle_ps(out[q][0], out[q][1], _MM_SHUFFLE(3, 1, 3, 1)));
            const __m256 s23 = add(_mm256_shuffle_ps(out[q][2], out[q][3], _MM_SHUFFLE(2, 0, 2, 0)),
                                   _mm256_shuffle_ps(out[q][2], out[q][3], _MM_SHUFFLE(3, 1, 3, 1)));
            storeHalves(_mm256_shuffle_ps(s01, s23, _MM_SHUFFLE(2, 0, 2, 0)), v[0]->out + i, v[2]->out + i);
            storeHalves(_mm256_shuffle_ps(s01, s23, _MM_SHUFFLE(3, 1, 3, 1)), v[1]->out + i, v[3]->out + i);
        }
    }
    for (int q = 0; q < R; ++q) {
        alignas(32) float l[8], b[8];
        _mm256_store_ps(l, low[q]);
        _mm256_store_ps(b, band[q]);
        for (int n = 0; n < 4; ++n) {
            voices[4 * q + n]->low[0] = l[2 * n];
            voices[4 * q + n]->low[1] = l[2 * n + 1];
            voices[4 * q + n]->band[0] = b[2 * n];
            voices[4 * q + n]->band[1] = b[2 * n + 1];
        }
    }
}

// At most this many registers share one loop: more would only spill.
constexpr int kNoiseGroupsTogether = 2;
constexpr int kFilterRegistersTogether = 3;

}  // namespace

void filterNoisesTogether(const NoiseJob* jobs, int count) {
    const SpareNoiseJob spare;
    inLaneChunks<8, kNoiseGroupsTogether>(jobs, count, spare.job, [](int groups, const NoiseJob* const* lanes) {
        withRegisters<kNoiseGroupsTogether>(groups, [lanes]<int G>() { noiseGroups<G>(lanes); });
    });
}

void renderFilterVoices(const FilterVoice* voices, int count) {
    const SpareFilterVoice spare;
    inLaneChunks<4, kFilterRegistersTogether>(
        voices, count, spare.voice, [](int registers, const FilterVoice* const* lanes) {
            withRegisters<kFilterRegistersTogether>(registers, [lanes]<int R>() { filterRegisters<R>(lanes); });
        });
}

}  // namespace engine::wide

#endif  // TENDRANE_WIDE_LOOPS
