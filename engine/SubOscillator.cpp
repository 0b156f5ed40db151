#include "engine/SubOscillator.h"

#include <cmath>

#include "engine/FrameSize.h"

namespace engine {

void applySubOscillator(float* b, float subPhase, float fB, float amount) {
    if (amount < 1e-5f) return;
    using L = Lanes<4>;
    const L half(fB / 2.0f), start(subPhase), gain(amount);
    L index = L::ramp();
    for (int i = 0; i < kFrameSamples; i += 4) {
        (L::load(b + i) * subOscillatorSwing(index, start, half, gain)).store(b + i);
        index = index + L(4.0f);
    }
}

float advanceSubPhase(float subPhase, float fB) {
    const float p = subPhase + 8.0f * fB;
    return p - std::floor(p);
}

}  // namespace engine
