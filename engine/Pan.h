// The twelve branches sit around a circle in stereo, turned by Rotation; the
// longer the branch the wider, and the spread fades in as Effect goes from a
// quarter to half of its travel.
#pragma once

#include <algorithm>
#include <cmath>

namespace engine {

inline float panTarget(int branch, float rotation, float effectBi, float branchAmount) {
    const float r = std::fmod(std::fabs(-float(branch) / 3.0f - 1.0f - 4.0f * rotation), 4.0f);
    const float tri = std::fabs(r - 2.0f) - 1.0f;
    const float spread = std::min(std::max(2.0f * effectBi + 1.0f, 0.0f), 1.0f);
    return tri * spread * (2.0f * branchAmount - branchAmount * branchAmount);
}

}  // namespace engine
