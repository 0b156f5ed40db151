// The DNA view through `tendrane panel`, on a page over the main panel
// (tests/golden/panel/dna-view.fomal): a gene's ball being dragged with its
// hint, and the molecule scrolled with a gene focused, each pixel for pixel
// as stored within the page (TENDRANE_WRITE_GOLDEN=1 replaces the stored
// pictures, only after looking at them); and the patch after the drag.
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

// The page that holds the view, on the panel.
constexpr int PAGE_LEFT = 12, PAGE_TOP = 82, PAGE_WIDTH = 360, PAGE_HEIGHT = 420;

// After the opening, the ball of lfo_rate (gene 10) stands at (131, 277):
// it is pressed and dragged up by 37 pixels, and a shot taken while held.
// Then the background is dragged up by 150 pixels and the mouse rests on
// the label of b_mod.
constexpr const char* EVENTS =
    "wait 2000\n"
    "move 131 277\n"
    "down 131 277\n"
    "move 131 270\nmove 131 260\nmove 131 250\nmove 131 240\n"
    "wait 300\n"
    "shot %DRAGGING%\n"
    "up 131 240\n"
    "drag 344 400 344 250 10\n"
    "move 52 300\n"
    "wait 500\n";

struct Scratch {
    fs::path dir = fs::temp_directory_path() /
                   ("tendrane-dna-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
    Scratch() { fs::create_directories(dir); }
    ~Scratch() { fs::remove_all(dir); }
};

std::vector<std::uint8_t> readBytes(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::vector<std::uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// The page of the picture made against the stored one of that name.
void expectPageAsStored(const fs::path& made, const std::string& name) {
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
    ASSERT_EQ(b.width, a.width);
    ASSERT_EQ(b.height, a.height);
    std::size_t differing = 0;
    for (int y = PAGE_TOP; y < PAGE_TOP + PAGE_HEIGHT; ++y)
        for (int x = PAGE_LEFT; x < PAGE_LEFT + PAGE_WIDTH; ++x) {
            const std::size_t i = std::size_t(y) * 384 + std::size_t(x);
            differing += a.pixels[i] != b.pixels[i];
        }
    EXPECT_EQ(differing, 0u) << name;
}

std::string withShot(std::string events, const fs::path& shot) {
    const std::string code = "%DRAGGING%";
    events.replace(events.find(code), code.size(), shot.string());
    return events;
}

}  // namespace

TEST(PanelDnaTest, ADraggedGeneAndTheScrolledMoleculeDrawAsStoredAndThePatchHoldsTheDrag) {
    Scratch s;
    const fs::path events = s.dir / "dna.events";
    std::ofstream(events) << withShot(EVENTS, s.dir / "dragging.png");
    const std::string layout = (GOLDEN / "dna-view.fomal").string();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = cli::runPanel({"--layout-file", layout, "--events", events.string(), "--print-patch", "-o",
                                      (s.dir / "scrolled.png").string()});
    const std::string err = testing::internal::GetCapturedStderr();
    const std::string out = testing::internal::GetCapturedStdout();
    ASSERT_EQ(status, 0) << err;
    EXPECT_EQ(err, "");
    expectPageAsStored(s.dir / "dragging.png", "dna-dragging.png");
    expectPageAsStored(s.dir / "scrolled.png", "dna-scrolled.png");
    // 37 pixels up at 0.005 a pixel, from 0.5; the other genes stay.
    EXPECT_NE(out.find("lfo_rate: 0.68500000,"), std::string::npos) << out;
    EXPECT_NE(out.find("lfo_amt: 0.50000000,"), std::string::npos) << out;
    EXPECT_NE(out.find("mod_vel: 0.50000000,"), std::string::npos) << out;
}
