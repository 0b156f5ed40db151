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
#include "tests/support/PanelGolden.h"

namespace {

namespace fs = std::filesystem;

using panelgolden::GOLDEN;
using panelgolden::panel;

struct Scratch : panelgolden::Scratch {
    Scratch() : panelgolden::Scratch("dna") {}
};

// The page that holds the view, on the panel.
constexpr panelgolden::Area PAGE{12, 82, 360, 420};

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
    const std::string out = panel({"--layout-file", layout, "--events", events.string(), "--print-patch", "-o",
                                   (s.dir / "scrolled.png").string()});
    panelgolden::expectAsStored(s.dir / "dragging.png", "dna-dragging.png", PAGE);
    panelgolden::expectAsStored(s.dir / "scrolled.png", "dna-scrolled.png", PAGE);
    // 37 pixels up at 0.005 a pixel, from 0.5; the other genes stay.
    EXPECT_NE(out.find("lfo_rate: 0.68500000,"), std::string::npos) << out;
    EXPECT_NE(out.find("lfo_amt: 0.50000000,"), std::string::npos) << out;
    EXPECT_NE(out.find("mod_vel: 0.50000000,"), std::string::npos) << out;
}
