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
#include "tests/support/PanelGolden.h"

namespace {

namespace fs = std::filesystem;
using panelgolden::expectAsStored;
using panelgolden::GOLDEN;
using panelgolden::panel;

struct Scratch : panelgolden::Scratch {
    Scratch() : panelgolden::Scratch("bubble") {}
};

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
