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
    // Four at once: the shapes make gives for each lane's form and freq.
    static void makeFour(__m128 form, __m128 freq, WaveShape* const* out4);

    // Four phases in 0 to 1 at once: only minimum, maximum, multiply and add.
    __m128 shape(__m128 phase) const;
    float shape(float phase) const { return _mm_cvtss_f32(shape(_mm_set_ss(phase))); }
};

// A shape's constants spread over the four lanes of registers: the same
// shape in every lane, or one voice's shape per lane. Loops keep it in
// registers: the constants are not reloaded after every store of a sample.
struct ShapeLanes {
    __m128 fall, rise, top, fallGain, riseGain, offset;

    explicit ShapeLanes(const WaveShape& w)
        : fall(_mm_set1_ps(w.fall)),
          rise(_mm_set1_ps(w.rise)),
          top(_mm_set1_ps(w.top)),
          fallGain(_mm_set1_ps(w.fallGain)),
          riseGain(_mm_set1_ps(w.riseGain)),
          offset(_mm_set1_ps(w.offset)) {}
    // One shape per lane.
    ShapeLanes(const WaveShape& a, const WaveShape& b, const WaveShape& c, const WaveShape& d)
        : fall(_mm_setr_ps(a.fall, b.fall, c.fall, d.fall)),
          rise(_mm_setr_ps(a.rise, b.rise, c.rise, d.rise)),
          top(_mm_setr_ps(a.top, b.top, c.top, d.top)),
          fallGain(_mm_setr_ps(a.fallGain, b.fallGain, c.fallGain, d.fallGain)),
          riseGain(_mm_setr_ps(a.riseGain, b.riseGain, c.riseGain, d.riseGain)),
          offset(_mm_setr_ps(a.offset, b.offset, c.offset, d.offset)) {}

    __m128 shape(__m128 phase) const {
        const __m128 zero = _mm_setzero_ps();
        const __m128 y = _mm_add_ps(_mm_mul_ps(_mm_min_ps(_mm_sub_ps(phase, fall), zero), fallGain),
                                    _mm_mul_ps(_mm_max_ps(_mm_sub_ps(_mm_min_ps(phase, top), rise), zero), riseGain));
        return bend(y);
    }

private:
    // ((0.00210733 |y| - 0.02113737) y^2 + 0.00527596 |y| + 0.30721605) y^2 - offset
    __m128 bend(__m128 y) const {
        const __m128 absMask = _mm_castsi128_ps(_mm_set1_epi32(0x7FFFFFFF));
        const __m128 a = _mm_and_ps(y, absMask);
        const __m128 y2 = _mm_mul_ps(y, y);
        __m128 r = _mm_sub_ps(_mm_mul_ps(_mm_set1_ps(0.00210733f), a), _mm_set1_ps(0.02113737f));
        r = _mm_add_ps(_mm_add_ps(_mm_mul_ps(r, y2), _mm_mul_ps(_mm_set1_ps(0.00527596f), a)),
                       _mm_set1_ps(0.30721605f));
        return _mm_sub_ps(_mm_mul_ps(r, y2), offset);
    }
};

inline __m128 WaveShape::shape(__m128 phase) const { return ShapeLanes(*this).shape(phase); }

}  // namespace engine
