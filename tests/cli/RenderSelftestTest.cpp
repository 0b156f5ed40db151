#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "cli/Command.h"
#include "engine/RenderSelfTest.h"
#include "platform/Exceptions.h"
#include "platform/OrlAudioFiles/WavReader.h"
#include "platform/OrlAudioFiles/WavWriter.h"

namespace {

const std::string kGolden = std::string(TENDRANE_SOURCE_DIR) + "/tests/golden/selftest";

std::string failureOf(const engine::SelfTestSpec& s) {
    try {
        engine::createTest(s);
    } catch (const Exception& e) {
        return e.what();
    }
    return "no failure";
}

}  // namespace

TEST(RenderSelftestTest, StoredRecordingsStillMatch) {
    // The command runs every line of the stored list.
    EXPECT_EQ(cli::runSelftest({"--dir", kGolden}), 0);
}

TEST(RenderSelftestTest, StoredRecordingsHoldSound) {
    std::ifstream list(kGolden + "/selftest.txt");
    std::string line;
    int files = 0;
    while (std::getline(list, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream fields(line);
        std::string seed, time, rate, density, tolerance, file;
        fields >> seed >> time >> rate >> density >> tolerance >> file;
        OrlAudioFiles::AudioData a = OrlAudioFiles::readWavFile(kGolden + "/" + file);
        EXPECT_EQ(a.sampleRate, uint32_t(std::stoul(rate)));
        double energy = 0;
        for (float v : a.samples) energy += double(v) * v;
        EXPECT_GT(energy, 0.1) << file;
        ++files;
    }
    EXPECT_GE(files, 6);
}

TEST(RenderSelftestTest, FirstRunRecordsAndSecondRunMatches) {
    engine::SelfTestSpec s;
    s.seed = 99;
    s.time = 0.3;
    s.sampleRate = 32000;
    s.density = 20;
    s.file = ::testing::TempDir() + "selftest_record.wav";
    std::remove(s.file.c_str());
    EXPECT_EQ(engine::createTest(s), engine::SelfTestOutcome::Created);
    EXPECT_EQ(engine::createTest(s), engine::SelfTestOutcome::Matched);
    std::remove(s.file.c_str());
}

TEST(RenderSelftestTest, AChangedSampleIsAMismatchAtItsOffset) {
    engine::SelfTestSpec s;
    s.seed = 5;
    s.time = 0.25;
    s.sampleRate = 44100;
    s.density = 12;
    s.tolerance = 1e-4f;
    s.file = ::testing::TempDir() + "selftest_mismatch.wav";
    OrlAudioFiles::AudioData a = engine::renderSelfTest(s);
    a.samples[2 * 1234 + 1] += 0.001f;
    OrlAudioFiles::writeWavFile(s.file, a, OrlAudioFiles::SampleFormat::Float32);
    EXPECT_EQ(failureOf(s), "Audio data mismatch at offset 1234, file " + s.file);
    // Within the tolerance it passes.
    a.samples[2 * 1234 + 1] -= 0.00095f;
    OrlAudioFiles::writeWavFile(s.file, a, OrlAudioFiles::SampleFormat::Float32);
    EXPECT_EQ(failureOf(s), "no failure");
    // A shorter recording mismatches where it ends.
    a.samples.resize(2 * 1000);
    OrlAudioFiles::writeWavFile(s.file, a, OrlAudioFiles::SampleFormat::Float32);
    EXPECT_EQ(failureOf(s), "Audio data mismatch at offset 1000, file " + s.file);
    std::remove(s.file.c_str());
}

TEST(RenderSelftestTest, MaterialFollowsTheSeedAndTheDensity) {
    engine::SelfTestSpec s;
    s.seed = 7;
    s.time = 2.0;
    s.density = 5;
    engine::SelfTestMaterial a = engine::selfTestMaterial(s);
    engine::SelfTestMaterial b = engine::selfTestMaterial(s);
    ASSERT_EQ(a.events.size(), b.events.size());
    EXPECT_EQ(a.program.seed, b.program.seed);
    int ons = 0;
    for (const engine::SelfTestEvent& e : a.events) ons += (e.event.status & 0xF0) == 0x90;
    EXPECT_EQ(ons, 10);
    s.seed = 8;
    EXPECT_NE(engine::selfTestMaterial(s).program.seed, a.program.seed);
}

TEST(RenderSelftestTest, MassiveRunIsOptInAndRecordsThenCompares) {
    const std::string dir = ::testing::TempDir() + "selftest_massive";
    EXPECT_EQ(cli::runSelftest({"--massive", "2", "--time", "0.2", "--dir", dir}), 0);
    EXPECT_TRUE(std::filesystem::exists(dir + "/massive0.wav"));
    EXPECT_TRUE(std::filesystem::exists(dir + "/massive1.wav"));
    std::filesystem::remove_all(dir);
}
