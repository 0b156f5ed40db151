#include "engine/NoiseFilters.h"

#include "engine/FrameSize.h"
#include "engine/LaneChunks.h"
#include "engine/NoiseFilterLoops.h"
#include "engine/WideFilters.h"

namespace engine {

namespace {

alignas(16) const float kSilence[kFrameSamples] = {};

// One voice alone, one value at a time.
void filterOne(const NoiseJob& job) {
    const NoiseJob* one = &job;
    noiseGroups<1, 1>(&one);
}

}  // namespace

void filterBNoise(float& state1, float& state2, const float* noise, float fB, float bNoise, float* out) {
    float aState = 0.0f;
    alignas(16) float aOut[kFrameSamples];
    NoiseJob job;
    job.bState1 = &state1;
    job.bState2 = &state2;
    job.bRaw = noise;
    job.fB = fB;
    job.bCoef = noiseCoefficient(fB);
    job.bNoise = bNoise;
    job.aState = &aState;
    job.aRaw = kSilence;
    job.bOut = out;
    job.aOut = aOut;
    job.aQuiet = true;
    filterOne(job);
}

void filterANoise(float& state, const float* noise, float gain, float coef, float* out) {
    float bState[2] = {};
    alignas(16) float bOut[kFrameSamples];
    NoiseJob job;
    job.bState1 = &bState[0];
    job.bState2 = &bState[1];
    job.bRaw = kSilence;
    job.aState = &state;
    job.aRaw = noise;
    job.aGain = gain;
    job.aCoef = coef;
    job.bOut = bOut;
    job.aOut = out;
    job.bQuiet = true;
    filterOne(job);
}

void filterNoises(float& bState1, float& bState2, const float* bRaw, float fB, float bNoise, float& aState,
                  const float* aRaw, float aGain, float aCoef, float* bOut, float* aOut) {
    NoiseJob job;
    job.bState1 = &bState1;
    job.bState2 = &bState2;
    job.bRaw = bRaw;
    job.fB = fB;
    job.bCoef = noiseCoefficient(fB);
    job.bNoise = bNoise;
    job.aState = &aState;
    job.aRaw = aRaw;
    job.aGain = aGain;
    job.aCoef = aCoef;
    job.bOut = bOut;
    job.aOut = aOut;
    filterOne(job);
}

SpareNoiseJob::SpareNoiseJob() {
    job.bState1 = &states[0];
    job.bState2 = &states[1];
    job.aState = &states[2];
    job.bRaw = job.aRaw = kSilence;
    job.bOut = job.aOut = out;
    job.bQuiet = job.aQuiet = true;
}

// At most this many groups share one loop: more would only spill registers.
constexpr int kNoiseGroupsTogether = 3;

void filterNoisesTogether(const NoiseJob* jobs, int count) {
    const int width = wide::laneWidth();
#if TENDRANE_WIDE_LOOPS
    if (width == 8) return wide::filterNoisesTogether(jobs, count);
#endif
    if (width == 1) {
        for (int k = 0; k < count; ++k) filterOne(jobs[k]);
        return;
    }
    const SpareNoiseJob spare;
    inLaneChunks<4, kNoiseGroupsTogether>(jobs, count, spare.job, [](int groups, const NoiseJob* const* lanes) {
        withRegisters<kNoiseGroupsTogether>(groups, [lanes]<int G>() { noiseGroups<4, G>(lanes); });
    });
}

}  // namespace engine
