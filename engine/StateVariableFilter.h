// Two parallel state-variable low-pass filters with a saturating band path:
// the band state is softly limited at +-16. They run side by side in lanes 0
// and 1 of a 4-lane register, one sample at a time; the voice hears the sum
// of both low-pass outputs.
#pragma once

namespace engine {

struct FilterCoefficients {
    float c = 0.0f;  // frequency coefficient, a tuned 2 sin(pi f)
    float d = 0.0f;  // damping, a quick exp of the log damping
};

// Once per frame per filter: f the cut-off in cycles per sample, logDamp the
// branch's filterDamp.
FilterCoefficients filterCoefficients(float f, float logDamp);

// The frame's two cut-offs: fc, and fc * separation, each at most 0.49.
void filterFrequencies(float fc, float separation, float& f1, float& f2);

// 16 samples of mix through both filters into out (the sum of their lows).
// low[k], band[k] are the states of filter k.
void renderFilterPair(float* low2, float* band2, const FilterCoefficients& first, const FilterCoefficients& second,
                      const float* in16, float* out16);

// Two voices at once: the first voice's filters in lanes 0 and 1, the
// second's in lanes 2 and 3. Each voice gets exactly what renderFilterPair
// would give it.
void renderFilterPairs(float* lowA, float* bandA, const FilterCoefficients& firstA, const FilterCoefficients& secondA,
                       const float* inA, float* outA, float* lowB, float* bandB, const FilterCoefficients& firstB,
                       const FilterCoefficients& secondB, const float* inB, float* outB);

// One voice's part in a multi-voice call: its two filters' states, the
// frame's coefficients, 16 samples in and 16 out.
struct FilterPairJob {
    float* low = nullptr;
    float* band = nullptr;
    FilterCoefficients first, second;
    const float* in = nullptr;
    float* out = nullptr;
};

// Four voices at once: two registers of two voices each, run in the same
// loop so that their chains of dependent steps overlap. Each voice gets
// exactly what renderFilterPair would give it.
void renderFilterPairs(const FilterPairJob& a, const FilterPairJob& b, const FilterPairJob& c, const FilterPairJob& d);

}  // namespace engine
