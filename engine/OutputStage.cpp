#include "engine/OutputStage.h"

#include <emmintrin.h>

#include <cmath>

#include "engine/Denormal.h"

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
    const __m128 one = _mm_set1_ps(1.0f);
    const __m128 post = _mm_set1_ps(postLevel);
    __m128 error = _mm_setzero_ps();
    for (int i = 0; i < kBlock; i += 4) {
        const __m128 v = _mm_loadu_ps(y + i);
        const __m128 c = _mm_min_ps(_mm_max_ps(v, _mm_set1_ps(-1.0f)), one);
        const __m128 z = _mm_mul_ps(_mm_sub_ps(_mm_set1_ps(1.54f), _mm_mul_ps(_mm_set1_ps(0.54f), _mm_mul_ps(c, c))), c);
        const __m128 e = _mm_sub_ps(z, v);
        error = _mm_add_ps(error, _mm_mul_ps(e, e));
        _mm_storeu_ps(y + i, _mm_mul_ps(z, post));
    }
    alignas(16) float lanes[4];
    _mm_store_ps(lanes, error);
    return (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]);
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
