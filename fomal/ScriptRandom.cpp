#include "fomal/ScriptRandom.h"

#include <chrono>
#include <cmath>

namespace Fomal {

float ScriptRandom::gaussian(float mean, float deviation) {
    for (;;) {
        const float u = float(uniform(2.0)) - 1.0f;
        const float v = float(uniform(2.0)) - 1.0f;
        const float s = u * u + v * v;
        if (s >= 1.0f || s == 0.0f) continue;
        return mean + deviation * u * std::sqrt(-2.0f * std::log(s) / s);
    }
}

ScriptRandom& ScriptRandom::process() {
    static ScriptRandom generator = [] {
        const auto ticks = std::uint64_t(std::chrono::steady_clock::now().time_since_epoch().count()) ^
                           std::uint64_t(std::chrono::system_clock::now().time_since_epoch().count());
        static int here;
        const auto place = std::uint64_t(reinterpret_cast<std::uintptr_t>(&here));
        return ScriptRandom(std::uint32_t(ticks ^ (place >> 4)), std::uint32_t((ticks >> 32) ^ place));
    }();
    return generator;
}

}  // namespace Fomal
