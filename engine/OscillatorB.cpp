#include "engine/OscillatorB.h"

#include "engine/FrameSize.h"
#include "engine/Oversampling.h"
#include "engine/PhaseWrap.h"
#include "engine/SubOscillator.h"

namespace engine {

void renderOscillatorB(float bPhase, float fB, const WaveShape& shape, float* out) {
    const int points = oversamplingPoints(fB);
    const __m128 f = _mm_set1_ps(fB);
    const __m128 start = _mm_set1_ps(bPhase);
    const ShapeLanes lanes(shape);
    __m128 index = _mm_setr_ps(0.0f, 1.0f, 2.0f, 3.0f);
    for (int i = 0; i < kFrameSamples; i += 4) {
        const __m128 phase = wrapPhase(_mm_add_ps(start, _mm_mul_ps(index, f)));
        _mm_storeu_ps(out + i, oversampledShape(lanes, phase, f, points));
        index = _mm_add_ps(index, _mm_set1_ps(4.0f));
    }
}

void renderVoiceB(float bPhase, float subPhase, float fB, const WaveShape& shape, float subAmount, float tone,
                  const float* noise, float* out) {
    const int points = oversamplingPoints(fB);
    const bool swing = !(subAmount < 1e-5f);
    const __m128 f = _mm_set1_ps(fB);
    const __m128 start = _mm_set1_ps(bPhase);
    const __m128 subStart = _mm_set1_ps(subPhase), half = _mm_set1_ps(fB / 2.0f), amount = _mm_set1_ps(subAmount);
    const __m128 gain = _mm_set1_ps(tone);
    const ShapeLanes lanes(shape);
    __m128 index = _mm_setr_ps(0.0f, 1.0f, 2.0f, 3.0f);
    for (int i = 0; i < kFrameSamples; i += 4) {
        __m128 b = oversampledShape(lanes, wrapPhase(_mm_add_ps(start, _mm_mul_ps(index, f))), f, points);
        if (swing) b = _mm_mul_ps(b, subOscillatorSwing(index, subStart, half, amount));
        _mm_storeu_ps(out + i, _mm_add_ps(_mm_mul_ps(b, gain), _mm_loadu_ps(noise + i)));
        index = _mm_add_ps(index, _mm_set1_ps(4.0f));
    }
}

}  // namespace engine
