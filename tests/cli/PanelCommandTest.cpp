// tendrane panel: a layout file opened headlessly, the panel written as a
// PNG, pixel for pixel as stored (TENDRANE_WRITE_GOLDEN=1 replaces the
// stored picture, only after looking at it), and the view tree as JSON.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/Options.h"
#include "pixels/Png.h"

namespace {

const std::filesystem::path GOLDEN = std::filesystem::path(TENDRANE_SOURCE_DIR) / "tests/golden/panel";

std::vector<std::uint8_t> readFile(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::vector<std::uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

std::filesystem::path tempPng(const char* name) {
    return std::filesystem::temp_directory_path() /
           (std::string(name) + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) + ".png");
}

}  // namespace

TEST(PanelCommandTest, ALayoutFileDrawsAsStored) {
    const std::filesystem::path out = tempPng("tendrane-panel-");
    testing::internal::CaptureStdout();
    const int status = cli::runPanel({"--layout-file", (GOLDEN / "widgets.fomal").string(), "-o", out.string()});
    testing::internal::GetCapturedStdout();
    ASSERT_EQ(status, 0);
    const std::vector<std::uint8_t> made = readFile(out);
    std::filesystem::remove(out);
    const char* write = std::getenv("TENDRANE_WRITE_GOLDEN");
    if (write != nullptr && std::string(write) == "1")
        std::ofstream(GOLDEN / "widgets.png", std::ios::binary)
            .write(reinterpret_cast<const char*>(made.data()), std::streamsize(made.size()));
    const std::vector<std::uint8_t> stored = readFile(GOLDEN / "widgets.png");
    ASSERT_FALSE(stored.empty());
    const OrlPixels::DecodedPng a = OrlPixels::decodePng(made.data(), made.size());
    const OrlPixels::DecodedPng b = OrlPixels::decodePng(stored.data(), stored.size());
    ASSERT_EQ(a.width, 384);
    ASSERT_EQ(a.height, 512);
    ASSERT_EQ(b.pixels.size(), a.pixels.size());
    std::size_t differing = 0;
    for (std::size_t i = 0; i < a.pixels.size(); ++i) differing += a.pixels[i] != b.pixels[i];
    EXPECT_EQ(differing, 0u);
}

TEST(PanelCommandTest, TheTreeListsEveryViewWithItsPanelBounds) {
    testing::internal::CaptureStdout();
    const int status = cli::runPanel({"--layout-file", (GOLDEN / "widgets.fomal").string(), "--tree"});
    const std::string json = testing::internal::GetCapturedStdout();
    ASSERT_EQ(status, 0);
    EXPECT_NE(json.find("{\"type\": \"fomal\", \"label\": \"inner\", \"bounds\": [40, 120, 300, 300], \"visible\": true"),
              std::string::npos);
    EXPECT_NE(json.find("{\"type\": \"rectangle\", \"label\": \"\", \"bounds\": [280, 130, 50, 50]"), std::string::npos);
    EXPECT_NE(json.find("\"label\": \"hiddenBox\", \"bounds\": [0, 0, 50, 50], \"visible\": false"), std::string::npos);
}

TEST(PanelCommandTest, ALayoutThatCannotOpenIsReportedAsTheAlertAndFails) {
    const std::filesystem::path bad = std::filesystem::temp_directory_path() / "tendrane-panel-bad.fomal";
    std::ofstream(bad) << "views: { { type: \"knob\" } }\n";
    testing::internal::CaptureStderr();
    const int status = cli::runPanel({"--layout-file", bad.string(), "-o", tempPng("tendrane-panel-bad-").string()});
    const std::string err = testing::internal::GetCapturedStderr();
    std::filesystem::remove(bad);
    EXPECT_EQ(status, 1);
    EXPECT_NE(err.find("alert: Tendrane: Error: Unknown view type : knob"), std::string::npos);
}

TEST(PanelCommandTest, WithoutALayoutFileItSaysWhy) {
    EXPECT_THROW(cli::runPanel({"-o", "x.png"}), cli::UsageError);
}
