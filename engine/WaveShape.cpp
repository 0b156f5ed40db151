#include "engine/WaveShape.h"

namespace engine {

namespace {

// std::max and std::min, lane by lane, to the last detail: max(a, b) is
// a < b ? b : a, min(a, b) is b < a ? b : a.
template <int W>
TENDRANE_LANES_INLINE Lanes<W> maxOf(Lanes<W> a, Lanes<W> b) {
    return select(a < b, b, a);
}
template <int W>
TENDRANE_LANES_INLINE Lanes<W> minOf(Lanes<W> a, Lanes<W> b) {
    return select(b < a, b, a);
}
// Raised to at least 1e-5, then lowered to at most 0.5.
template <int W>
TENDRANE_LANES_INLINE Lanes<W> bounded(Lanes<W> x) {
    return minOf(maxOf(x, Lanes<W>(1e-5f)), Lanes<W>(0.5f));
}

// The shapes of W forms and frequencies, one a lane, into out[0..W-1]. Each
// lane takes the way its form chooses; a way no lane takes is not computed.
template <int W>
void makeShapes(Lanes<W> form, Lanes<W> freq, WaveShape* const* out) {
    using L = Lanes<W>;
    const L one(1.0f), half(0.5f), four(4.0f), third(0.33333f), twoThirds(0.66666f);
    // The shortest allowed edge: edges soften as the pitch rises.
    const L s = (L(1.4142135f) * freq + L(2.0f)) * freq;
    const LaneMask<W> sine = form < third;
    const LaneMask<W> saw = andNot(form < twoThirds, sine);
    const LaneMask<W> pulse = ~(sine | saw);

    L fall = bounded(s), rise(0.0f), top = one;
    if (saw.any()) {
        // Up to a square.
        const L t = one - (form - third) / third;
        const L q = t * t;
        const L h = half * q + half;
        const L r = minOf(maxOf((one - q) * h, fall), one - fall);
        rise = select(saw, r, rise);
        top = select(saw, maxOf(fall + r, h), top);
    }
    if (pulse.any()) {
        // Up to a narrow pulse.
        const L t = one - (form - twoThirds) / L(0.33334f);
        const L p = half * (t * t);
        const L r = minOf(maxOf(p, fall), one - fall);
        rise = select(pulse, r, rise);
        top = select(pulse, maxOf(fall + r, p), top);
    }
    if (sine.any()) {
        // Up to a sawtooth: the falling edge is the whole first stretch.
        const L g = one - form / third;
        const L f = bounded(maxOf(s, half * g * g));
        fall = select(sine, f, fall);
        rise = select(sine, f, rise);
        top = select(sine, one, top);
    }
    const L fallGain = four / fall;
    const L riseGain = four / select(sine, one - fall, top - rise);
    // Takes out the mean of a wave with unequal low and high stretches.
    const L base(1.0003182f);
    const L offset = select(sine, base, one - top - rise + fall + base);
    for (int k = 0; k < W; ++k) {
        out[k]->fall = fall[k];
        out[k]->rise = rise[k];
        out[k]->top = top[k];
        out[k]->fallGain = fallGain[k];
        out[k]->riseGain = riseGain[k];
        out[k]->offset = offset[k];
    }
}

}  // namespace

WaveShape WaveShape::make(float form, float freq) {
    WaveShape w;
    WaveShape* out = &w;
    makeShapes<1>(Lanes<1>(form), Lanes<1>(freq), &out);
    return w;
}

void WaveShape::makeFour(const float* form4, const float* freq4, WaveShape* const* out4) {
    makeShapes<4>(Lanes<4>::load(form4), Lanes<4>::load(freq4), out4);
}

}  // namespace engine
