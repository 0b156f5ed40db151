#include "engine/FrequencyModulation.h"

#include <algorithm>

namespace engine {

float limitedFmDepth(float fmDepth, float fmDepthMod, float modHold, float fA, float maxFreq) {
    const float depth = fmDepth + fmDepthMod * modHold;
    const float lim = std::max(maxFreq / fA - 1.0f, 0.0f);
    return std::min(std::max(depth, -lim), lim);
}

}  // namespace engine
