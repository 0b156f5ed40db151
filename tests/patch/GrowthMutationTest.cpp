#include <gtest/gtest.h>

#include <cmath>

#include "patch/BranchDeviations.h"
#include "patch/MutateGenes.h"
#include "patch/NorvelleProgram.h"
#include "tests/patch/GrowthGoldenFiles.h"
#include "tests/support/AllocationCounter.h"

namespace {

using growthgolden::toFloat;
using growthgolden::toWord;
using growthgolden::ulpDistance;
using growthgolden::words;

void fill(float* values, int count, float v) {
    for (int i = 0; i < count; ++i) values[i] = v;
}

TEST(GrowthMutation, FoldReflectsAtBothEnds) {
    EXPECT_FLOAT_EQ(reflectIntoUnit(1.2f), 0.8f);
    EXPECT_FLOAT_EQ(reflectIntoUnit(-0.3f), 0.3f);
    EXPECT_FLOAT_EQ(reflectIntoUnit(2.5f), 0.5f);   // 1 -> 0 -> 0.5
    EXPECT_FLOAT_EQ(reflectIntoUnit(-1.2f), 0.8f);  // 0 -> 1 -> 0.8
    EXPECT_EQ(reflectIntoUnit(0.0f), 0.0f);
    EXPECT_EQ(reflectIntoUnit(1.0f), 1.0f);
    EXPECT_EQ(reflectIntoUnit(2.0f), 0.0f);
    EXPECT_EQ(reflectIntoUnit(0.5f), 0.5f);
    for (float v = -7.0f; v <= 7.0f; v += 0.013f) {
        const float r = reflectIntoUnit(v);
        EXPECT_GE(r, 0.0f) << v;
        EXPECT_LE(r, 1.0f) << v;
    }
}

TEST(GrowthMutation, ZeroLengthBranchSoundsLikeTheGenome) {
    NorvelleProgram p;
    for (int i = 0; i < GENE_COUNT; ++i) p.genes[i] = static_cast<float>(i) / 36.0f;
    p.computeBranchDeviations();
    ASSERT_EQ(effectiveLength(p, 5), 0.0f);
    for (int implementation : {0, 3, 4, 10}) {
        for (float atonality : {0.0f, 0.5f, 1.0f}) {
            float out[MUTABLE_GENE_COUNT];
            mutateGenes(p.genes, p.branchDeviations[5], 0.0f, atonality, implementation, out);
            for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) {
                // Unchanged apart from the rounding of the fold (v - 1 and back).
                EXPECT_NEAR(out[i], p.genes[i], 6e-8f) << implementation << " " << i;
                if (p.genes[i] >= 0.5f) {
                    EXPECT_EQ(out[i], p.genes[i]) << i;
                }
            }
        }
    }
}

TEST(GrowthMutation, AtonalityAtTheMiddleNeitherPullsNorMovesOscillatorAPitch) {
    float genes[GENE_COUNT];
    float row[MUTABLE_GENE_COUNT];
    fill(genes, GENE_COUNT, 0.5f);
    fill(row, MUTABLE_GENE_COUNT, 0.0f);
    genes[Gene::a_mod] = 0.2f;
    genes[Gene::b_mod] = 0.9f;
    genes[Gene::a_freq] = 0.3f;
    genes[Gene::fm_amt] = 0.1f;
    row[Gene::a_freq] = 5.0f;  // a huge deviation, but its strength is 0
    float out[MUTABLE_GENE_COUNT];
    mutateGenes(genes, row, 1.0f, 0.5f, 10, out);
    EXPECT_FLOAT_EQ(out[Gene::a_mod], 0.2f);   // c = 0: no pull
    EXPECT_FLOAT_EQ(out[Gene::b_mod], 0.9f);
    EXPECT_FLOAT_EQ(out[Gene::a_freq], 0.3f);  // m[16] = 0
    // Even the old fm_amt pull has c = 0.
    mutateGenes(genes, row, 1.0f, 0.5f, 2, out);
    EXPECT_FLOAT_EQ(out[Gene::fm_amt], 0.1f);
    EXPECT_FLOAT_EQ(out[Gene::a_freq], 0.3f);
    // Below the middle oscillator A's pitch stays too; above it, it moves.
    mutateGenes(genes, row, 1.0f, 0.3f, 10, out);
    EXPECT_FLOAT_EQ(out[Gene::a_freq], 0.3f);
    mutateGenes(genes, row, 1.0f, 0.75f, 10, out);
    // m[16] = 0.4 * (0.5)^2 = 0.1; 0.3 + 5 * 0.1 = 0.8
    EXPECT_FLOAT_EQ(out[Gene::a_freq], 0.8f);
}

TEST(GrowthMutation, FullLengthAtTheMiddleWorkedByHand) {
    // Genome 0.5, every deviation +1, L = 1, A = 0.5, implementation 10:
    // m = 1 * 0.4 = 0.4 for all; c = 0; m[20] = 0.4 * 0.25 = 0.1; m[16] = 0;
    // m[17] = m[21] = 0.4 * 0.5 = 0.2.
    float genes[GENE_COUNT];
    float row[MUTABLE_GENE_COUNT];
    fill(genes, GENE_COUNT, 0.5f);
    fill(row, MUTABLE_GENE_COUNT, 1.0f);
    float out[MUTABLE_GENE_COUNT];
    mutateGenes(genes, row, 1.0f, 0.5f, 10, out);
    for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) {
        float expected = 0.9f;
        if (i == Gene::a_freq) expected = 0.5f;
        if (i == Gene::b_freq) expected = 0.6f;
        if (i == Gene::a_mod || i == Gene::b_mod) expected = 0.7f;
        EXPECT_FLOAT_EQ(out[i], expected) << i;
    }
    // With every deviation +2 the genes go past 1 and reflect: 0.5 + 0.8 = 1.3 -> 0.7.
    fill(row, MUTABLE_GENE_COUNT, 2.0f);
    mutateGenes(genes, row, 1.0f, 0.5f, 10, out);
    EXPECT_FLOAT_EQ(out[Gene::env_time], 0.7f);
    EXPECT_FLOAT_EQ(out[Gene::b_freq], 0.7f);  // 0.5 + 0.2
}

TEST(GrowthMutation, OldImplementationsPullFmAndStrengthenWorkedByHand) {
    // Genome 0.5 except a_mod 0.3 and fm_amt 0.1; deviations -1; L = 0.5; A = 0.25.
    // m = 0.25 * 0.4 = 0.1; c = 1 - 0.5 = 0.5.
    // a_mod: 0.3 + (0.5 - 0.3) * 0.5 * 0.5 = 0.35; b_mod at 0.5 isn't moved.
    // m[20] = 0.1 * 0.0625 = 0.00625; m[16] = 0; m[17] = m[21] = 0.1 * 0.25 = 0.025.
    // Implementation 3 pulls fm_amt: 0.1 + 0.4 * 0.5 * 0.5 = 0.2.
    // Implementations up to 4 multiply every strength by 1.25:
    //   m = 0.125, m[20] = 0.0078125, m[17] = m[21] = 0.03125.
    float genes[GENE_COUNT];
    float row[MUTABLE_GENE_COUNT];
    fill(genes, GENE_COUNT, 0.5f);
    fill(row, MUTABLE_GENE_COUNT, -1.0f);
    genes[Gene::a_mod] = 0.3f;
    genes[Gene::fm_amt] = 0.1f;
    float out[MUTABLE_GENE_COUNT];

    mutateGenes(genes, row, 0.5f, 0.25f, 3, out);
    EXPECT_FLOAT_EQ(out[Gene::env_time], 0.375f);
    EXPECT_FLOAT_EQ(out[Gene::a_freq], 0.5f);
    EXPECT_FLOAT_EQ(out[Gene::a_mod], 0.31875f);
    EXPECT_FLOAT_EQ(out[Gene::b_freq], 0.4921875f);
    EXPECT_FLOAT_EQ(out[Gene::b_mod], 0.46875f);
    EXPECT_FLOAT_EQ(out[Gene::fm_amt], 0.075f);

    // Implementation 4: no fm_amt pull, 0.1 - 0.125 = -0.025 reflects to 0.025.
    mutateGenes(genes, row, 0.5f, 0.25f, 4, out);
    EXPECT_FLOAT_EQ(out[Gene::env_time], 0.375f);
    // The fold passes through 1.025, so the last place is that of numbers near 1.
    EXPECT_NEAR(out[Gene::fm_amt], 0.025f, 1.2e-7f);

    // Implementation 5: strengths as they are: 0.5 - 0.1 = 0.4; a_mod 0.35 - 0.025.
    mutateGenes(genes, row, 0.5f, 0.25f, 5, out);
    EXPECT_FLOAT_EQ(out[Gene::env_time], 0.4f);
    EXPECT_FLOAT_EQ(out[Gene::a_mod], 0.325f);
    EXPECT_FLOAT_EQ(out[Gene::b_freq], 0.49375f);
    EXPECT_FLOAT_EQ(out[Gene::fm_amt], 0.0f);
}

TEST(GrowthMutation, AboveTheMiddleTheModulationGrows) {
    // c = 1 - 2 * 0.9 = -0.8: a_mod moves away from the centre.
    float genes[GENE_COUNT];
    float row[MUTABLE_GENE_COUNT];
    fill(genes, GENE_COUNT, 0.5f);
    fill(row, MUTABLE_GENE_COUNT, 0.0f);
    genes[Gene::a_mod] = 0.6f;
    float out[MUTABLE_GENE_COUNT];
    mutateGenes(genes, row, 1.0f, 0.9f, 10, out);
    // 0.6 + (0.5 - 0.6) * -0.8 * 1 = 0.68
    EXPECT_FLOAT_EQ(out[Gene::a_mod], 0.68f);
}

TEST(GrowthMutation, OnlyThirtySixGenesAreWritten) {
    float genes[GENE_COUNT];
    float row[MUTABLE_GENE_COUNT];
    fill(genes, GENE_COUNT, 0.25f);
    fill(row, MUTABLE_GENE_COUNT, 3.0f);
    float out[GENE_COUNT];
    out[Gene::fx_size] = -42.0f;
    mutateGenes(genes, row, 1.0f, 1.0f, 10, out);
    EXPECT_EQ(out[Gene::fx_size], -42.0f);
}

TEST(GrowthMutation, MatchesTheGoldenVectors) {
    const auto lines = growthgolden::lines("mutations.txt");
    ASSERT_EQ(lines.size(), 24u);
    for (const auto& line : lines) {
        const auto w = words(line);
        ASSERT_EQ(w.size(), 6u + 1u + 36u + 1u + 36u) << line;
        const uint32_t seed = toWord(w[0]);
        const int implementation = std::atoi(w[1].c_str());
        const bool cloned = w[2] == "1";
        const int k = std::atoi(w[3].c_str());
        const float length = toFloat(w[4]);
        const float atonality = toFloat(w[5]);
        float genes[GENE_COUNT];
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) genes[i] = toFloat(w[7 + i]);
        genes[Gene::fx_size] = 0.5f;
        float rows[BRANCH_COUNT][MUTABLE_GENE_COUNT];
        computeBranchDeviations(seed, implementation, cloned, rows);
        float out[MUTABLE_GENE_COUNT];
        mutateGenes(genes, rows[k], length, atonality, implementation, out);
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) {
            EXPECT_EQ(ulpDistance(out[i], toFloat(w[44 + i])), 0)
                << "seed " << seed << " implementation " << implementation << " gene " << i
                << ": " << out[i] << " vs " << w[44 + i];
        }
    }
}

TEST(GrowthMutation, AllocatesNothing) {
    NorvelleProgram p;
    float out[MUTABLE_GENE_COUNT];
    testsupport::AllocationCounter counter;
    mutateGenes(p.genes, p.branchDeviations[3], 0.7f, 0.8f, 10, out);
    EXPECT_EQ(counter.count(), 0u);
}

}  // namespace
