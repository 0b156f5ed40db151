// The loops of both oscillators, written once for any lane width: W samples
// a turn (1, 4 or 8). Every width gives the same bits: each lane is one
// sample, and the phase accumulator is reduced after every fourth sample
// whatever the width.
#pragma once

#include <cmath>

#include "engine/FrameSize.h"
#include "engine/Lanes.h"
#include "engine/OscillatorA.h"
#include "engine/Oversampling.h"
#include "engine/PhaseWrap.h"
#include "engine/SubOscillator.h"
#include "engine/WaveShape.h"

namespace engine {

// Oscillator A of V voices side by side: each voice's phase runs on through
// its steps, a chain of dependent additions, and the V chains overlap.
// put(v, i, a) takes voice v's W samples from sample i.
template <int W, int V, class Put>
TENDRANE_LANES_INLINE void oscillatorALoop(const VoiceAJob* const* jobs, Put put) {
    using L = Lanes<W>;
    int points[V];
    float phase[V];
    ShapeLanes<W> lanes[V];
    for (int v = 0; v < V; ++v) {
        points[v] = oversamplingPoints(jobs[v]->meanStep);
        lanes[v] = ShapeLanes<W>(*jobs[v]->shape);
        phase[v] = *jobs[v]->phase;
    }
    for (int i = 0; i < kFrameSamples; i += W) {
        L p[V];
#pragma GCC unroll 4
        for (int v = 0; v < V; ++v) {
            const float* step = jobs[v]->step;
            float at[W];
            for (int k = 0; k < W; ++k) {
                at[k] = phase[v];
                phase[v] = phase[v] + step[i + k];
                if ((i + k) % 4 == 3) phase[v] = phase[v] - std::floor(phase[v]);
            }
            p[v] = L::of(at);
        }
#pragma GCC unroll 4
        for (int v = 0; v < V; ++v)
            put(v, i, oversampledShape(lanes[v], wrapPhase(p[v]), L::load(jobs[v]->step + i), points[v]));
    }
    for (int v = 0; v < V; ++v) *jobs[v]->phase = phase[v];
}

// Oscillator A mixed with B and the noise: out = a * aGain + b * bGain + noise.
template <int W, int V>
TENDRANE_LANES_INLINE void voicesA(const VoiceAJob* const* jobs) {
    using L = Lanes<W>;
    oscillatorALoop<W, V>(jobs, [jobs](int v, int i, L a) {
        const VoiceAJob& j = *jobs[v];
        (a * L(j.aGain) + L::load(j.b + i) * L(j.bGain) + L::load(j.noise + i)).store(j.out + i);
    });
}

// Oscillator B from its phase at the frame start: put(i, index, b) takes W
// samples from sample i, index counting them from the frame start.
template <int W, class Put>
TENDRANE_LANES_INLINE void oscillatorBLoop(float bPhase, float fB, const WaveShape& shape, Put put) {
    using L = Lanes<W>;
    const int points = oversamplingPoints(fB);
    const L f(fB), start(bPhase);
    const ShapeLanes<W> lanes(shape);
    L index = L::ramp();
    for (int i = 0; i < kFrameSamples; i += W) {
        put(i, index, oversampledShape(lanes, wrapPhase(start + index * f), f, points));
        index = index + L(float(W));
    }
}

// Oscillator B with the sub-oscillator's swing, times tone, plus its noise.
template <int W>
TENDRANE_LANES_INLINE void voiceB(float bPhase, float subPhase, float fB, const WaveShape& shape, float subAmount,
                                  float tone, const float* noise, float* out) {
    using L = Lanes<W>;
    const bool swing = !(subAmount < 1e-5f);
    const L subStart(subPhase), half(fB / 2.0f), amount(subAmount), gain(tone);
    oscillatorBLoop<W>(bPhase, fB, shape, [=](int i, L index, L b) {
        if (swing) b = b * subOscillatorSwing(index, subStart, half, amount);
        (b * gain + L::load(noise + i)).store(out + i);
    });
}

}  // namespace engine
