#include "engine/WideOscillators.h"

#include <cmath>

#include "engine/FrameSize.h"
#include "engine/Oversampling.h"
#include "engine/WideLanes.h"

#define WIDE TENDRANE_WIDE
#define WIDE_ENTRY TENDRANE_WIDE_ENTRY

namespace engine::wide {

namespace {

// The phase wrap of the four-sample loops, on eight.
WIDE __m256 wrapPhase8(__m256 p) {
    const __m256 mask = _mm256_castsi256_ps(_mm256_set1_epi32(0x4203FFFF));
    return sub(_mm256_and_ps(add(p, all(48.0f)), mask), all(32.0f));
}

// The wave shape's constants and its steps, as ShapeLanes takes them.
struct Shape8 {
    __m256 fall, rise, top, fallGain, riseGain, offset;
};

WIDE Shape8 lanesOf(const WaveShape& w) {
    return {all(w.fall), all(w.rise), all(w.top), all(w.fallGain), all(w.riseGain), all(w.offset)};
}

WIDE __m256 shape8(const Shape8& w, __m256 phase) {
    const __m256 zero = _mm256_setzero_ps();
    const __m256 y = add(mul(_mm256_min_ps(sub(phase, w.fall), zero), w.fallGain),
                         mul(_mm256_max_ps(sub(_mm256_min_ps(phase, w.top), w.rise), zero), w.riseGain));
    const __m256 a = _mm256_and_ps(y, _mm256_castsi256_ps(_mm256_set1_epi32(0x7FFFFFFF)));
    const __m256 y2 = mul(y, y);
    __m256 r = sub(mul(all(0.00210733f), a), all(0.02113737f));
    r = add(add(mul(r, y2), mul(all(0.00527596f), a)), all(0.30721605f));
    return sub(mul(r, y2), w.offset);
}

WIDE __m256 oversampled8(const Shape8& w, __m256 phase, __m256 f, int points) {
    const __m256 s0 = shape8(w, phase);
    if (points == 1) return s0;
    if (points == 2) {
        const __m256 s1 = shape8(w, wrapPhase8(add(phase, mul(f, all(0.5f)))));
        return mul(add(s0, s1), all(0.5f));
    }
    const __m256 s1 = shape8(w, wrapPhase8(add(phase, mul(f, all(1.0f / 3.0f)))));
    const __m256 s2 = shape8(w, wrapPhase8(add(phase, mul(f, all(2.0f / 3.0f)))));
    return mul(add(add(s0, s1), s2), all(1.0f / 3.0f));
}

// The sub-oscillator's swing, as subOscillatorSwing takes it.
WIDE __m256 swing8(__m256 index, __m256 subPhase, __m256 halfStep, __m256 amount) {
    const __m256 u = sub(wrapPhase8(add(subPhase, mul(index, halfStep))), all(0.5f));
    const __m256 a = _mm256_and_ps(u, _mm256_castsi256_ps(_mm256_set1_epi32(0x7FFFFFFF)));
    const __m256 s = sub(mul(sub(all(24.0f), mul(all(32.0f), a)), mul(u, u)), all(1.0f));
    return add(mul(s, amount), all(1.0f));
}

// Oscillator A of V voices: each voice's phase runs on through its steps, a
// chain of dependent additions; the V chains run side by side.
template <int V>
WIDE void voicesA(const VoiceAJob* const* jobs) {
    int points[V];
    Shape8 lanes[V];
    float phase[V];
    for (int v = 0; v < V; ++v) {
        points[v] = oversamplingPoints(jobs[v]->meanStep);
        lanes[v] = lanesOf(*jobs[v]->shape);
        phase[v] = *jobs[v]->phase;
    }
    for (int i = 0; i < kFrameSamples; i += 8) {
        __m256 p[V];
#pragma GCC unroll 4
        for (int v = 0; v < V; ++v) {
            // The phase is reduced after every fourth sample, as ever.
            const float* step = jobs[v]->step;
            const float p0 = phase[v];
            const float p1 = p0 + step[i];
            const float p2 = p1 + step[i + 1];
            const float p3 = p2 + step[i + 2];
            const float next = p3 + step[i + 3];
            const float p4 = next - std::floor(next);
            const float p5 = p4 + step[i + 4];
            const float p6 = p5 + step[i + 5];
            const float p7 = p6 + step[i + 6];
            const float last = p7 + step[i + 7];
            phase[v] = last - std::floor(last);
            p[v] = _mm256_setr_ps(p0, p1, p2, p3, p4, p5, p6, p7);
        }
#pragma GCC unroll 4
        for (int v = 0; v < V; ++v) {
            const VoiceAJob& j = *jobs[v];
            const __m256 a = oversampled8(lanes[v], wrapPhase8(p[v]), _mm256_loadu_ps(j.step + i), points[v]);
            _mm256_storeu_ps(j.out + i, add(add(mul(a, all(j.aGain)), mul(_mm256_loadu_ps(j.b + i), all(j.bGain))),
                                            _mm256_loadu_ps(j.noise + i)));
        }
    }
    for (int v = 0; v < V; ++v) *jobs[v]->phase = phase[v];
}

}  // namespace

WIDE_ENTRY void renderVoiceA(float& aPhase, const float* step, float meanStep, const WaveShape& shape, float aGain,
                             const float* b, float bGain, const float* noise, float* out) {
    VoiceAJob job;
    job.phase = &aPhase;
    job.step = step;
    job.meanStep = meanStep;
    job.shape = &shape;
    job.aGain = aGain;
    job.b = b;
    job.bGain = bGain;
    job.noise = noise;
    job.out = out;
    const VoiceAJob* one = &job;
    voicesA<1>(&one);
}

WIDE_ENTRY void renderVoicesA(const VoiceAJob* jobs, int count) {
    // Three at a time; the rest one or two together.
    int k = 0;
    for (; k + 3 <= count; k += 3) {
        const VoiceAJob* three[3] = {&jobs[k], &jobs[k + 1], &jobs[k + 2]};
        voicesA<3>(three);
    }
    if (count - k == 2) {
        const VoiceAJob* two[2] = {&jobs[k], &jobs[k + 1]};
        voicesA<2>(two);
    } else if (count - k == 1) {
        const VoiceAJob* one = &jobs[k];
        voicesA<1>(&one);
    }
}

WIDE_ENTRY void renderVoiceB(float bPhase, float subPhase, float fB, const WaveShape& shape, float subAmount,
                             float tone, const float* noise, float* out) {
    const int points = oversamplingPoints(fB);
    const bool swing = !(subAmount < 1e-5f);
    const __m256 f = all(fB), start = all(bPhase);
    const __m256 subStart = all(subPhase), half = all(fB / 2.0f), amount = all(subAmount), gain = all(tone);
    const Shape8 lanes = lanesOf(shape);
    __m256 index = _mm256_setr_ps(0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f);
    for (int i = 0; i < kFrameSamples; i += 8) {
        __m256 v = oversampled8(lanes, wrapPhase8(add(start, mul(index, f))), f, points);
        if (swing) v = mul(v, swing8(index, subStart, half, amount));
        _mm256_storeu_ps(out + i, add(mul(v, gain), _mm256_loadu_ps(noise + i)));
        index = add(index, all(8.0f));
    }
}

}  // namespace engine::wide
