#include "engine/WaveShape.h"

#include <emmintrin.h>

#include <algorithm>

namespace engine {

namespace {

// Raised to at least 1e-5, then lowered to at most 0.5.
float bounded(float x) { return std::min(std::max(x, 1e-5f), 0.5f); }

}  // namespace

WaveShape WaveShape::make(float form, float freq) {
    // The shortest allowed edge: edges soften as the pitch rises.
    const float s = (1.4142135f * freq + 2.0f) * freq;
    WaveShape w;
    if (form < 0.33333f) {
        const float g = 1.0f - form / 0.33333f;
        w.fall = bounded(std::max(s, 0.5f * g * g));
        w.rise = w.fall;
        w.top = 1.0f;
        w.fallGain = 4.0f / w.fall;
        w.riseGain = 4.0f / (1.0f - w.fall);
        w.offset = 1.0003182f;
        return w;
    }
    w.fall = bounded(s);
    if (form < 0.66666f) {
        const float t = 1.0f - (form - 0.33333f) / 0.33333f;
        const float q = t * t;
        const float h = 0.5f * q + 0.5f;
        w.rise = std::min(std::max((1.0f - q) * h, w.fall), 1.0f - w.fall);
        w.top = std::max(w.fall + w.rise, h);
    } else {
        const float t = 1.0f - (form - 0.66666f) / 0.33334f;
        const float p = 0.5f * (t * t);
        w.rise = std::min(std::max(p, w.fall), 1.0f - w.fall);
        w.top = std::max(w.fall + w.rise, p);
    }
    w.fallGain = 4.0f / w.fall;
    w.riseGain = 4.0f / (w.top - w.rise);
    // Takes out the mean of a wave with unequal low and high stretches.
    w.offset = (1.0f - w.top - w.rise + w.fall) + 1.0003182f;
    return w;
}

namespace {

// std::max and std::min on four lanes, to the last detail: max(a, b) is
// a < b ? b : a, min(a, b) is b < a ? b : a.
inline __m128 select(__m128 mask, __m128 yes, __m128 no) {
    return _mm_or_ps(_mm_and_ps(mask, yes), _mm_andnot_ps(mask, no));
}
inline __m128 maxOf(__m128 a, __m128 b) { return select(_mm_cmplt_ps(a, b), b, a); }
inline __m128 minOf(__m128 a, __m128 b) { return select(_mm_cmplt_ps(b, a), b, a); }
inline __m128 boundedFour(__m128 x) { return minOf(maxOf(x, _mm_set1_ps(1e-5f)), _mm_set1_ps(0.5f)); }

}  // namespace

void WaveShape::makeFour(__m128 form, __m128 freq, WaveShape* const* out) {
    // Each lane keeps the way of make its form chooses; a way no lane takes
    // is not computed. The same steps as make, in the same order.
    const __m128 one = _mm_set1_ps(1.0f), half = _mm_set1_ps(0.5f), four = _mm_set1_ps(4.0f);
    const __m128 third = _mm_set1_ps(0.33333f), twoThirds = _mm_set1_ps(0.66666f);
    const __m128 s = _mm_mul_ps(_mm_add_ps(_mm_mul_ps(_mm_set1_ps(1.4142135f), freq), _mm_set1_ps(2.0f)), freq);
    const __m128 sine = _mm_cmplt_ps(form, third);
    const __m128 saw = _mm_andnot_ps(sine, _mm_cmplt_ps(form, twoThirds));
    const __m128 pulse = _mm_andnot_ps(_mm_or_ps(sine, saw), _mm_castsi128_ps(_mm_set1_epi32(-1)));
    const int sines = _mm_movemask_ps(sine), saws = _mm_movemask_ps(saw), pulses = _mm_movemask_ps(pulse);

    __m128 fall = boundedFour(s), rise = _mm_setzero_ps(), top = one;
    if (saws) {
        // Up to a square.
        const __m128 t = _mm_sub_ps(one, _mm_div_ps(_mm_sub_ps(form, third), third));
        const __m128 q = _mm_mul_ps(t, t);
        const __m128 h = _mm_add_ps(_mm_mul_ps(half, q), half);
        const __m128 r = minOf(maxOf(_mm_mul_ps(_mm_sub_ps(one, q), h), fall), _mm_sub_ps(one, fall));
        rise = select(saw, r, rise);
        top = select(saw, maxOf(_mm_add_ps(fall, r), h), top);
    }
    if (pulses) {
        // Up to a narrow pulse.
        const __m128 t = _mm_sub_ps(one, _mm_div_ps(_mm_sub_ps(form, twoThirds), _mm_set1_ps(0.33334f)));
        const __m128 p = _mm_mul_ps(half, _mm_mul_ps(t, t));
        const __m128 r = minOf(maxOf(p, fall), _mm_sub_ps(one, fall));
        rise = select(pulse, r, rise);
        top = select(pulse, maxOf(_mm_add_ps(fall, r), p), top);
    }
    if (sines) {
        // Up to a sawtooth: the falling edge is the whole first stretch.
        const __m128 g = _mm_sub_ps(one, _mm_div_ps(form, third));
        const __m128 f = boundedFour(maxOf(s, _mm_mul_ps(_mm_mul_ps(half, g), g)));
        fall = select(sine, f, fall);
        rise = select(sine, f, rise);
        top = select(sine, one, top);
    }
    const __m128 fallGain = _mm_div_ps(four, fall);
    const __m128 riseGain = _mm_div_ps(four, select(sine, _mm_sub_ps(one, fall), _mm_sub_ps(top, rise)));
    const __m128 base = _mm_set1_ps(1.0003182f);
    const __m128 offset =
        select(sine, base, _mm_add_ps(_mm_add_ps(_mm_sub_ps(_mm_sub_ps(one, top), rise), fall), base));

    alignas(16) float lanes[6][4];
    _mm_store_ps(lanes[0], fall);
    _mm_store_ps(lanes[1], rise);
    _mm_store_ps(lanes[2], top);
    _mm_store_ps(lanes[3], fallGain);
    _mm_store_ps(lanes[4], riseGain);
    _mm_store_ps(lanes[5], offset);
    for (int k = 0; k < 4; ++k) {
        out[k]->fall = lanes[0][k];
        out[k]->rise = lanes[1][k];
        out[k]->top = lanes[2][k];
        out[k]->fallGain = lanes[3][k];
        out[k]->riseGain = lanes[4][k];
        out[k]->offset = lanes[5][k];
    }
}

}  // namespace engine
