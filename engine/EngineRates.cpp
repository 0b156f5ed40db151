#include "engine/EngineRates.h"

#include <algorithm>
#include <cmath>

namespace {

float pole(float f, float rate) {
    return 1.0f - std::exp(-2.0f * 3.14159265358979f * std::min(f / rate, 0.5f));
}

}  // namespace

EngineRates EngineRates::forSampleRate(float r) {
    EngineRates k;
    k.sampleRate = r;
    k.slewSlow = pole(64.0f, r);
    k.slewFast = pole(6400.0f, r);
    k.gainStep = 4.0f * std::min(0.0625f, 1000.0f / r);
    k.stepSmooth = pole(1000.0f, r);
    k.maxFreq = std::min(22050.0f / r, 0.5f);
    k.panSmooth = pole(640.0f, r);
    k.valueSmooth = pole(160.0f, r);
    k.killRate = 16.0f / (0.02f * r);
    k.stealRate = 16.0f / (0.002f * r);
    return k;
}
