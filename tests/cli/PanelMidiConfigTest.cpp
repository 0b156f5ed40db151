// The MIDI configuration dialog through `tendrane panel`: opened from the
// main menu, its controls chosen by title, the open dialog pixel for pixel
// as stored (TENDRANE_WRITE_GOLDEN=1 replaces the stored picture, only after
// looking at it); OK and escape close it.
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

// The dialog's box on the panel; outside it the dimmed panel shows, which
// has tests of its own.
constexpr int BOX_LEFT = 36, BOX_TOP = 102, BOX_WIDTH = 312, BOX_HEIGHT = 308;

std::vector<std::uint8_t> readFile(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::vector<std::uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

std::filesystem::path tempPath(const std::string& name) {
    return std::filesystem::temp_directory_path() /
           ("tendrane-midicfg-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) + "-" +
            name);
}

struct PanelRun {
    int status = -1;
    std::string out, err;
};

PanelRun panel(const std::string& events, const std::filesystem::path& png) {
    const std::filesystem::path file = tempPath("events.txt");
    std::ofstream(file) << events;
    // A picture nobody looks at goes away afterwards.
    const std::filesystem::path out = png.empty() ? tempPath("unseen.png") : png;
    const std::vector<std::string> args = {"--events", file.string(), "-o", out.string()};
    PanelRun run;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    std::string failure;
    try {
        run.status = cli::runPanel(args);
    } catch (const cli::UsageError& e) {
        // An events line that can't be carried out.
        failure = e.what();
    }
    run.err = testing::internal::GetCapturedStderr() + failure;
    run.out = testing::internal::GetCapturedStdout();
    std::filesystem::remove(file);
    if (png.empty()) std::filesystem::remove(out);
    return run;
}

// The main menu, then its entry.
constexpr const char* OPEN = "wait 100\nclick 24 49\nchoose MIDI Config...\n";

}  // namespace

TEST(PanelMidiConfigTest, TheOpenDialogShowsTheChosenValues) {
    const std::string events = std::string(OPEN) +
                               "choose Input channel: 2\n"
                               "choose Output channel: none\n"
                               "choose Pitch wheel: <\n"
                               "choose Velocity curve: hard\n"
                               "choose Enable MIDI program changes\n"
                               "wait 100\n";
    const std::filesystem::path png = tempPath("midiconfig-open.png");
    const PanelRun run = panel(events, png);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const std::vector<std::uint8_t> made = readFile(png);
    std::filesystem::remove(png);
    ASSERT_FALSE(made.empty());
    const char* write = std::getenv("TENDRANE_WRITE_GOLDEN");
    if (write != nullptr && std::string(write) == "1")
        std::ofstream(GOLDEN / "midiconfig-open.png", std::ios::binary)
            .write(reinterpret_cast<const char*>(made.data()), std::streamsize(made.size()));
    const std::vector<std::uint8_t> stored = readFile(GOLDEN / "midiconfig-open.png");
    ASSERT_FALSE(stored.empty());
    const OrlPixels::DecodedPng a = OrlPixels::decodePng(made.data(), made.size());
    const OrlPixels::DecodedPng b = OrlPixels::decodePng(stored.data(), stored.size());
    ASSERT_EQ(a.width, 384);
    ASSERT_EQ(a.height, 512);
    ASSERT_EQ(b.pixels.size(), a.pixels.size());
    std::size_t differing = 0;
    for (int y = BOX_TOP; y < BOX_TOP + BOX_HEIGHT; ++y)
        for (int x = BOX_LEFT; x < BOX_LEFT + BOX_WIDTH; ++x) {
            const std::size_t i = std::size_t(y) * 384 + std::size_t(x);
            differing += a.pixels[i] != b.pixels[i];
        }
    EXPECT_EQ(differing, 0u);
    // The box is drawn over the panel: its face is opaque and uniform at
    // its left edge, below the title.
    const std::size_t face = std::size_t(BOX_TOP + 40) * 384 + std::size_t(BOX_LEFT + 4);
    EXPECT_EQ(a.pixels[face], a.pixels[face + 384]);
}

TEST(PanelMidiConfigTest, OkAndEscapeCloseTheDialog) {
    PanelRun ok = panel(std::string(OPEN) + "choose Pitch wheel: 3\nchoose OK\nchoose Cancel\n", {});
    EXPECT_NE(ok.status, 0);
    EXPECT_NE(ok.err.find("events line 6: no menu entry or alert button 'Cancel' is open"), std::string::npos)
        << ok.err;
    PanelRun escape = panel(std::string(OPEN) + "key escape\nchoose OK\n", {});
    EXPECT_NE(escape.status, 0);
    EXPECT_NE(escape.err.find("events line 5: no menu entry or alert button 'OK' is open"), std::string::npos)
        << escape.err;
    // While it is open, its buttons answer; Make Default writes to
    // preferences of this test's own.
    const std::filesystem::path config = tempPath("config");
    const char* was = std::getenv("XDG_CONFIG_HOME");
    const std::string saved = was != nullptr ? was : "";
    setenv("XDG_CONFIG_HOME", config.c_str(), 1);
    PanelRun open = panel(std::string(OPEN) + "choose Reset\nchoose Make Default\nchoose OK\nchoose Cancel\n", {});
    if (was != nullptr) setenv("XDG_CONFIG_HOME", saved.c_str(), 1);
    else unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(open.status, 0) << open.err;
    EXPECT_TRUE(std::filesystem::exists(config));
    std::filesystem::remove_all(config);
}
