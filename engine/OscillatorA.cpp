#include "engine/OscillatorA.h"

#include <cmath>

#include "engine/FrameSize.h"
#include "engine/Oversampling.h"
#include "engine/PhaseWrap.h"

namespace engine {

void renderOscillatorA(float& aPhase, const float* step, float meanStep, const WaveShape& shape, float* out) {
    const int points = oversamplingPoints(meanStep);
    const ShapeLanes lanes(shape);
    float phase = aPhase;
    for (int i = 0; i < kFrameSamples; i += 4) {
        const float p0 = phase;
        const float p1 = p0 + step[i];
        const float p2 = p1 + step[i + 1];
        const float p3 = p2 + step[i + 2];
        const float next = p3 + step[i + 3];
        phase = next - std::floor(next);
        const __m128 wrapped = wrapPhase(_mm_setr_ps(p0, p1, p2, p3));
        _mm_storeu_ps(out + i, oversampledShape(lanes, wrapped, _mm_loadu_ps(step + i), points));
    }
    aPhase = phase;
}

}  // namespace engine
