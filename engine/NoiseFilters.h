// The two noise colourings of a voice. B's noise is a two-pole low-pass at
// B's own pitch, so a higher pitch is brighter; A's is a one-pole low-pass
// at its colour corner. Each runs over one 16-sample frame of raw noise and
// ends with the denormal step on its states.
#pragma once

#include <cmath>

namespace engine {

// k of B's noise filter at B's frequency fB: 1 - exp(-2 pi fB).
inline float noiseCoefficient(float fB) { return 1.0f - std::exp(-6.2831855f * fB); }

// k = noiseCoefficient(fB), g = sqrt(bNoise * 0.5 / fB);
// state1 += (noise g - state1) k; state2 += (state1 - state2) k; out = state2.
void filterBNoise(float& state1, float& state2, const float* noise16, float fB, float bNoise, float* out16);

// state += (noise gain - state) coef; out = state.
void filterANoise(float& state, const float* noise16, float gain, float coef, float* out16);

// Both at once, sample by sample, so that the two recursions overlap in time;
// the same results as the two above.
void filterNoises(float& bState1, float& bState2, const float* bNoise16, float fB, float bNoise, float& aState,
                  const float* aNoise16, float aGain, float aCoef, float* bOut16, float* aOut16);

// One voice's part in filterNoisesTogether: the arguments of filterNoises.
struct NoiseJob {
    float* bState1 = nullptr;
    float* bState2 = nullptr;
    const float* bRaw = nullptr;  // 16 samples
    float fB = 0.0f;
    float bCoef = 0.0f;  // noiseCoefficient(fB)
    float bNoise = 0.0f;
    float* aState = nullptr;
    const float* aRaw = nullptr;  // 16 samples
    float aGain = 0.0f;
    float aCoef = 0.0f;
    float* bOut = nullptr;  // 16 samples, 16-byte aligned
    float* aOut = nullptr;  // 16 samples, 16-byte aligned
    // A filter with no noise coming and its states at 0 (never -0): its
    // output is all zeros and its states stay.
    bool bQuiet = false;
    bool aQuiet = false;
};

// A job that fills lanes no voice takes: quiet, with zero states that stay
// zero, so any number of lanes may share it.
struct SpareNoiseJob {
    SpareNoiseJob();
    float states[3] = {};
    alignas(16) float out[16];
    NoiseJob job;
};

// Any number of voices at once, one voice per lane, four to a register,
// several registers in one loop: each gets exactly what filterNoises gives
// it, or zeros for a quiet filter.
void filterNoisesTogether(const NoiseJob* jobs, int count);

}  // namespace engine
