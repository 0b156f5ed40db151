// Sample-and-hold on oscillator B: every time the accumulator passes 1 the
// current sample is held. A rate above 0.99999 means no hold at all.
#pragma once

#include "engine/FrameSize.h"

namespace engine {

inline void sampleAndHold(float* b16, float& hold, float& accumulator, float rate) {
    if (rate > 0.99999f) return;
    for (int i = 0; i < kFrameSamples; ++i) {
        accumulator += rate;
        if (accumulator >= 1.0f) {
            hold = b16[i];
            accumulator -= 1.0f;
        }
        b16[i] = hold;
    }
}

}  // namespace engine
