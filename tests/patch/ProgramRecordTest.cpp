#include <gtest/gtest.h>

#include "patch/NorvelleProgram.h"
#include "patch/ProgramText.h"

namespace {

TEST(ProgramRecord, ANewRecordIsInTheInitState) {
    NorvelleProgram p;
    EXPECT_EQ(p.implementation, 10);
    EXPECT_EQ(p.getName(), u"Init");
    EXPECT_TRUE(p.path.empty());
    EXPECT_FALSE(p.modified);
    EXPECT_FALSE(p.cloned);
    EXPECT_EQ(p.seed, 1u);
    EXPECT_EQ(p.pitch, 0.0f);
    for (float g : p.genes) EXPECT_EQ(g, 0.5f);
    const float init[PARAM_COUNT] = {0.0f, 0.0f, 0.5f, 0.5f, 0.5f, 0.25f, 1.0f,
                                     0.5f, 0.5f, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    for (int i = 0; i < PARAM_COUNT; ++i) EXPECT_EQ(p.param(i), init[i]) << i;
    EXPECT_NE(p.stamp(), 0u);
}

TEST(ProgramRecord, ANewRecordHasItsDeviationsComputed) {
    NorvelleProgram p;
    // Seed 1 is not cloned: row 0 is drawn from seed 1, row 1 from seed 2, so
    // the rows differ and none is all zero.
    int nonZero = 0;
    for (float d : p.branchDeviations[0]) nonZero += d != 0.0f;
    EXPECT_EQ(nonZero, MUTABLE_GENE_COUNT);
    EXPECT_NE(p.branchDeviations[0][0], p.branchDeviations[1][0]);
}

TEST(ProgramRecord, SeedIsOneNeverZeroAfterInit) {
    NorvelleProgram p;
    p.seed = 0;
    p.init();
    EXPECT_EQ(p.seed, 1u);
}

TEST(ProgramRecord, ConstantsAndSizes) {
    EXPECT_EQ(CURRENT_IMPLEMENTATION, 10);
    EXPECT_EQ(MIN_PITCH, -3);
    EXPECT_EQ(MAX_PITCH, 3);
    EXPECT_EQ(GENE_COUNT, 37);
    EXPECT_EQ(MUTABLE_GENE_COUNT, 36);
    EXPECT_EQ(PARAM_COUNT, 21);
    EXPECT_EQ(BRANCH_COUNT, 12);
    EXPECT_EQ(PROGRAM_SLOT_COUNT, 16);
}

TEST(ProgramRecord, GeneTableNamesAndGenerations) {
    const char* names[GENE_COUNT] = {
        "env_time", "env_loop", "env_tilt", "vol_atk",  "vol_dcy", "vol_sus",  "mod_atk", "mod_dcy",
        "mod_sh",   "mod_vel",  "lfo_rate", "lfo_amt",  "lfo_bal", "a_form",   "a_noise", "a_color",
        "a_freq",   "a_mod",    "b_form",   "b_noise",  "b_freq",  "b_mod",    "b_sh",    "fm_amt",
        "fm_mod",   "sub_am",   "balance",  "flt_freq", "flt_mod", "flt_sep",  "flt_q",   "flt_kf",
        "fx_mix",   "fx_len",   "fx_damp",  "fx_chors", "fx_size"};
    for (int i = 0; i < GENE_COUNT; ++i) {
        EXPECT_EQ(GENE_TABLE[i].name, names[i]) << i;
        EXPECT_EQ(findGene(names[i]), i);
    }
    EXPECT_EQ(Gene::a_freq, 16);
    EXPECT_EQ(Gene::b_mod, 21);
    EXPECT_EQ(Gene::sub_am, 25);
    EXPECT_EQ(Gene::flt_kf, 31);
    EXPECT_EQ(Gene::fx_size, 36);
    EXPECT_EQ(GENE_TABLE[Gene::mod_vel].since, 6);
    EXPECT_EQ(GENE_TABLE[Gene::sub_am].since, 3);
    EXPECT_EQ(GENE_TABLE[Gene::flt_kf].since, 4);
    EXPECT_EQ(GENE_TABLE[Gene::fx_size].since, NEVER_MUTATES);
    EXPECT_EQ(GENE_TABLE[Gene::env_time].since, 0);
    EXPECT_EQ(findGene("Env_time"), -1);
}

TEST(ProgramRecord, ParameterTableNamesAndInitValues) {
    EXPECT_EQ(PARAMETER_TABLE[Param::ModWheel].name, "ModWheel");
    EXPECT_EQ(PARAMETER_TABLE[Param::Release].initValue, 0.25f);
    EXPECT_EQ(PARAMETER_TABLE[Param::WheelScale].initValue, 1.0f);
    EXPECT_EQ(PARAMETER_TABLE[Param::Volume].name, "Volume");
    EXPECT_EQ(PARAMETER_TABLE[Param::Branch1].name, "Branch1");
    EXPECT_EQ(PARAMETER_TABLE[Param::Branch12].name, "Branch12");
    EXPECT_EQ(Param::Branch12, 20);
    EXPECT_EQ(findParameter("Atonality"), 3);
    EXPECT_EQ(findParameter("Branch10"), 18);
    EXPECT_EQ(findParameter("branch10"), -1);
}

TEST(ProgramRecord, SettingAGeneToItsOwnValueChangesNothing) {
    NorvelleProgram p;
    const uint32_t before = p.stamp();
    EXPECT_FALSE(p.setGene(Gene::flt_q, 0.5f));
    EXPECT_FALSE(p.modified);
    EXPECT_EQ(p.stamp(), before);
}

TEST(ProgramRecord, SettingAGeneToANewValueStampsAndMarksModified) {
    NorvelleProgram p;
    const uint32_t before = p.stamp();
    EXPECT_TRUE(p.setGene(Gene::flt_q, 0.75f));
    EXPECT_EQ(p.genes[Gene::flt_q], 0.75f);
    EXPECT_TRUE(p.modified);
    EXPECT_NE(p.stamp(), before);
    // And setting it back is a change again.
    const uint32_t second = p.stamp();
    EXPECT_TRUE(p.setGene(Gene::flt_q, 0.5f));
    EXPECT_NE(p.stamp(), second);
}

TEST(ProgramRecord, TouchTakesAFreshStampAndMarksOnlyWhenTold) {
    NorvelleProgram p;
    const uint32_t s0 = p.stamp();
    p.touch(false);
    EXPECT_NE(p.stamp(), s0);
    EXPECT_FALSE(p.modified);
    const uint32_t s1 = p.stamp();
    p.touch(true);
    EXPECT_NE(p.stamp(), s1);
    EXPECT_TRUE(p.modified);
}

TEST(ProgramRecord, StampsAreSharedByAllRecordsAndNeverRepeat) {
    NorvelleProgram a;
    NorvelleProgram b;
    EXPECT_NE(a.stamp(), b.stamp());
    const uint32_t sa = a.stamp();
    b.touch(false);
    a.touch(false);
    EXPECT_GT(a.stamp() - sa, 1u);  // b's touch took a value in between
}

TEST(ProgramRecord, ACopyKeepsTheStampAndEveryField) {
    NorvelleProgram src;
    src.implementation = 3;
    src.seed = 987654321u;
    src.cloned = true;
    src.pitch = -0.25f;
    src.path = u"C:\\Patches\\x.tdrn";
    src.setGene(Gene::b_freq, 0.125f);
    src.setParam(Param::Branch7, 0.6f);
    src.computeBranchDeviations();
    src.setName(u"Source");
    src.touch(true);

    NorvelleProgram copy(src);
    EXPECT_EQ(copy.stamp(), src.stamp());
    EXPECT_EQ(copy.implementation, 3);
    EXPECT_EQ(copy.seed, 987654321u);
    EXPECT_TRUE(copy.cloned);
    EXPECT_TRUE(copy.modified);
    EXPECT_EQ(copy.pitch, -0.25f);
    EXPECT_EQ(copy.path, src.path);
    EXPECT_EQ(copy.getName(), u"Source");
    EXPECT_EQ(copy.genes[Gene::b_freq], 0.125f);
    EXPECT_EQ(copy.param(Param::Branch7), 0.6f);
    for (int k = 0; k < BRANCH_COUNT; ++k) {
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) {
            EXPECT_EQ(copy.branchDeviations[k][i], src.branchDeviations[k][i]);
        }
    }

    NorvelleProgram assigned;
    assigned = src;
    EXPECT_EQ(assigned.stamp(), src.stamp());
    EXPECT_EQ(assigned.implementation, 3);
    EXPECT_EQ(assigned.getName(), u"Source");
    EXPECT_EQ(assigned.branchDeviations[11][35], src.branchDeviations[11][35]);
}

TEST(ProgramRecord, RenamingACopyLeavesTheSourceAlone) {
    NorvelleProgram src;
    src.setName(u"Original");
    NorvelleProgram copy(src);
    copy.setName(u"Renamed");
    EXPECT_EQ(src.getName(), u"Original");
    EXPECT_EQ(copy.getName(), u"Renamed");

    NorvelleProgram assigned;
    assigned = src;
    assigned.setName(u"Other");
    EXPECT_EQ(src.getName(), u"Original");
    src.setName(u"Changed");
    EXPECT_EQ(assigned.getName(), u"Other");
    EXPECT_EQ(copy.getName(), u"Renamed");
}

TEST(ProgramRecord, ImplementationIsKeptThroughCopyAndInitRestoresTheCurrentOne) {
    NorvelleProgram p;
    p.implementation = 3;
    p.computeBranchDeviations();
    NorvelleProgram copy(p);
    NorvelleProgram assigned;
    assigned = copy;
    EXPECT_EQ(copy.implementation, 3);
    EXPECT_EQ(assigned.implementation, 3);
    assigned.init();
    EXPECT_EQ(assigned.implementation, CURRENT_IMPLEMENTATION);
}

TEST(ProgramRecord, ImplementationThreeStaysThroughSaveAndLoad) {
    NorvelleProgram p;
    p.implementation = 3;
    p.seed = 4321u;
    p.computeBranchDeviations();
    const NorvelleProgram loaded = readProgramText(writeProgramText(p, true));
    EXPECT_EQ(loaded.implementation, 3);
    EXPECT_EQ(loaded.seed, 4321u);
    // Its rows are those of implementation 3 again: flt_kf has no deviation.
    for (int k = 0; k < BRANCH_COUNT; ++k) {
        EXPECT_EQ(loaded.branchDeviations[k][Gene::flt_kf], 0.0f);
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) {
            EXPECT_EQ(loaded.branchDeviations[k][i], p.branchDeviations[k][i]);
        }
    }
}

TEST(ProgramRecord, NamesAreAnyTextIncludingEmptyAndLong) {
    NorvelleProgram p;
    p.setName(u"");
    EXPECT_EQ(p.getName(), u"");
    const std::u16string longName(1000, u'\u00e9');
    p.setName(longName);
    EXPECT_EQ(p.getName(), longName);
    p.setName(u"Jingle Balls");
    EXPECT_EQ(p.getName(), u"Jingle Balls");
}

TEST(ProgramRecord, EffectiveLengthGrowsWithTheModWheel) {
    NorvelleProgram p;
    p.setParam(Param::Branch1 + 2, 0.25f);
    EXPECT_EQ(effectiveLength(p, 2), 0.25f);
    p.setParam(Param::ModWheel, 0.5f);
    // 0.25 + 0.75 * (0.5 * 1.0) = 0.625
    EXPECT_EQ(effectiveLength(p, 2), 0.625f);
    p.setParam(Param::WheelScale, 0.5f);
    // 0.25 + 0.75 * 0.25 = 0.4375
    EXPECT_EQ(effectiveLength(p, 2), 0.4375f);
    EXPECT_EQ(effectiveLength(p, 3), 0.25f);
    p.setParam(Param::WheelScale, 1.0f);
    p.setParam(Param::ModWheel, 1.0f);
    for (int k = 0; k < BRANCH_COUNT; ++k) EXPECT_EQ(effectiveLength(p, k), 1.0f);
}

TEST(ProgramRecord, SelfAssignmentKeepsTheRecord) {
    NorvelleProgram p;
    p.setName(u"Self");
    const uint32_t stamp = p.stamp();
    NorvelleProgram& alias = p;
    p = alias;
    EXPECT_EQ(p.getName(), u"Self");
    EXPECT_EQ(p.stamp(), stamp);
}

}  // namespace
