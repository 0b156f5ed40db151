// The single morphing waveform of both oscillators: a clipped ramp bent into
// half cosines. The ramp y runs from -4 to 0 while the phase goes from 0 to
// `fall`, stays 0 until `rise`, runs up to +4 by `top` and stays there; a
// polynomial bends it so that each edge is half a cosine. `form` 0 is a
// sine, 1/3 a sawtooth, 2/3 a square and 1 a narrow pulse. Edges are never
// shorter than a frequency-dependent minimum, the one band limit besides the
// oversampling.
#pragma once

#include <emmintrin.h>

namespace engine {

struct WaveShape {
    float fall = 0.5f;       // phase where the falling edge ends
    float rise = 0.5f;       // phase where the rising edge starts
    float top = 1.0f;        // phase where the rising edge ends
    float fallGain = 8.0f;   // slope of the falling ramp (4 / fall)
    float riseGain = 8.0f;   // slope of the rising ramp
    float offset = 1.0003182f;

    // Once per frame per oscillator; freq in cycles per sample.
    static WaveShape make(float form, float freq);

    // Four phases in 0 to 1 at once: only minimum, maximum, multiply and add.
    __m128 shape(__m128 phase) const {
        const __m128 zero = _mm_setzero_ps();
        const __m128 y = _mm_add_ps(
            _mm_mul_ps(_mm_min_ps(_mm_sub_ps(phase, _mm_set1_ps(fall)), zero), _mm_set1_ps(fallGain)),
            _mm_mul_ps(_mm_max_ps(_mm_sub_ps(_mm_min_ps(phase, _mm_set1_ps(top)), _mm_set1_ps(rise)), zero),
                       _mm_set1_ps(riseGain)));
        return bend(y);
    }

    float shape(float phase) const { return _mm_cvtss_f32(shape(_mm_set_ss(phase))); }

private:
    // ((0.00210733 |y| - 0.02113737) y^2 + 0.00527596 |y| + 0.30721605) y^2 - offset
    __m128 bend(__m128 y) const {
        const __m128 absMask = _mm_castsi128_ps(_mm_set1_epi32(0x7FFFFFFF));
        const __m128 a = _mm_and_ps(y, absMask);
        const __m128 y2 = _mm_mul_ps(y, y);
        __m128 r = _mm_sub_ps(_mm_mul_ps(_mm_set1_ps(0.00210733f), a), _mm_set1_ps(0.02113737f));
        r = _mm_add_ps(_mm_add_ps(_mm_mul_ps(r, y2), _mm_mul_ps(_mm_set1_ps(0.00527596f), a)),
                       _mm_set1_ps(0.30721605f));
        return _mm_sub_ps(_mm_mul_ps(r, y2), _mm_set1_ps(offset));
    }
};

}  // namespace engine
