#include "engine/OscillatorB.h"

#include "engine/OscillatorLoops.h"
#include "engine/WideOscillators.h"

namespace engine {

void renderOscillatorB(float bPhase, float fB, const WaveShape& shape, float* out) {
    oscillatorBLoop<4>(bPhase, fB, shape, [out](int i, Lanes<4>, Lanes<4> b) { b.store(out + i); });
}

void renderVoiceB(float bPhase, float subPhase, float fB, const WaveShape& shape, float subAmount, float tone,
                  const float* noise, float* out) {
    switch (wide::laneWidth()) {
    case 8:
        return wide::renderVoiceB(bPhase, subPhase, fB, shape, subAmount, tone, noise, out);
    case 4:
        return voiceB<4>(bPhase, subPhase, fB, shape, subAmount, tone, noise, out);
    default:
        return voiceB<1>(bPhase, subPhase, fB, shape, subAmount, tone, noise, out);
    }
}

}  // namespace engine
