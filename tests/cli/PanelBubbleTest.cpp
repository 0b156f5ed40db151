// A speech bubble over the panel, opened from a layout file as a layout
// author previews one: half typed and fully typed, each drawn as stored
// pixel for pixel (TENDRANE_WRITE_GOLDEN=1 replaces the stored pictures,
// only after looking at them), and its height fitted to its text.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "pixels/Png.h"

namespace {

namespace fs = std::filesystem;

const fs::path GOLDEN = fs::path(TENDRANE_SOURCE_DIR) / "tests/golden/panel";

struct Scratch {
    fs::path dir = fs::temp_directory_path() /
                   ("tendrane-bubble-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
    Scratch() { fs::create_directories(dir); }
    ~Scratch() { fs::remove_all(dir); }
};

std::vector<std::uint8_t> readBytes(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::vector<std::uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

void expectAsStored(const fs::path& made, const char* name) {
    const std::vector<std::uint8_t> bytes = readBytes(made);
    ASSERT_FALSE(bytes.empty()) << name;
    const char* write = std::getenv("TENDRANE_WRITE_GOLDEN");
    if (write != nullptr && std::string(write) == "1")
        std::ofstream(GOLDEN / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    const std::vector<std::uint8_t> stored = readBytes(GOLDEN / name);
    ASSERT_FALSE(stored.empty()) << name;
    const OrlPixels::DecodedPng a = OrlPixels::decodePng(bytes.data(), bytes.size());
    const OrlPixels::DecodedPng b = OrlPixels::decodePng(stored.data(), stored.size());
    ASSERT_EQ(a.width, 384);
    ASSERT_EQ(a.height, 512);
    ASSERT_EQ(b.pixels.size(), a.pixels.size()) << name;
    std::size_t differing = 0;
    for (std::size_t i = 0; i < a.pixels.size(); ++i) differing += a.pixels[i] != b.pixels[i];
    EXPECT_EQ(differing, 0u) << name;
}

std::string panel(const std::vector<std::string>& args) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = cli::runPanel(args);
    const std::string err = testing::internal::GetCapturedStderr();
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(status, 0);
    EXPECT_EQ(err, "");
    return out;
}

const std::string LAYOUT = (GOLDEN / "bubble-styles.fomal").string();

}  // namespace

TEST(PanelBubbleTest, TheBubbleTypesItsPageInEveryStyleAsStored) {
    Scratch s;
    const fs::path events = s.dir / "bubble.events";
    // 1.65 s at 20 characters a second: in the middle of a word.
    std::ofstream(events) << "wait 1650\nshot " << (s.dir / "typing.png").string() << "\nwait 10000\n";
    panel({"--layout-file", LAYOUT, "--events", events.string(), "-o", (s.dir / "typed.png").string()});
    expectAsStored(s.dir / "typing.png", "bubble-typing.png");
    expectAsStored(s.dir / "typed.png", "bubble-styles.png");
}

TEST(PanelBubbleTest, TheBubbleFitsItsHeightToTheTextAndKeepsItsBottomEdge) {
    // Laid out at { 0, 60, 384, 150 }: four lines of text need less.
    const std::string tree = panel({"--layout-file", LAYOUT, "--tree"});
    EXPECT_NE(tree.find("\"type\": \"bubble\", \"label\": \"styleBubble\", \"bounds\": [0, 90, 384, 120]"),
              std::string::npos)
        << tree;
}
