#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "engine/RenderSelfTest.h"
#include "platform/Exceptions.h"
#include "platform/OrlAudioFiles/WavReader.h"

namespace {

std::vector<char> bytesOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// A fresh empty folder under the test's temporary directory.
std::string freshFolder(const std::string& name) {
    const std::filesystem::path dir = std::filesystem::path(::testing::TempDir()) / name;
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    return dir.string();
}

}  // namespace

TEST(RandomNoisesTest, DensityIsTheSquareOfATenthOfTheIndexPlusOne) {
    EXPECT_DOUBLE_EQ(engine::randomNoiseDensity(0), 1.0);
    EXPECT_DOUBLE_EQ(engine::randomNoiseDensity(5), 1.25);
    EXPECT_DOUBLE_EQ(engine::randomNoiseDensity(10), 2.0);
    // A tenth is not rounded down to a whole number.
    EXPECT_DOUBLE_EQ(engine::randomNoiseDensity(15), 3.25);
    EXPECT_DOUBLE_EQ(engine::randomNoiseDensity(20), 5.0);
    EXPECT_DOUBLE_EQ(engine::randomNoiseDensity(99), 99.01);
}

TEST(RandomNoisesTest, SpecOfAFileFollowsItsIndex) {
    const engine::SelfTestSpec s = engine::randomNoiseSpec("some/dir", 12, 3.5, 40);
    EXPECT_EQ(s.seed, 52u);
    EXPECT_EQ(s.time, 3.5);
    EXPECT_EQ(s.sampleRate, 44100.0f);
    EXPECT_DOUBLE_EQ(s.density, 1.0 + 1.2 * 1.2);
    EXPECT_EQ(s.file, "some/dir/noise012.wav");
    EXPECT_EQ(engine::randomNoiseSpec("some/dir/", 7).file, "some/dir/noise007.wav");
    EXPECT_EQ(engine::randomNoiseSpec("some/dir", 7).time, 20.0);
    EXPECT_EQ(engine::randomNoiseSpec("some/dir", 7).seed, 8u);
    EXPECT_EQ(engine::randomNoiseFileName(99), "noise099.wav");
    EXPECT_EQ(engine::randomNoiseFileName(1234), "noise1234.wav");
}

TEST(RandomNoisesTest, WritesSoundingDistinctReproducibleFiles) {
    const std::string dir = freshFolder("random_noises");
    std::vector<int> told;
    const std::vector<std::string> files = engine::generateRandomNoises(
        dir, 3, 0.5, [&](int i, int count, const engine::SelfTestSpec& s) {
            EXPECT_EQ(count, 3);
            EXPECT_EQ(s.file, engine::randomNoiseSpec(dir, i, 0.5).file);
            told.push_back(i);
        });
    EXPECT_EQ(told, (std::vector<int>{0, 1, 2}));
    ASSERT_EQ(files.size(), 3u);

    std::vector<std::vector<char>> first;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(files[i], dir + "/" + engine::randomNoiseFileName(i));
        ASSERT_TRUE(std::filesystem::exists(files[i])) << files[i];
        const OrlAudioFiles::AudioData a = OrlAudioFiles::readWavFile(files[i]);
        EXPECT_EQ(a.sampleRate, 44100u);
        EXPECT_EQ(a.channels, 2);
        EXPECT_EQ(a.frameCount(), 22050u);
        double energy = 0;
        for (float v : a.samples) energy += double(v) * v;
        EXPECT_GT(energy, 0.01) << files[i];
        first.push_back(bytesOf(files[i]));
    }
    EXPECT_NE(first[0], first[1]);
    EXPECT_NE(first[1], first[2]);
    EXPECT_NE(first[0], first[2]);

    // Again, over the old files: the same bytes.
    engine::generateRandomNoises(dir, 3, 0.5);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(bytesOf(files[i]), first[i]) << files[i];

    // Each file is the recording the self-test compares with.
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(engine::createTest(engine::randomNoiseSpec(dir, i, 0.5)), engine::SelfTestOutcome::Matched);
    std::filesystem::remove_all(dir);
}

TEST(RandomNoisesTest, AnotherFirstSeedGivesOtherFiles) {
    const std::string dir = freshFolder("random_noises_seed");
    engine::generateRandomNoises(dir, 1, 0.25, {}, 1);
    const std::vector<char> a = bytesOf(dir + "/noise000.wav");
    engine::generateRandomNoises(dir, 1, 0.25, {}, 2);
    const std::vector<char> b = bytesOf(dir + "/noise000.wav");
    EXPECT_FALSE(a.empty());
    EXPECT_EQ(a.size(), b.size());
    EXPECT_NE(a, b);
    std::filesystem::remove_all(dir);
}

TEST(RandomNoisesTest, AMissingFolderFailsWithThePath) {
    const std::string dir = ::testing::TempDir() + "random_noises_missing/none";
    std::filesystem::remove_all(::testing::TempDir() + "random_noises_missing");
    try {
        engine::generateRandomNoises(dir, 2, 0.1);
        FAIL() << "no failure";
    } catch (const Exception& e) {
        EXPECT_EQ(std::string(e.what()), "Cannot create file " + dir + "/noise000.wav");
    }
}
