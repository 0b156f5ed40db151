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
    EXPECT_NE(err.find("alert: Tendrane: The operation could not be performed due to the following error:\n"
                       "Unknown view type : knob."),
              std::string::npos)
        << err;
}

TEST(PanelCommandTest, WithoutALayoutTheMainPanelIsOpened) {
    testing::internal::CaptureStdout();
    const int status = cli::runPanel({"--tree"});
    const std::string json = testing::internal::GetCapturedStdout();
    EXPECT_EQ(status, 0);
    EXPECT_NE(json.find("\"label\": \"displayLights\""), std::string::npos) << json;
    EXPECT_NE(json.find("\"label\": \"seed\""), std::string::npos) << json;
}

TEST(PanelCommandTest, AMissingLayoutIsReportedAsTheAlertAndFails) {
    testing::internal::CaptureStderr();
    const int status = cli::runPanel({"--layout", "nosuch", "-o", tempPng("tendrane-panel-main-").string()});
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(status, 1);
    EXPECT_NE(err.find("Could not obtain layout : nosuch."), std::string::npos) << err;
}

TEST(PanelCommandTest, ABadEventsLineRunsNothing) {
    const std::filesystem::path events = std::filesystem::temp_directory_path() / "tendrane-panel-bad.events";
    std::ofstream(events) << "click 10 10\nwait soon\n";
    try {
        cli::runPanel({"--layout-file", (GOLDEN / "widgets.fomal").string(), "--events", events.string(), "--tree"});
        ADD_FAILURE() << "no failure";
    } catch (const cli::UsageError& e) {
        EXPECT_EQ(std::string(e.what()), "events line 2: MS must be a whole number from 0 to 86400000, not 'soon'");
    }
    std::filesystem::remove(events);
}

// Every widget, driven through every action that acts on the panel: three
// pictures along the way (an animation half done, a controller plate
// listening, the end) as stored, and the alert on standard error.
TEST(PanelCommandTest, EveryWidgetAndActionDrivenByEventsDrawsAsStored) {
    const std::filesystem::path dir =
        std::filesystem::temp_directory_path() /
        ("tendrane-panel-events-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
    std::filesystem::create_directories(dir);
    std::ifstream in(GOLDEN / "every-widget.events");
    std::string events((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    for (std::size_t at = 0; (at = events.find("shot ", at)) != std::string::npos; at += 5)
        events.insert(at + 5, dir.string() + "/");
    std::ofstream(dir / "every-widget.events") << events;

    testing::internal::CaptureStderr();
    const int status = cli::runPanel({"--factory", "1", "--layout-file", (GOLDEN / "every-widget.fomal").string(), "--events",
                                      (dir / "every-widget.events").string(), "-o", (dir / "every-widget.png").string()});
    const std::string err = testing::internal::GetCapturedStderr();
    ASSERT_EQ(status, 0);
    EXPECT_EQ(err, "alert: Box: Hide the box?\n");
    const char* write = std::getenv("TENDRANE_WRITE_GOLDEN");
    for (const char* name : {"every-widget.png", "every-widget-mid.png", "every-widget-learning.png"}) {
        const std::vector<std::uint8_t> made = readFile(dir / name);
        if (write != nullptr && std::string(write) == "1")
            std::ofstream(GOLDEN / name, std::ios::binary)
                .write(reinterpret_cast<const char*>(made.data()), std::streamsize(made.size()));
        const std::vector<std::uint8_t> stored = readFile(GOLDEN / name);
        ASSERT_FALSE(made.empty()) << name;
        ASSERT_FALSE(stored.empty()) << name;
        const OrlPixels::DecodedPng a = OrlPixels::decodePng(made.data(), made.size());
        const OrlPixels::DecodedPng b = OrlPixels::decodePng(stored.data(), stored.size());
        ASSERT_EQ(b.pixels.size(), a.pixels.size()) << name;
        std::size_t differing = 0;
        for (std::size_t i = 0; i < a.pixels.size(); ++i) differing += a.pixels[i] != b.pixels[i];
        EXPECT_EQ(differing, 0u) << name;
    }
    std::filesystem::remove_all(dir);
}

TEST(PanelCommandTest, ThePatchTextIsPrintedAfterTheEvents) {
    const std::filesystem::path events = std::filesystem::temp_directory_path() / "tendrane-panel-volume.events";
    std::ofstream(events) << "drag 112 114 162 114 5\n";
    testing::internal::CaptureStdout();
    const int status = cli::runPanel({"--layout-file", (GOLDEN / "every-widget.fomal").string(), "--events",
                                      events.string(), "--print-patch"});
    const std::string text = testing::internal::GetCapturedStdout();
    std::filesystem::remove(events);
    ASSERT_EQ(status, 0);
    // The volume went from half to three quarters.
    EXPECT_NE(text.find("Volume: "), std::string::npos) << text;
    EXPECT_EQ(text.find("Volume: 0.00000000 dB"), std::string::npos) << text;
}
