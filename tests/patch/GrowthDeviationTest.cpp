#include <gtest/gtest.h>

#include <map>
#include <tuple>

#include "patch/BranchDeviations.h"
#include "patch/GaussianPair.h"
#include "patch/NorvelleProgram.h"
#include "patch/SeededGenerator.h"
#include "tests/patch/GrowthGoldenFiles.h"

namespace {

using growthgolden::toFloat;
using growthgolden::toWord;
using growthgolden::ulpDistance;
using growthgolden::words;

using Rows = float[BRANCH_COUNT][MUTABLE_GENE_COUNT];

TEST(GrowthDeviations, MatchTheGoldenVectorsForSeedsImplementationsAndCloning) {
    const auto lines = growthgolden::lines("deviations.txt");
    // 7 seeds x 8 implementations x (not cloned, cloned) x 12 rows.
    ASSERT_EQ(lines.size(), 7u * 8u * 2u * 12u);
    std::map<std::tuple<uint32_t, int, int>, int> rowsSeen;
    Rows rows;
    std::tuple<uint32_t, int, int> computedFor{0, -1, -1};
    for (const auto& line : lines) {
        const auto w = words(line);
        ASSERT_EQ(w.size(), 4u + MUTABLE_GENE_COUNT);
        const uint32_t seed = toWord(w[0]);
        const int implementation = std::atoi(w[1].c_str());
        const int cloned = std::atoi(w[2].c_str());
        const int k = std::atoi(w[3].c_str());
        const auto key = std::make_tuple(seed, implementation, cloned);
        if (key != computedFor) {
            computeBranchDeviations(seed, implementation, cloned != 0, rows);
            computedFor = key;
        }
        ++rowsSeen[key];
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) {
            EXPECT_EQ(ulpDistance(rows[k][i], toFloat(w[4 + i])), 0)
                << "seed " << seed << " implementation " << implementation << " cloned " << cloned
                << " row " << k << " column " << i;
        }
    }
    EXPECT_EQ(rowsSeen.size(), 7u * 8u * 2u);
}

TEST(GrowthDeviations, CurrentRowsArePairsFromTheSeededGenerator) {
    // Row k of an uncloned record comes from a = seed + k, b = NOT (seed + k):
    // the first pair fills columns 0 and 1, the second 2 and 3, and so on.
    Rows rows;
    computeBranchDeviations(1000u, 10, false, rows);
    for (int k : {0, 5, 11}) {
        SeededGenerator g = SeededGenerator::fromSeed(1000u + static_cast<uint32_t>(k));
        for (int pair = 0; pair < 18; ++pair) {
            const GaussianPair p = nextGaussianPair(g);
            EXPECT_EQ(rows[k][2 * pair], p.first);
            EXPECT_EQ(rows[k][2 * pair + 1], p.second);
        }
    }
}

TEST(GrowthDeviations, SeedPlusBranchWrapsAroundTheWord) {
    Rows wrapped;
    computeBranchDeviations(0xFFFFFFFFu, 10, false, wrapped);
    DeviationRow row;
    computeDeviationRow(0u, 10, row);  // branch 1 of seed 0xFFFFFFFF
    for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) EXPECT_EQ(wrapped[1][i], row[i]);
}

TEST(GrowthDeviations, ClonedRowsAreAllEqual) {
    for (int implementation : {0, 1, 3, 6, 10}) {
        Rows rows;
        computeBranchDeviations(4242u, implementation, true, rows);
        for (int k = 1; k < BRANCH_COUNT; ++k) {
            for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) {
                EXPECT_EQ(rows[k][i], rows[0][i]) << implementation << " " << k << " " << i;
            }
        }
    }
    Rows uncloned;
    computeBranchDeviations(4242u, 10, false, uncloned);
    EXPECT_NE(uncloned[1][0], uncloned[0][0]);
}

TEST(GrowthDeviations, ImplementationOneUsesTheLegacyStepWorkedByHand) {
    // Seed 1, branch 0, t = 0:
    //   p = rotl1(1 * 0x569CF9F3 - 0x06DC3E2F) = rotl1(0x4FC0BBC4) = 0x9F817788
    //   q = rotl1(0x9F817788 * 0x323785AF + 0xCA0D301F) = rotl1(0x54DF8E17) = 0xA9BF1C2E
    //   x = -809452604, y = -723546601; s has upper word 0x105BB39A >= 0x0FFFFFF0:
    //   rejected, and t = q all the same.
    //   p = rotl1((1 + 0xA9BF1C2E) * 0x569CF9F3 - 0x06DC3E2F) = rotl1(0xF299396E) = 0xE53272DD
    //   q = rotl1(0xE53272DD * 0x323785AF + 0xCA0D301F) = rotl1(0x84B18632) = 0x09630C65
    //   x = -224839314, y = 78743090; s = 56753191342738696, upper word 0x00C9A0BA: taken.
    //   w = 0.0492255, r = sqrt(-2 ln w / w) = 11.06114,
    //   pair = (-0.2093979 * 11.06114, 0.0733352 * 11.06114) = (-2.316179, 0.811171).
    Rows rows;
    computeBranchDeviations(1u, 1, false, rows);
    EXPECT_NEAR(rows[0][0], -2.316179f, 3e-6);
    EXPECT_NEAR(rows[0][1], 0.811171f, 3e-6);
    GaussianPair check;
    ASSERT_FALSE(gaussianFromPoint(-809452604, -723546601, check));
    ASSERT_TRUE(gaussianFromPoint(-224839314, 78743090, check));
    EXPECT_EQ(rows[0][0], check.first);
    EXPECT_EQ(rows[0][1], check.second);
    // The legacy rows are not those of the seeded generator.
    Rows current;
    computeBranchDeviations(1u, 2, false, current);
    EXPECT_NE(rows[0][0], current[0][0]);
    // Implementations 0 and 1 draw and remap alike.
    Rows zero;
    computeBranchDeviations(1u, 0, false, zero);
    for (int k = 0; k < BRANCH_COUNT; ++k) {
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) EXPECT_EQ(zero[k][i], rows[k][i]);
    }
}

// The implementations from 2 on draw the same values; only the remap differs.
// Compare each old row with the unchanged row of implementation 6.
TEST(GrowthDeviations, ImplementationsFourAndFiveInsertModVel) {
    Rows drawn;
    computeBranchDeviations(31337u, 6, false, drawn);
    for (int implementation : {4, 5}) {
        Rows rows;
        computeBranchDeviations(31337u, implementation, false, rows);
        for (int k = 0; k < BRANCH_COUNT; ++k) {
            for (int i = 0; i <= 8; ++i) EXPECT_EQ(rows[k][i], drawn[k][i]);
            EXPECT_EQ(rows[k][Gene::mod_vel], 0.0f);
            for (int i = 10; i <= 35; ++i) EXPECT_EQ(rows[k][i], drawn[k][i - 1]);
        }
    }
}

TEST(GrowthDeviations, ImplementationThreeInsertsModVelAndFltKf) {
    Rows drawn;
    Rows rows;
    computeBranchDeviations(31337u, 6, false, drawn);
    computeBranchDeviations(31337u, 3, false, rows);
    for (int k = 0; k < BRANCH_COUNT; ++k) {
        for (int i = 0; i <= 8; ++i) EXPECT_EQ(rows[k][i], drawn[k][i]);
        EXPECT_EQ(rows[k][Gene::mod_vel], 0.0f);
        for (int i = 10; i <= 30; ++i) EXPECT_EQ(rows[k][i], drawn[k][i - 1]);
        EXPECT_EQ(rows[k][Gene::flt_kf], 0.0f);
        for (int i = 32; i <= 35; ++i) EXPECT_EQ(rows[k][i], drawn[k][i - 2]);
    }
}

TEST(GrowthDeviations, ImplementationTwoNegatesVolSusAndInsertsThreeGenes) {
    Rows drawn;
    Rows rows;
    computeBranchDeviations(31337u, 6, false, drawn);
    computeBranchDeviations(31337u, 2, false, rows);
    for (int k = 0; k < BRANCH_COUNT; ++k) {
        for (int i = 0; i <= 8; ++i) {
            if (i == Gene::vol_sus) {
                EXPECT_EQ(rows[k][i], -drawn[k][i]);
            } else {
                EXPECT_EQ(rows[k][i], drawn[k][i]);
            }
        }
        EXPECT_EQ(rows[k][Gene::mod_vel], 0.0f);
        for (int i = 10; i <= 24; ++i) EXPECT_EQ(rows[k][i], drawn[k][i - 1]);
        EXPECT_EQ(rows[k][Gene::sub_am], 0.0f);
        for (int i = 26; i <= 30; ++i) EXPECT_EQ(rows[k][i], drawn[k][i - 2]);
        EXPECT_EQ(rows[k][Gene::flt_kf], 0.0f);
        for (int i = 32; i <= 35; ++i) EXPECT_EQ(rows[k][i], drawn[k][i - 3]);
    }
}

TEST(GrowthDeviations, GenesAddedLaterHaveNoDeviationInOlderImplementations) {
    for (int implementation = 0; implementation <= CURRENT_IMPLEMENTATION; ++implementation) {
        Rows rows;
        computeBranchDeviations(99u, implementation, false, rows);
        for (int gene = 0; gene < MUTABLE_GENE_COUNT; ++gene) {
            for (int k = 0; k < BRANCH_COUNT; ++k) {
                if (implementation < GENE_TABLE[gene].since) {
                    EXPECT_EQ(rows[k][gene], 0.0f) << implementation << " " << gene;
                } else {
                    EXPECT_NE(rows[k][gene], 0.0f) << implementation << " " << gene;
                }
            }
        }
    }
}

TEST(GrowthDeviations, RecordRowsFollowImplementationSeedAndCloned) {
    NorvelleProgram p;
    p.seed = 555u;
    p.implementation = 4;
    p.cloned = true;
    p.computeBranchDeviations();
    Rows expected;
    computeBranchDeviations(555u, 4, true, expected);
    for (int k = 0; k < BRANCH_COUNT; ++k) {
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) EXPECT_EQ(p.branchDeviations[k][i], expected[k][i]);
    }
}

}  // namespace
