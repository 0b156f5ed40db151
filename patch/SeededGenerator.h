// The seeded generator: two 32-bit words stepped by a fixed recurrence. Its
// sequence is part of the sound of every stored patch, so neither the
// constants nor the order of the operations may ever change.
#pragma once

#include <cstdint>

struct SeededGenerator {
    uint32_t a = 0;
    uint32_t b = 0;

    // The usual start from a seed: a = seed, b = NOT seed.
    static SeededGenerator fromSeed(uint32_t seed) { return SeededGenerator{seed, ~seed}; }

    // One step, all arithmetic modulo 2^32:
    //   u  = b * 0x323785AF - 0x35F2CFD7
    //   a' = ((a * 0x569CF9F3 - 0x06DC3E2D) << 1) | (u >> 31)
    //   b' = (u << 1) | (a' >> 31)
    // b' takes the top bit of the new a, not the bit shifted out of it; that
    // asymmetry belongs to the sequence and is kept on purpose.
    void step() {
        const uint32_t u = b * 0x323785AFu - 0x35F2CFD7u;
        const uint32_t na = ((a * 0x569CF9F3u - 0x06DC3E2Du) << 1) | (u >> 31);
        const uint32_t nb = (u << 1) | (na >> 31);
        a = na;
        b = nb;
    }
};
