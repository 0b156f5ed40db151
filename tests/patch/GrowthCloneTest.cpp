#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "patch/CloneBranch.h"
#include "patch/NorvelleProgram.h"
#include "patch/PlantBranch.h"
#include "patch/ProcessGenerator.h"

namespace {

TEST(GrowthClone, AllRowsTakeTheDirectionOfTheChosenBranch) {
    NorvelleProgram p;
    p.seed = 5000u;
    p.computeBranchDeviations();
    float chosen[MUTABLE_GENE_COUNT];
    for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) chosen[i] = p.branchDeviations[7][i];

    std::vector<std::string> labels;
    ASSERT_TRUE(cloneBranch(p, 7, [&](std::string_view l) { labels.emplace_back(l); }));
    ASSERT_EQ(labels.size(), 1u);
    EXPECT_EQ(labels[0], "Clone Branch");
    EXPECT_TRUE(p.cloned);
    EXPECT_EQ(p.seed, 5007u);
    for (int k = 0; k < BRANCH_COUNT; ++k) {
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) EXPECT_EQ(p.branchDeviations[k][i], chosen[i]);
    }
}

TEST(GrowthClone, LengthsBecomeTheChosenEffectiveLength) {
    NorvelleProgram p;
    p.setParam(Param::Branch1 + 4, 0.3f);
    p.setParam(Param::Branch1 + 9, 0.9f);
    p.setParam(Param::ModWheel, 0.5f);
    p.setParam(Param::WheelScale, 0.8f);
    const uint32_t before = p.stamp();
    ASSERT_TRUE(cloneBranch(p, 4));
    // lerp(0.3, 1, 0.5 * 0.8) = 0.3 + 0.7 * 0.4 = 0.58
    for (int k = 0; k < BRANCH_COUNT; ++k) EXPECT_FLOAT_EQ(p.param(Param::Branch1 + k), 0.58f);
    EXPECT_EQ(p.param(Param::ModWheel), 0.0f);
    EXPECT_EQ(p.param(Param::WheelScale), 0.8f);
    EXPECT_TRUE(p.modified);
    EXPECT_NE(p.stamp(), before);
}

TEST(GrowthClone, AClonedRecordKeepsItsSeed) {
    NorvelleProgram p;
    p.seed = 42u;
    p.cloned = true;
    p.computeBranchDeviations();
    ASSERT_TRUE(cloneBranch(p, 11));
    EXPECT_EQ(p.seed, 42u);
    EXPECT_TRUE(p.cloned);
}

TEST(GrowthClone, NothingHappensWithoutASelection) {
    NorvelleProgram p;
    const uint32_t before = p.stamp();
    int calls = 0;
    EXPECT_FALSE(cloneBranch(p, -1, [&](std::string_view) { ++calls; }));
    EXPECT_FALSE(cloneBranch(p, 12));
    EXPECT_EQ(calls, 0);
    EXPECT_FALSE(p.cloned);
    EXPECT_FALSE(p.modified);
    EXPECT_EQ(p.stamp(), before);
}

TEST(GrowthClone, APlantOfAClonedRecordIsNotCloned) {
    NorvelleProgram p;
    ASSERT_TRUE(cloneBranch(p, 3));
    ProcessGenerator generator(0);
    generator.setWords(11u, 12u);
    const NorvelleProgram planted = plantBranch(p, 3, generator);
    EXPECT_FALSE(planted.cloned);
    EXPECT_NE(planted.branchDeviations[0][0], planted.branchDeviations[1][0]);
}

}  // namespace
