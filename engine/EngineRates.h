// Constants of the engine that follow from the sample rate, computed once by
// init. pole(f) = 1 - exp(-2 pi min(f / rate, 0.5)).
#pragma once

struct EngineRates {
    float sampleRate = 44100.0f;
    float slewSlow = 0.0f;     // pole(64): adaptive smoothing, lower end
    float slewFast = 0.0f;     // pole(6400): adaptive smoothing, upper end
    float gainStep = 0.0f;     // 4 min(0.0625, 1000 / rate): output gain ramp
    float stepSmooth = 0.0f;   // pole(1000): mean phase step
    float maxFreq = 0.0f;      // min(22050 / rate, 0.5): oscillator frequency limit
    float panSmooth = 0.0f;    // pole(640)
    float valueSmooth = 0.0f;  // pole(160): six decoded values
    float killRate = 0.0f;     // 16 / (0.02 rate): a killed voice fades in 20 ms
    float stealRate = 0.0f;    // 16 / (0.002 rate): a restarted voice fades in 2 ms

    static EngineRates forSampleRate(float sampleRate);
};

// Follows a target at a rate that grows with the distance: slow drifts stay
// smooth, a big jump arrives quickly. Once per block.
inline void adaptiveSmooth(float& current, float target, float lo, float hi) {
    const float d = target - current;
    const float size = d < 0.0f ? -d : d;
    if (size < 0.001f) {
        current = target;
        return;
    }
    float k = lo + (hi - lo) * (size - 0.001f) / 0.249f;
    if (k > hi) k = hi;
    current += d * k;
}
