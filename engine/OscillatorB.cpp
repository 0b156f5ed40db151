#include "engine/OscillatorB.h"

#include "engine/FrameSize.h"
#include "engine/Oversampling.h"
#include "engine/PhaseWrap.h"
#include "engine/WideOscillators.h"
#include "engine/SubOscillator.h"

namespace engine {

namespace {

// put(i, index, b) takes the four samples of the wave from i on; index holds
// their sample numbers.
template <class Put>
void runOscillatorB(float bPhase, float fB, const WaveShape& shape, Put put) {
    const int points = oversamplingPoints(fB);
    const __m128 f = _mm_set1_ps(fB);
    const __m128 start = _mm_set1_ps(bPhase);
    const ShapeLanes lanes(shape);
    __m128 index = _mm_setr_ps(0.0f, 1.0f, 2.0f, 3.0f);
    for (int i = 0; i < kFrameSamples; i += 4) {
        put(i, index, oversampledShape(lanes, wrapPhase(_mm_add_ps(start, _mm_mul_ps(index, f))), f, points));
        index = _mm_add_ps(index, _mm_set1_ps(4.0f));
    }
}

}  // namespace

void renderOscillatorB(float bPhase, float fB, const WaveShape& shape, float* out) {
    runOscillatorB(bPhase, fB, shape, [out](int i, __m128, __m128 b) { _mm_storeu_ps(out + i, b); });
}

void renderVoiceB(float bPhase, float subPhase, float fB, const WaveShape& shape, float subAmount, float tone,
                  const float* noise, float* out) {
    if (wide::available()) return wide::renderVoiceB(bPhase, subPhase, fB, shape, subAmount, tone, noise, out);
    const bool swing = !(subAmount < 1e-5f);
    const __m128 subStart = _mm_set1_ps(subPhase), half = _mm_set1_ps(fB / 2.0f), amount = _mm_set1_ps(subAmount);
    const __m128 gain = _mm_set1_ps(tone);
    runOscillatorB(bPhase, fB, shape, [=](int i, __m128 index, __m128 b) {
        if (swing) b = _mm_mul_ps(b, subOscillatorSwing(index, subStart, half, amount));
        _mm_storeu_ps(out + i, _mm_add_ps(_mm_mul_ps(b, gain), _mm_loadu_ps(noise + i)));
    });
}

}  // namespace engine
