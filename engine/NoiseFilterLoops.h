// The noise colourings of many voices at once, written once for any lane
// width: G registers of W voices each, one voice a lane, four samples a turn.
// Every width gives each voice the same bits: a lane is one voice's filter,
// run sample by sample exactly as alone.
#pragma once

#include <cmath>

#include "engine/Denormal.h"
#include "engine/FrameSize.h"
#include "engine/Lanes.h"
#include "engine/NoiseFilters.h"

namespace engine {

template <int W, int G>
TENDRANE_LANES_INLINE void noiseGroups(const NoiseJob* const* j) {
    using L = Lanes<W>;
    L K[G], Gain[G], AG[G], AC[G], S1[G], S2[G], A[G];
    for (int q = 0; q < G; ++q) {
        float k[W], gain[W], ag[W], ac[W], s1[W], s2[W], a[W];
        for (int v = 0; v < W; ++v) {
            const NoiseJob& job = *j[W * q + v];
            // A quiet filter has zero states: with zero coefficients its lane
            // computes +0 throughout, the zeros it would have been given. A
            // quiet B's gain (which may have no frequency) is 0.
            k[v] = job.bQuiet ? 0.0f : job.bCoef;
            gain[v] = job.bQuiet ? 0.0f : std::sqrt(job.bNoise * 0.5f / job.fB);
            ag[v] = job.aQuiet ? 0.0f : job.aGain;
            ac[v] = job.aQuiet ? 0.0f : job.aCoef;
            s1[v] = *job.bState1;
            s2[v] = *job.bState2;
            a[v] = *job.aState;
        }
        K[q] = L::load(k);
        Gain[q] = L::load(gain);
        AG[q] = L::load(ag);
        AC[q] = L::load(ac);
        S1[q] = L::load(s1);
        S2[q] = L::load(s2);
        A[q] = L::load(a);
    }
    for (int i = 0; i < kFrameSamples; i += 4) {
        // Four samples, each a register with one sample of every voice.
        L bRaw[G][4], aRaw[G][4];
#pragma GCC unroll 8
        for (int q = 0; q < G; ++q) {
            const NoiseJob* const* v = j + W * q;
            if constexpr (W >= 4) {
                // Four samples of voices n, n + 4... in register n, turned.
#pragma GCC unroll 4
                for (int n = 0; n < 4; ++n) {
                    const float* b[W / 4];
                    const float* a[W / 4];
                    for (int h = 0; h < W / 4; ++h) {
                        b[h] = v[n + 4 * h]->bRaw + i;
                        a[h] = v[n + 4 * h]->aRaw + i;
                    }
                    bRaw[q][n] = L::loadFours(b);
                    aRaw[q][n] = L::loadFours(a);
                }
                transposeFours(bRaw[q][0], bRaw[q][1], bRaw[q][2], bRaw[q][3]);
                transposeFours(aRaw[q][0], aRaw[q][1], aRaw[q][2], aRaw[q][3]);
            } else {
                for (int n = 0; n < 4; ++n) {
                    bRaw[q][n] = L(v[0]->bRaw[i + n]);
                    aRaw[q][n] = L(v[0]->aRaw[i + n]);
                }
            }
        }
#pragma GCC unroll 4
        for (int n = 0; n < 4; ++n) {
#pragma GCC unroll 8
            for (int q = 0; q < G; ++q) {
                S1[q] = S1[q] + (bRaw[q][n] * Gain[q] - S1[q]) * K[q];
                A[q] = A[q] + (aRaw[q][n] * AG[q] - A[q]) * AC[q];
                S2[q] = S2[q] + (S1[q] - S2[q]) * K[q];
                bRaw[q][n] = S2[q];  // the raw sample is used up: its slot takes the output
                aRaw[q][n] = A[q];
            }
        }
#pragma GCC unroll 8
        for (int q = 0; q < G; ++q) {
            const NoiseJob* const* v = j + W * q;
            if constexpr (W >= 4) {
                transposeFours(bRaw[q][0], bRaw[q][1], bRaw[q][2], bRaw[q][3]);
                transposeFours(aRaw[q][0], aRaw[q][1], aRaw[q][2], aRaw[q][3]);
#pragma GCC unroll 4
                for (int n = 0; n < 4; ++n) {
                    float* b[W / 4];
                    float* a[W / 4];
                    for (int h = 0; h < W / 4; ++h) {
                        b[h] = v[n + 4 * h]->bOut + i;
                        a[h] = v[n + 4 * h]->aOut + i;
                    }
                    bRaw[q][n].storeFours(b);
                    aRaw[q][n].storeFours(a);
                }
            } else {
                for (int n = 0; n < 4; ++n) {
                    v[0]->bOut[i + n] = bRaw[q][n][0];
                    v[0]->aOut[i + n] = aRaw[q][n][0];
                }
            }
        }
    }
    for (int q = 0; q < G; ++q) {
        float s1[W], s2[W], a[W];
        dropTinyBits(S1[q]).store(s1);
        dropTinyBits(S2[q]).store(s2);
        dropTinyBits(A[q]).store(a);
        for (int v = 0; v < W; ++v) {
            const NoiseJob& job = *j[W * q + v];
            *job.bState1 = s1[v];
            *job.bState2 = s2[v];
            *job.aState = a[v];
        }
    }
}

}  // namespace engine
