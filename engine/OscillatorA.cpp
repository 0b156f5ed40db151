#include "engine/OscillatorA.h"

#include <cmath>

#include "engine/FrameSize.h"
#include "engine/Oversampling.h"
#include "engine/PhaseWrap.h"
#include "engine/WideOscillators.h"

namespace engine {

namespace {

// The phase runs on; put(i, a) takes the four samples of the wave from i on.
template <class Put>
void runOscillatorA(float& aPhase, const float* step, float meanStep, const WaveShape& shape, Put put) {
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
        put(i, oversampledShape(lanes, wrapped, _mm_loadu_ps(step + i), points));
    }
    aPhase = phase;
}

}  // namespace

void renderOscillatorA(float& aPhase, const float* step, float meanStep, const WaveShape& shape, float* out) {
    runOscillatorA(aPhase, step, meanStep, shape, [out](int i, __m128 a) { _mm_storeu_ps(out + i, a); });
}

void renderVoiceA(float& aPhase, const float* step, float meanStep, const WaveShape& shape, float aGain,
                  const float* b, float bGain, const float* noise, float* out) {
    if (wide::available()) return wide::renderVoiceA(aPhase, step, meanStep, shape, aGain, b, bGain, noise, out);
    const __m128 ga = _mm_set1_ps(aGain), gb = _mm_set1_ps(bGain);
    runOscillatorA(aPhase, step, meanStep, shape, [=](int i, __m128 a) {
        _mm_storeu_ps(out + i, _mm_add_ps(_mm_add_ps(_mm_mul_ps(a, ga), _mm_mul_ps(_mm_loadu_ps(b + i), gb)),
                                          _mm_loadu_ps(noise + i)));
    });
}

void renderVoicesA(const VoiceAJob* jobs, int count) {
    if (wide::available()) return wide::renderVoicesA(jobs, count);
    for (int k = 0; k < count; ++k) {
        const VoiceAJob& j = jobs[k];
        renderVoiceA(*j.phase, j.step, j.meanStep, *j.shape, j.aGain, j.b, j.bGain, j.noise, j.out);
    }
}

}  // namespace engine
