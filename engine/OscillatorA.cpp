#include "engine/OscillatorA.h"

#include "engine/OscillatorLoops.h"
#include "engine/WideOscillators.h"

namespace engine {

void renderOscillatorA(float& aPhase, const float* step, float meanStep, const WaveShape& shape, float* out) {
    VoiceAJob job;
    job.phase = &aPhase;
    job.step = step;
    job.meanStep = meanStep;
    job.shape = &shape;
    const VoiceAJob* one = &job;
    oscillatorALoop<4, 1>(&one, [out](int, int i, Lanes<4> a) { a.store(out + i); });
}

void renderVoiceA(float& aPhase, const float* step, float meanStep, const WaveShape& shape, float aGain,
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
    renderVoicesA(&job, 1);
}

void renderVoicesA(const VoiceAJob* jobs, int count) {
    const int width = wide::laneWidth();
    if (width == 8) return wide::renderVoicesA(jobs, count);
    for (int k = 0; k < count; ++k) {
        const VoiceAJob* one = &jobs[k];
        if (width == 4)
            voicesA<4, 1>(&one);
        else
            voicesA<1, 1>(&one);
    }
}

}  // namespace engine
