// The single morphing waveform of both oscillators: a clipped ramp bent into
// half cosines. The ramp y runs from -4 to 0 while the phase goes from 0 to
// `fall`, stays 0 until `rise`, runs up to +4 by `top` and stays there; a
// polynomial bends it so that each edge is half a cosine. `form` 0 is a
// sine, 1/3 a sawtooth, 2/3 a square and 1 a narrow pulse. Edges are never
// shorter than a frequency-dependent minimum, the one band limit besides the
// oversampling.
#pragma once

#include "engine/Lanes.h"

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
    static void makeFour(const float* form4, const float* freq4, WaveShape* const* out4);

    // A phase in 0 to 1: only minimum, maximum, multiply and add.
    float shape(float phase) const;
};

// A shape's constants spread over the lanes of registers. Loops keep it in
// registers: the constants are not reloaded after every store of a sample.
template <int W>
struct ShapeLanes {
    using L = Lanes<W>;
    L fall, rise, top, fallGain, riseGain, offset;

    ShapeLanes() = default;
    TENDRANE_LANES_INLINE explicit ShapeLanes(const WaveShape& w)
        : fall(w.fall), rise(w.rise), top(w.top), fallGain(w.fallGain), riseGain(w.riseGain), offset(w.offset) {}

    TENDRANE_LANES_INLINE L shape(L phase) const {
        const L zero(0.0f);
        const L y = min(phase - fall, zero) * fallGain + max(min(phase, top) - rise, zero) * riseGain;
        return bend(y);
    }

private:
    // The ramp bent into half cosines by a polynomial in y and |y|.
    TENDRANE_LANES_INLINE L bend(L y) const {
        const L a = andBits(y, 0x7FFFFFFFu);
        const L y2 = y * y;
        L r = L(0.00210733f) * a - L(0.02113737f);
        r = r * y2 + L(0.00527596f) * a + L(0.30721605f);
        return r * y2 - offset;
    }
};

inline float WaveShape::shape(float phase) const { return ShapeLanes<1>(*this).shape(Lanes<1>(phase))[0]; }

}  // namespace engine
