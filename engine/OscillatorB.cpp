#include "engine/OscillatorB.h"

#include "engine/FrameSize.h"
#include "engine/Oversampling.h"
#include "engine/PhaseWrap.h"

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

}  // namespace engine
