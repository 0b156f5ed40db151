// A pair of unit Gaussian deviates by the polar method on 31-bit integers.
// Which candidates are rejected is part of the sound of every stored patch.
#pragma once

#include <cstdint>

#include "patch/SeededGenerator.h"

struct GaussianPair {
    float first = 0.0f;
    float second = 0.0f;
};

// One candidate point (x, y), each within -2^30 to 2^30. Returns false when
// the candidate is rejected: the upper 32 bits of x^2 + y^2 (as a signed
// 64-bit number) below 16, or at or above 0x0FFFFFF0.
bool gaussianFromPoint(int32_t x, int32_t y, GaussianPair& pair);

// The two halves of a generator word: the word as signed, shifted right
// arithmetically by 1.
inline int32_t halfOfWord(uint32_t word) { return static_cast<int32_t>(word) >> 1; }

// Steps the generator until a candidate (a, b) is accepted; a rejected
// candidate leaves the generator advanced.
GaussianPair nextGaussianPair(SeededGenerator& generator);
