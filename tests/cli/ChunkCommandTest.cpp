#include <gtest/gtest.h>

#include <cstdio>
#include <unistd.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/Options.h"
#include "patch/Chunk.h"

namespace {

std::string source(const std::string& relative) { return std::string(TENDRANE_SOURCE_DIR) + "/" + relative; }

std::string temporaryFile(const std::string& name) {
    return (std::filesystem::temp_directory_path() / ("tendrane-chunk-" + std::to_string(::getpid()) + "-" + name))
        .string();
}

std::vector<uint8_t> readBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

}  // namespace

TEST(ChunkCommandTest, WritesAProgramChunkAndReadsItBack) {
    const std::string out = temporaryFile("one.bin");
    ASSERT_EQ(cli::runChunk({"write", "--program", source("resources/patches/Factory6.tdrn"), "-o", out}), 0);
    std::vector<uint8_t> bytes = readBytes(out);
    ASSERT_GE(bytes.size(), 20u);
    EXPECT_EQ(bytes[0], 0x02);  // 0x3FDD1B02, little-endian
    EXPECT_EQ(bytes[3], 0x3F);

    testing::internal::CaptureStdout();
    ASSERT_EQ(cli::runChunk({"read", out}), 0);
    const std::string json = testing::internal::GetCapturedStdout();
    EXPECT_NE(json.find("\"kind\": \"program\""), std::string::npos);
    EXPECT_NE(json.find("\"name\": \"Campana Aurea\""), std::string::npos);
    EXPECT_NE(json.find("\"midiConfig\": null"), std::string::npos);
    std::filesystem::remove(out);
}

TEST(ChunkCommandTest, WritesABankWithItsMidiConfiguration) {
    const std::string config = temporaryFile("c.qbmc");
    {
        std::ofstream c(config);
        c << "TendraneMIDIConfig: { PitchWheelRange: 3 }\n";
    }
    const std::string out = temporaryFile("bank.bin");
    ASSERT_EQ(cli::runChunk({"write", "--bank", source("resources/patches/Factory0.tdrn"),
                             source("resources/patches/Factory1.tdrn"), "--midi-config", config, "-o", out}),
              0);
    std::vector<uint8_t> bytes = readBytes(out);
    ChunkContents contents = inspectChunk(bytes.data(), bytes.size());
    EXPECT_TRUE(contents.isBank);
    ASSERT_EQ(contents.programs.size(), 16u);
    EXPECT_EQ(contents.programs[0].getName(), u"Radix Gravis");
    EXPECT_EQ(contents.programs[1].getName(), u"Fundus Tenebrosus");
    EXPECT_EQ(contents.programs[2].getName(), u"Init");
    EXPECT_NE(contents.midiConfigText.find("PitchWheelRange: 3"), std::string::npos);

    testing::internal::CaptureStdout();
    ASSERT_EQ(cli::runChunk({"read", out}), 0);
    const std::string json = testing::internal::GetCapturedStdout();
    EXPECT_NE(json.find("\"kind\": \"bank\""), std::string::npos);
    EXPECT_NE(json.find("PitchWheelRange: 3"), std::string::npos);
    std::filesystem::remove(out);
    std::filesystem::remove(config);
}

TEST(ChunkCommandTest, MisuseAndBadChunksFail) {
    EXPECT_THROW(cli::runChunk({}), cli::UsageError);
    EXPECT_THROW(cli::runChunk({"write", "-o", "x.bin"}), cli::UsageError);
    EXPECT_THROW(cli::runChunk({"write", "--program", "a.tdrn", "--bank", "b.tdrn", "-o", "x.bin"}), cli::UsageError);
    EXPECT_THROW(cli::runChunk({"write", "--program", "a.tdrn"}), cli::UsageError);
    EXPECT_THROW(cli::runChunk({"read"}), cli::UsageError);
    const std::string bad = temporaryFile("bad.bin");
    {
        std::ofstream b(bad, std::ios::binary);
        b << "short";
    }
    try {
        cli::runChunk({"read", bad});
        ADD_FAILURE() << "no failure";
    } catch (const std::exception& e) {
        EXPECT_STREQ(e.what(), "End of file error");
    }
    std::filesystem::remove(bad);
}
