#include "engine/NoiseFilters.h"

#include <emmintrin.h>

#include <algorithm>
#include <cmath>

#include "engine/Denormal.h"
#include "engine/FrameSize.h"
#include "engine/LaneChunks.h"
#include "engine/WideFilters.h"

namespace engine {

void filterBNoise(float& state1, float& state2, const float* noise, float fB, float bNoise, float* out) {
    const float k = noiseCoefficient(fB);
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
    const float k = noiseCoefficient(fB);
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

namespace {

// Groups of four voices, one voice per lane, all groups in one loop so that
// their recursions overlap in time.
template <int G>
void filterNoiseGroups(const NoiseJob* const* j) {
    __m128 K[G], Gain[G], AG[G], AC[G], S1[G], S2[G], A[G];
    for (int q = 0; q < G; ++q) {
        const NoiseJob& j0 = *j[4 * q];
        const NoiseJob& j1 = *j[4 * q + 1];
        const NoiseJob& j2 = *j[4 * q + 2];
        const NoiseJob& j3 = *j[4 * q + 3];
        // A quiet filter has zero states: with zero coefficients its lane
        // computes +0 throughout, the zeros it would have been given.
        auto k = [](const NoiseJob& job) { return job.bQuiet ? 0.0f : job.bCoef; };
        auto aGain = [](const NoiseJob& job) { return job.aQuiet ? 0.0f : job.aGain; };
        auto aCoef = [](const NoiseJob& job) { return job.aQuiet ? 0.0f : job.aCoef; };
        // sqrt(bNoise * 0.5 / fB) for the four at once; a quiet lane's (which
        // may have no frequency) is dropped for 0.
        const __m128 g = _mm_sqrt_ps(_mm_div_ps(
            _mm_mul_ps(_mm_setr_ps(j0.bNoise, j1.bNoise, j2.bNoise, j3.bNoise), _mm_set1_ps(0.5f)),
            _mm_setr_ps(j0.fB, j1.fB, j2.fB, j3.fB)));
        const __m128 sounding = _mm_castsi128_ps(
            _mm_setr_epi32(j0.bQuiet ? 0 : -1, j1.bQuiet ? 0 : -1, j2.bQuiet ? 0 : -1, j3.bQuiet ? 0 : -1));
        K[q] = _mm_setr_ps(k(j0), k(j1), k(j2), k(j3));
        Gain[q] = _mm_and_ps(g, sounding);
        AG[q] = _mm_setr_ps(aGain(j0), aGain(j1), aGain(j2), aGain(j3));
        AC[q] = _mm_setr_ps(aCoef(j0), aCoef(j1), aCoef(j2), aCoef(j3));
        S1[q] = _mm_setr_ps(*j0.bState1, *j1.bState1, *j2.bState1, *j3.bState1);
        S2[q] = _mm_setr_ps(*j0.bState2, *j1.bState2, *j2.bState2, *j3.bState2);
        A[q] = _mm_setr_ps(*j0.aState, *j1.aState, *j2.aState, *j3.aState);
    }
    for (int i = 0; i < kFrameSamples; i += 4) {
        // Four samples of four voices, turned so that each register holds
        // one sample of every voice.
        __m128 bRaw[G][4], aRaw[G][4];
#pragma GCC unroll 8
        for (int q = 0; q < G; ++q) {
#pragma GCC unroll 4
            for (int v = 0; v < 4; ++v) {
                bRaw[q][v] = _mm_loadu_ps(j[4 * q + v]->bRaw + i);
                aRaw[q][v] = _mm_loadu_ps(j[4 * q + v]->aRaw + i);
            }
            _MM_TRANSPOSE4_PS(bRaw[q][0], bRaw[q][1], bRaw[q][2], bRaw[q][3]);
            _MM_TRANSPOSE4_PS(aRaw[q][0], aRaw[q][1], aRaw[q][2], aRaw[q][3]);
        }
#pragma GCC unroll 4
        for (int n = 0; n < 4; ++n) {
#pragma GCC unroll 8
            for (int q = 0; q < G; ++q) {
                S1[q] = _mm_add_ps(S1[q], _mm_mul_ps(_mm_sub_ps(_mm_mul_ps(bRaw[q][n], Gain[q]), S1[q]), K[q]));
                A[q] = _mm_add_ps(A[q], _mm_mul_ps(_mm_sub_ps(_mm_mul_ps(aRaw[q][n], AG[q]), A[q]), AC[q]));
                S2[q] = _mm_add_ps(S2[q], _mm_mul_ps(_mm_sub_ps(S1[q], S2[q]), K[q]));
                bRaw[q][n] = S2[q];  // the raw sample is used up: its slot takes the output
                aRaw[q][n] = A[q];
            }
        }
#pragma GCC unroll 8
        for (int q = 0; q < G; ++q) {
            _MM_TRANSPOSE4_PS(bRaw[q][0], bRaw[q][1], bRaw[q][2], bRaw[q][3]);
            _MM_TRANSPOSE4_PS(aRaw[q][0], aRaw[q][1], aRaw[q][2], aRaw[q][3]);
#pragma GCC unroll 4
            for (int v = 0; v < 4; ++v) {
                _mm_store_ps(j[4 * q + v]->bOut + i, bRaw[q][v]);
                _mm_store_ps(j[4 * q + v]->aOut + i, aRaw[q][v]);
            }
        }
    }
    for (int q = 0; q < G; ++q) {
        alignas(16) float s1[4], s2[4], a[4];
        _mm_store_ps(s1, dropTinyBits(S1[q]));
        _mm_store_ps(s2, dropTinyBits(S2[q]));
        _mm_store_ps(a, dropTinyBits(A[q]));
        for (int v = 0; v < 4; ++v) {
            const NoiseJob& job = *j[4 * q + v];
            *job.bState1 = s1[v];
            *job.bState2 = s2[v];
            *job.aState = a[v];
        }
    }
}

// At most this many groups share one loop: more would only spill registers.
constexpr int kNoiseGroupsTogether = 3;

alignas(16) const float kSilence[kFrameSamples] = {};

}  // namespace

SpareNoiseJob::SpareNoiseJob() {
    job.bState1 = &states[0];
    job.bState2 = &states[1];
    job.aState = &states[2];
    job.bRaw = job.aRaw = kSilence;
    job.bOut = job.aOut = out;
    job.bQuiet = job.aQuiet = true;
}

void filterNoisesTogether(const NoiseJob* jobs, int count) {
    if (wide::available()) return wide::filterNoisesTogether(jobs, count);
    const SpareNoiseJob spare;
    inLaneChunks<4, kNoiseGroupsTogether>(jobs, count, spare.job, [](int groups, const NoiseJob* const* lanes) {
        withRegisters<kNoiseGroupsTogether>(groups, [lanes]<int G>() { filterNoiseGroups<G>(lanes); });
    });
}

}  // namespace engine
