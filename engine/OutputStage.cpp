#include "engine/OutputStage.h"

#include <cmath>

#include "engine/Denormal.h"
#include "engine/Lanes.h"

namespace engine {

namespace {

constexpr int kBlock = 64;

// Both channels: ramped level and DC blocker, in place. The two blockers'
// recursions run side by side in one loop.
void levelAndBlockDc(float* left, float* right, float lastGain, float step, float& dcLeft, float& dcRight,
                     float dcCoef) {
    float l = dcLeft, r = dcRight;
    for (int i = 0; i < kBlock; ++i) {
        const float g = lastGain + float(i) * step;
        const float a = left[i] * g;
        const float b = right[i] * g;
        l += (a - l) * dcCoef;
        r += (b - r) * dcCoef;
        left[i] = a - l;
        right[i] = b - r;
    }
    dcLeft = dropTinyBits(l);
    dcRight = dropTinyBits(r);
}

// Soft clip in place; returns the sum of squared errors the clipper added.
float clip(float* y, float postLevel) {
    using L = Lanes<4>;
    const L one(1.0f), post(postLevel);
    L error(0.0f);
    for (int i = 0; i < kBlock; i += 4) {
        const L v = L::load(y + i);
        const L c = min(max(v, L(-1.0f)), one);
        const L z = (L(1.54f) - L(0.54f) * (c * c)) * c;
        const L e = z - v;
        error = error + e * e;
        (z * post).store(y + i);
    }
    return (error[0] + error[1]) + (error[2] + error[3]);
}

}  // namespace

void OutputStage::init(float sampleRate) {
    const float d = std::exp(-5.5262041f / sampleRate);
    meterGain_ = 1.0f - d;
    // d^128 by seven squarings, though a block has 64 samples.
    float decay = d;
    for (int i = 0; i < 7; ++i) decay *= decay;
    meterDecay_ = decay;
    dcCoef_ = 1.0f - std::exp(-6.2831855f * 40.0f / sampleRate);
    meterState_ = dcLeft_ = dcRight_ = lastGain_ = meter_ = 0.0f;
}

void OutputStage::process(float* left, float* right, bool& silent, float gain, float level) {
    const float g = gain * preGain;
    float step = (g - lastGain_) / 64.0f;
    if (std::fabs(step) < 1e-10f) step = 0.0f;
    if (!(silent && std::fabs(dcLeft_) < 0.0001f && std::fabs(dcRight_) < 0.0001f)) {
        silent = false;
        levelAndBlockDc(left, right, lastGain_, step, dcLeft_, dcRight_, dcCoef_);
        const float post = postGain * level;
        meterState_ += clip(left, post) + clip(right, post);
    }
    meterState_ = dropTinyBits(meterState_ * meterDecay_);
    meter_ = std::sqrt(meterState_ * meterGain_);
    lastGain_ = g;
}

}  // namespace engine
