#include "patch/MutateGenes.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr int LANES = 4;
static_assert(MUTABLE_GENE_COUNT % LANES == 0, "genes go in groups of four");
}  // namespace

float reflectIntoUnit(float v) {
    const float y = std::fabs(v - 1.0f);
    return std::fabs(y - 1.0f - 2.0f * std::floor(y / 2.0f));
}

void mutateGenes(const float* genes, const float* deviationRow, float length, float atonality,
                 int32_t implementation, float* result) {
    float g[MUTABLE_GENE_COUNT];
    float m[MUTABLE_GENE_COUNT];
    const float strength = length * length * 0.4f;
    for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) {
        g[i] = genes[i];
        m[i] = strength;
    }

    // Below the middle of Atonality a growing branch calms the oscillators'
    // modulation; above it, it adds to it.
    const float c = 1.0f - 2.0f * atonality;
    g[Gene::a_mod] += (0.5f - g[Gene::a_mod]) * c * length;
    g[Gene::b_mod] += (0.5f - g[Gene::b_mod]) * c * length;

    // The pitch-bearing genes: oscillator A's pitch doesn't move at all with
    // Atonality at or under one half.
    const float aboveMiddle = std::max(2.0f * atonality - 1.0f, 0.0f);
    m[Gene::b_freq] *= atonality * atonality;
    m[Gene::a_freq] *= aboveMiddle * aboveMiddle;
    m[Gene::a_mod] *= atonality;
    m[Gene::b_mod] *= atonality;

    if (implementation <= 3) g[Gene::fm_amt] += (0.5f - g[Gene::fm_amt]) * c * length;
    if (implementation <= 4) {
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) m[i] *= 1.25f;
    }

    for (int group = 0; group < MUTABLE_GENE_COUNT; group += LANES) {
        for (int lane = 0; lane < LANES; ++lane) {
            const int i = group + lane;
            result[i] = reflectIntoUnit(g[i] + deviationRow[i] * m[i]);
        }
    }
}
