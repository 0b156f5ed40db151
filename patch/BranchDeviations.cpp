#include "patch/BranchDeviations.h"

#include <bit>

#include "patch/GaussianPair.h"
#include "patch/NorvelleProgram.h"

namespace {

constexpr int PAIRS_PER_ROW = MUTABLE_GENE_COUNT / 2;

// Implementations 2 and later: the seeded generator, a = seedK, b = NOT seedK.
void drawRow(uint32_t seedK, DeviationRow& row) {
    SeededGenerator generator = SeededGenerator::fromSeed(seedK);
    for (int pair = 0; pair < PAIRS_PER_ROW; ++pair) {
        const GaussianPair g = nextGaussianPair(generator);
        row[2 * pair] = g.first;
        row[2 * pair + 1] = g.second;
    }
}

// Implementations 0 and 1: the legacy step. A word t starts at 0 for each
// branch and takes q after every candidate, rejected or not.
void drawLegacyRow(uint32_t seedK, DeviationRow& row) {
    uint32_t t = 0;
    for (int pair = 0; pair < PAIRS_PER_ROW; ++pair) {
        GaussianPair g;
        for (;;) {
            const uint32_t p = std::rotl((seedK + t) * 0x569CF9F3u - 0x06DC3E2Fu, 1);
            const uint32_t q = std::rotl(p * 0x323785AFu + 0xCA0D301Fu, 1);
            t = q;
            if (gaussianFromPoint(halfOfWord(p), halfOfWord(q), g)) break;
        }
        row[2 * pair] = g.first;
        row[2 * pair + 1] = g.second;
    }
}

// Moves the drawn values to the columns of the genes they belonged to when
// the implementation was current; genes added since get 0.
void remapRow(int32_t implementation, DeviationRow& row) {
    if (implementation >= 6) return;
    DeviationRow old;
    for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) old[i] = row[i];

    // Columns 0 to 8 are the same in every generation.
    row[Gene::mod_vel] = 0.0f;
    if (implementation >= 4) {
        for (int i = 10; i <= 35; ++i) row[i] = old[i - 1];
    } else if (implementation == 3) {
        for (int i = 10; i <= 30; ++i) row[i] = old[i - 1];
        row[Gene::flt_kf] = 0.0f;
        for (int i = 32; i <= 35; ++i) row[i] = old[i - 2];
    } else {
        row[Gene::vol_sus] = -old[Gene::vol_sus];
        for (int i = 10; i <= 24; ++i) row[i] = old[i - 1];
        row[Gene::sub_am] = 0.0f;
        for (int i = 26; i <= 30; ++i) row[i] = old[i - 2];
        row[Gene::flt_kf] = 0.0f;
        for (int i = 32; i <= 35; ++i) row[i] = old[i - 3];
    }
}

}  // namespace

void computeDeviationRow(uint32_t seedK, int32_t implementation, DeviationRow& row) {
    if (implementation >= 2) {
        drawRow(seedK, row);
    } else {
        drawLegacyRow(seedK, row);
    }
    remapRow(implementation, row);
}

void computeBranchDeviations(uint32_t seed, int32_t implementation, bool cloned,
                             float (&rows)[BRANCH_COUNT][MUTABLE_GENE_COUNT]) {
    for (int k = 0; k < BRANCH_COUNT; ++k) {
        const uint32_t seedK = cloned ? seed : seed + static_cast<uint32_t>(k);
        computeDeviationRow(seedK, implementation, rows[k]);
    }
}

void computeBranchDeviations(NorvelleProgram& record) {
    computeBranchDeviations(record.seed, record.implementation, record.cloned,
                            record.branchDeviations);
}
