// tendrane plant: builds the patch from a file and the record options, sets
// the process-wide generator from --rng, plants the branch and prints the
// planted patch in its clipboard text form.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/Options.h"
#include "patch/NorvelleProgram.h"
#include "patch/ProgramText.h"

namespace {

std::string runPlantCommand(const std::vector<std::string>& args) {
    testing::internal::CaptureStdout();
    int status = -1;
    try {
        status = cli::runPlant(args);
    } catch (...) {
        testing::internal::GetCapturedStdout();
        throw;
    }
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(status, 0);
    return out;
}

TEST(PlantCommand, PrintsThePlantedPatchAsClipboardText) {
    // The source of the first case of tests/golden/growth/plant.txt on the
    // Init genome: seed 12345, branch 5 (index 4) at 0.7, Atonality 0.8.
    const std::string text = runPlantCommand({"--branch", "4", "--rng", "0x1234:0xABCD", "--seed",
                                              "12345", "--param", "Branch5=0.7", "--param",
                                              "Atonality=0.8", "--param", "Tuning=0.62"});
    ASSERT_TRUE(isProgramText(text)) << text;
    const NorvelleProgram planted = readProgramText(text);
    // The generator steps once from a = 0x1234, b = 0xABCD.
    SeededGenerator g{0x1234u, 0xABCDu};
    g.step();
    EXPECT_EQ(planted.seed, g.a);
    EXPECT_EQ(planted.seed, 892549726u);
    EXPECT_EQ(planted.implementation, CURRENT_IMPLEMENTATION);
    EXPECT_FALSE(planted.cloned);
    EXPECT_EQ(planted.param(Param::Branch5), 0.0f);
    EXPECT_GE(planted.param(Param::Tuning), 0.25f);
    EXPECT_LT(planted.param(Param::Tuning), 0.75f);
    EXPECT_EQ(planted.getName(), u"Init");
}

TEST(PlantCommand, NeverPrintsSeedZero) {
    const std::string text = runPlantCommand({"--branch", "0", "--rng", "0xD980CF5F:0x40FB8A59"});
    EXPECT_NE(text.find("\tSeed: 0x00000001\n"), std::string::npos) << text;
}

TEST(PlantCommand, PlantsFromAPatchFile) {
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / "tendrane_plant_command_test.tdrn";
    NorvelleProgram source;
    source.setName(u"From File");
    source.seed = 777u;
    source.implementation = 1;
    source.setParam(Param::Branch1 + 10, 0.25f);
    source.computeBranchDeviations();
    {
        std::ofstream out(file, std::ios::binary);
        out << writeProgramText(source, true);
    }
    const std::string text = runPlantCommand({file.string(), "--branch", "10", "--rng", "1:2"});
    std::filesystem::remove(file);
    const NorvelleProgram planted = readProgramText(text);
    EXPECT_EQ(planted.getName(), u"From File");
    EXPECT_EQ(planted.implementation, CURRENT_IMPLEMENTATION);
    EXPECT_EQ(planted.param(Param::Branch11), 0.0f);
}

TEST(PlantCommand, RejectsAMissingOrOutOfRangeBranch) {
    EXPECT_THROW(cli::runPlant({"--rng", "1:2"}), cli::UsageError);
    EXPECT_THROW(cli::runPlant({"--branch", "12"}), cli::UsageError);
    EXPECT_THROW(cli::runPlant({"--branch", "-1"}), cli::UsageError);
    EXPECT_THROW(cli::runPlant({"--branch", "0", "--rng", "12"}), cli::UsageError);
    EXPECT_THROW(cli::runPlant({"--branch", "0", "--rng", "1:0x100000000"}), cli::UsageError);
}

}  // namespace
