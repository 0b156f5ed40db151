// Reciprocal square root as the sound has always computed it: the processor's
// quick estimate (about 12 bits) refined by one Newton step.
//
// The estimate comes from the SSE instruction rsqrtss, written with its
// intrinsic so that the 64-bit build and the 32-bit build (compiled for SSE2,
// never the x87 unit) run the very same instruction and get the same bits on
// one machine. Processors of different makers may round the estimate
// differently; after the Newton step the results stay within a few units in
// the last place of each other, which is all the level normalization needs.
// Off x86 there is no such instruction; there the estimate is 1 / sqrt(x),
// which the Newton step leaves within an ulp or two.
#pragma once

#if defined(__SSE__) || defined(__x86_64__) || defined(_M_X64) || (defined(_M_IX86_FP) && _M_IX86_FP >= 1)
#include <xmmintrin.h>
#define TENDRANE_HAS_RSQRTSS 1
#else
#include <cmath>
#endif

namespace engine {

// The raw estimate of 1 / sqrt(x).
inline float reciprocalSqrtEstimate(float x) {
#ifdef TENDRANE_HAS_RSQRTSS
    return _mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(x)));
#else
    return 1.0f / std::sqrt(x);
#endif
}

// 1 / sqrt(x): the estimate e, then one Newton step -0.5 * e * (x * e^2 - 3),
// evaluated in this order in 32-bit float.
inline float reciprocalSqrt(float x) {
    const float e = reciprocalSqrtEstimate(x);
    const float e2 = e * e;
    return (-0.5f * e) * (x * e2 - 3.0f);
}

}  // namespace engine
