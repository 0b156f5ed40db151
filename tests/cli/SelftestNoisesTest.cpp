#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "cli/Command.h"
#include "cli/Options.h"
#include "platform/Exceptions.h"
#include "platform/OrlAudioFiles/WavReader.h"

namespace {

std::string usageErrorOf(const std::vector<std::string>& args) {
    try {
        cli::runSelftest(args);
    } catch (const cli::UsageError& e) {
        return e.what();
    }
    return "no usage error";
}

}  // namespace

TEST(SelftestNoisesTest, WritesTheCountGivenIntoAFolderItMakes) {
    const std::string top = ::testing::TempDir() + "selftest_noises";
    const std::string dir = top + "/made/here";
    std::filesystem::remove_all(top);
    ::testing::internal::CaptureStderr();
    const int status = cli::runSelftest({"--noises", "2", "--time", "0.2", "--dir", dir});
    const std::string progress = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(status, 0);
    EXPECT_NE(progress.find("noise 1/2"), std::string::npos) << progress;
    EXPECT_NE(progress.find("noise 2/2"), std::string::npos) << progress;
    const OrlAudioFiles::AudioData a = OrlAudioFiles::readWavFile(dir + "/noise001.wav");
    EXPECT_EQ(a.sampleRate, 44100u);
    EXPECT_EQ(a.frameCount(), 8820u);
    EXPECT_TRUE(std::filesystem::exists(dir + "/noise000.wav"));
    EXPECT_FALSE(std::filesystem::exists(dir + "/noise002.wav"));
    std::filesystem::remove_all(top);
}

TEST(SelftestNoisesTest, WithoutACountMakesAHundredFiles) {
    const std::string dir = ::testing::TempDir() + "selftest_noises_hundred";
    std::filesystem::remove_all(dir);
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(cli::runSelftest({"--noises", "--time", "0.005", "--dir", dir}), 0);
    ::testing::internal::GetCapturedStderr();
    EXPECT_TRUE(std::filesystem::exists(dir + "/noise099.wav"));
    EXPECT_FALSE(std::filesystem::exists(dir + "/noise100.wav"));
    EXPECT_EQ(OrlAudioFiles::readWavFile(dir + "/noise050.wav").frameCount(), 221u);
    std::filesystem::remove_all(dir);
}

TEST(SelftestNoisesTest, AFileInTheWayOfTheFolderIsAFailure) {
    const std::string path = ::testing::TempDir() + "selftest_noises_file";
    std::filesystem::remove_all(path);
    std::ofstream(path) << "not a folder";
    try {
        cli::runSelftest({"--noises", "1", "--time", "0.1", "--dir", path});
        FAIL() << "no failure";
    } catch (const Exception& e) {
        EXPECT_EQ(std::string(e.what()), "Cannot create folder " + path);
    }
    std::filesystem::remove(path);
}

TEST(SelftestNoisesTest, MisuseIsAUsageError) {
    EXPECT_EQ(usageErrorOf({"--noises", "0"}), "option '--noises' needs a count from 1 to 100000");
    EXPECT_EQ(usageErrorOf({"--noises", "many"}), "option '--noises' needs an integer, not 'many'");
    EXPECT_EQ(usageErrorOf({"--noises", "2", "3"}), "unexpected argument '3'");
    EXPECT_EQ(usageErrorOf({"--noises", "--massive", "2"}), "options '--noises' and '--massive' exclude each other");
    EXPECT_EQ(usageErrorOf({"--noises", "--create"}), "options '--noises' and '--create' exclude each other");
    EXPECT_EQ(usageErrorOf({"--noises", "--time", "0"}), "option '--time' must be above 0 and at most 600");
    // Without --noises a bare number is still refused.
    EXPECT_EQ(usageErrorOf({"7"}), "unexpected argument '7'");
}

TEST(SelftestNoisesTest, HelpTellsTheNoiseOption) {
    EXPECT_NE(std::string(cli::kSelftestUsage).find("--noises [COUNT]"), std::string::npos);
}
