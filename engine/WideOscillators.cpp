#include "engine/WideOscillators.h"

#include "engine/OscillatorLoops.h"

// The oscillators' loops at eight lanes, built for the processors' 256-bit
// registers; a processor check decides whether they run at all.
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
#define WIDE_ENTRY __attribute__((target("avx")))
#else
#define WIDE_ENTRY
#endif

namespace engine::wide {

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
    voicesA<8, 1>(&one);
}

WIDE_ENTRY void renderVoicesA(const VoiceAJob* jobs, int count) {
    // Three at a time; the rest one or two together.
    int k = 0;
    for (; k + 3 <= count; k += 3) {
        const VoiceAJob* three[3] = {&jobs[k], &jobs[k + 1], &jobs[k + 2]};
        voicesA<8, 3>(three);
    }
    if (count - k == 2) {
        const VoiceAJob* two[2] = {&jobs[k], &jobs[k + 1]};
        voicesA<8, 2>(two);
    } else if (count - k == 1) {
        const VoiceAJob* one = &jobs[k];
        voicesA<8, 1>(&one);
    }
}

WIDE_ENTRY void renderVoiceB(float bPhase, float subPhase, float fB, const WaveShape& shape, float subAmount,
                             float tone, const float* noise, float* out) {
    voiceB<8>(bPhase, subPhase, fB, shape, subAmount, tone, noise, out);
}

}  // namespace engine::wide
