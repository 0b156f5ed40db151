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

// One voice's part in renderFilterVoices: its two filters' states, the
// frame's cut-offs and damping, 16 samples in and 16 out (both 16-byte
// aligned).
struct FilterVoice {
    float* low = nullptr;
    float* band = nullptr;
    float f1 = 0.0f, f2 = 0.0f;
    float logDamp = 0.0f;
    const float* in = nullptr;
    float* out = nullptr;
};

// A voice that fills lanes no voice takes: silence in, zero states that stay
// zero, so any number of lanes may share it.
struct SpareFilterVoice {
    SpareFilterVoice();
    float low[2] = {}, band[2] = {};
    alignas(16) float out[16];
    FilterVoice voice;
};

// Any number of voices at once, two to a register, several registers in one
// loop. Each voice gets exactly what renderFilterPair gives it with the
// coefficients of f1 and f2.
void renderFilterVoices(const FilterVoice* voices, int count);

}  // namespace engine
