// The plant's random source and its fast sine. Every plant of every frame
// is grown from generators seeded by fixed numbers, so the same patch draws
// the same plant; the constants and the order of the operations are part
// of the plant's look and may never change.
#pragma once

#include <cmath>
#include <cstdint>

namespace views {

// Two 32-bit words; all arithmetic wraps modulo 2^32. A generator seeded
// with s starts as (s, ~s).
struct PlantRandom {
    std::uint32_t a = 0;
    std::uint32_t b = 0;

    static PlantRandom fromSeed(std::uint32_t seed) { return PlantRandom{seed, ~seed}; }

    //   t  = a * 0xAD39F3E6 + 0xF24783A6
    //   a' = t | ((b * 0x323785AF + 0xCA0D3029) >> 31)
    //   b' = (b * 0x646F0B5E + 0x941A6052) | (t >> 31)
    void step() {
        const std::uint32_t t = a * 0xAD39F3E6u + 0xF24783A6u;
        const std::uint32_t na = t | ((b * 0x323785AFu + 0xCA0D3029u) >> 31);
        const std::uint32_t nb = (b * 0x646F0B5Eu + 0x941A6052u) | (t >> 31);
        a = na;
        b = nb;
    }

    // Two steps; the sum of the four words as single precision numbers,
    // scaled to mean 0 and standard deviation 1.
    float normal() {
        step();
        const float a1 = static_cast<float>(a), b1 = static_cast<float>(b);
        step();
        const float a2 = static_cast<float>(a), b2 = static_cast<float>(b);
        return (a1 + b1 + a2 + b2) * 4.0327452e-10f - 3.4641016f;
    }
};

// The parabola that stands in for the sine of every angle of the plant;
// p in turns. wave(0) = 0, wave(0.25) = 1, wave(0.5) = 0, wave(0.75) = -1.
inline float wave(float p) {
    float x = p - std::floor(p);
    x = 2.0f * x - 1.0f;
    return 4.0f * x * (std::fabs(x) - 1.0f);
}

}  // namespace views
