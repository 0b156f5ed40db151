// The panel's layouts opened headlessly as a host would open them: the
// controller overlay, the about page, the juggler and the key ring, each
// drawn as stored pixel for pixel (TENDRANE_WRITE_GOLDEN=1 replaces the
// stored pictures, only after looking at them), and their view trees.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "fomal/EditorCore.h"
#include "fomal/LayoutView.h"
#include "fomal/StillHost.h"
#include "pixels/Png.h"
#include "tests/support/PanelGolden.h"
#include "views/LivingViews.h"

namespace {

namespace fs = std::filesystem;
using panelgolden::expectAsStored;
using panelgolden::panel;
using panelgolden::readBytes;

struct Scratch : panelgolden::Scratch {
    Scratch() : panelgolden::Scratch("layouts") {}
};

std::size_t count(const std::string& text, const std::string& what) {
    std::size_t n = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

// The lower half of the main panel without the plant: the black bulb, the
// panel's picture and the key ring as the main layout has them.
const char* const BULB_AND_RING = R"(
views: {
    { type: "rectangle", bounds: { 65, 135, 256, 256 }, fill: 0xFF000000 }
    %s
    { type: "raster", image: { name: "BGOverlay", format: "rle" } }
    { type: "keyRing", bounds: { 42, 113, 300, 300 }, film: { name: "KeyRingFilm", format: "rle" }, hint: "Play Notes",
      innerRadius: 117, outerRadius: 142 }
}
)";

std::string bulbAndRing(const std::string& between) {
    std::string text = BULB_AND_RING;
    text.replace(text.find("%s"), 2, between);
    return text;
}

}  // namespace

TEST(PanelLayoutsTest, TheMainPanelHasItsKeyRingBetweenThePictureAndTheArcSliders) {
    const std::string tree = panel({"--tree"});
    const std::size_t picture = tree.find("{\"type\": \"raster\", \"label\": \"\", \"bounds\": [0, 0, 384, 512]");
    const std::size_t ring = tree.find("{\"type\": \"keyRing\", \"label\": \"\", \"bounds\": [42, 113, 300, 300]");
    const std::size_t arc = tree.find("{\"type\": \"arcSlider\", \"label\": \"Tuning\"");
    ASSERT_NE(picture, std::string::npos) << tree;
    ASSERT_NE(ring, std::string::npos) << tree;
    ASSERT_NE(arc, std::string::npos) << tree;
    EXPECT_LT(picture, ring);
    EXPECT_LT(ring, arc);
    // Nothing stands between them.
    EXPECT_EQ(count(tree.substr(picture + 1, ring - picture - 1), "{\"type\""), 0u);
    EXPECT_EQ(count(tree.substr(ring + 1, arc - ring - 1), "{\"type\""), 0u);
    EXPECT_EQ(count(tree, "\"type\": \"keyRing\""), 1u);
}

TEST(PanelLayoutsTest, TheControllerOverlayHasAPlateForEachOfFourteenFunctions) {
    // The overlay opens as a modal over the main panel, labelled with its name.
    const std::string whole = panel({"--layout", "midi", "--tree"});
    ASSERT_NE(whole.find("\"label\": \"midi\""), std::string::npos) << whole;
    const std::string tree = whole.substr(whole.find("\"label\": \"midi\""));
    EXPECT_EQ(count(tree, "\"type\": \"midiCC\""), 14u) << tree;
    const char* plates[] = {
        "\"ccTuning\", \"bounds\": [15, 153, 35, 18]",      "\"ccAtonality\", \"bounds\": [331, 153, 35, 18]",
        "\"ccEffect\", \"bounds\": [15, 359, 35, 18]",      "\"ccRelease\", \"bounds\": [331, 359, 35, 18]",
        "\"ccWheelScale\", \"bounds\": [60, 438, 35, 18]",  "\"ccVelSens\", \"bounds\": [176, 438, 35, 18]",
        "\"ccVolume\", \"bounds\": [291, 438, 35, 18]",     "\"ccTriggerC\", \"bounds\": [134, 292, 110, 18]",
        "\"ccModWheel\", \"bounds\": [134, 315, 110, 18]",  "\"ccRotation\", \"bounds\": [134, 338, 110, 18]",
        "\"ccTriggerA\", \"bounds\": [88, 26, 35, 18]",     "\"ccTriggerB\", \"bounds\": [128, 26, 35, 18]",
        "\"ccTriggerE\", \"bounds\": [166, 26, 35, 18]",    "\"ccTriggerF\", \"bounds\": [344, 26, 35, 18]",
    };
    for (const char* p : plates) EXPECT_NE(tree.find(std::string("\"label\": ") + p), std::string::npos) << p;
    // Above the plates the click that ends listening, then the close button
    // at the top right.
    const std::size_t click = tree.find("{\"type\": \"click\", \"label\": \"\", \"bounds\": [0, 0, 384, 512]");
    const std::size_t close = tree.find("{\"type\": \"button\", \"label\": \"\", \"bounds\": [364, 4, 16, 16]");
    ASSERT_NE(click, std::string::npos) << tree;
    ASSERT_NE(close, std::string::npos) << tree;
    EXPECT_LT(tree.find("ccTriggerF"), click);
    EXPECT_LT(click, close);
}

TEST(PanelLayoutsTest, EachPlatesHintNamesItsFunction) {
    views::registerLivingViews();
    Fomal::StillHost host;
    Fomal::VirtualClock clock;
    Fomal::EditorCore core(host, clock);
    core.openLayout("midi");
    const struct {
        int x, y;
        const char* name;
    } plates[] = {{20, 160, "Tuning"},        {340, 160, "Atonality"},          {20, 365, "Effect"},
                  {340, 365, "Release"},      {70, 445, "Mod Wheel Scaling"},   {185, 445, "Velocity Sensitivity"},
                  {300, 445, "Volume"},       {180, 300, "Plant Seed"},         {180, 322, "Mod Wheel"},
                  {180, 345, "Rotation"},     {95, 33, "Undo"},                 {135, 33, "Redo"},
                  {175, 33, "Previous Patch"}, {350, 33, "Next Patch"}};
    for (const auto& p : plates) {
        core.mouseMove({p.x, p.y, 0});
        for (std::int64_t i = 0; i < Fomal::EditorCore::HINT_DELAY_MS; ++i) {
            clock.advance(1);
            core.idle();
        }
        EXPECT_EQ(core.hint().text(),
                  std::string("\"") + p.name + "\" controller no. (click to reset & learn, drag to change)");
    }
    // A click on a plate listens for its controller.
    core.mouseDown({20, 160, Fomal::LEFT_BIT});
    core.mouseUp({20, 160, Fomal::LEFT_BIT});
    EXPECT_EQ(host.learningFunction(), 2);
}

TEST(PanelLayoutsTest, TheControllerOverlayDrawsAsStored) {
    Scratch s;
    const fs::path events = s.write("midi.events", "wait 100\nclick 20 160\nwait 10\n");
    panel({"--layout", "midi", "--events", events.string(), "-o", (s.dir / "midi.png").string()});
    expectAsStored(s.dir / "midi.png", "layout-midi.png");
}

TEST(PanelLayoutsTest, TheAboutPageHoldsItsPlantAndItsWays) {
    const std::string whole = panel({"--layout", "about", "--tree"});
    ASSERT_NE(whole.find("\"label\": \"about\""), std::string::npos) << whole;
    const std::string tree = whole.substr(whole.find("\"label\": \"about\""));
    EXPECT_EQ(tree.find("\"label\": \"about\", \"bounds\": [12, 82, 360, 420]"), 0u) << tree;
    EXPECT_NE(tree.find("{\"type\": \"staticPlant\", \"label\": \"\", \"bounds\": [12, 82, 184, 230]"),
              std::string::npos);
    EXPECT_NE(tree.find("{\"type\": \"caption\", \"label\": \"\", \"bounds\": [252, 450, 100, 18]"), std::string::npos);
    EXPECT_NE(tree.find("{\"type\": \"click\", \"label\": \"\", \"bounds\": [194, 473, 160, 18]"), std::string::npos);
    EXPECT_NE(tree.find("{\"type\": \"button\", \"label\": \"\", \"bounds\": [352, 86, 16, 16]"), std::string::npos);
}

TEST(PanelLayoutsTest, TheAboutPageDrawsAsStoredWithItsPlantGrown) {
    Scratch s;
    const fs::path events = s.write("about.events", "wait 6000\nshot " + (s.dir / "growing.png").string() +
                                                        "\nwait 9500\n");
    panel({"--layout", "about", "--events", events.string(), "-o", (s.dir / "about.png").string()});
    expectAsStored(s.dir / "growing.png", "layout-about-growing.png");
    expectAsStored(s.dir / "about.png", "layout-about.png");
}

TEST(PanelLayoutsTest, TheMainPanelsTriggersOpenAndCloseTheJuggler) {
    // The main panel with two clicks of its own that fire its juggler
    // triggers, as the plug-in does for the patch "Jingle Balls".
    Scratch s;
    const fs::path layout = s.write("juggle.fomal", R"(
views: {
    { type: "fomal", layout: "main", label: "panel" }
    { type: "click", bounds: { 0, 500, 10, 12 }, action: "trigger", params: { what: "openJuggler", label: "panel" } }
    { type: "click", bounds: { 374, 500, 10, 12 }, action: "trigger", params: { what: "closeJuggler", label: "panel" } }
}
)");
    const fs::path open = s.write("open.events", "click 5 505\nwait 100\n");
    std::string tree = panel({"--layout-file", layout.string(), "--events", open.string(), "--tree"});
    // The juggler layer holds the juggler's layout, and that its balls: the
    // three entries follow each other in the tree, with only blanks between.
    std::string flat;
    for (std::size_t i = 0; i < tree.size(); ++i) {
        if (tree[i] == '\n') {
            while (i + 1 < tree.size() && tree[i + 1] == ' ') ++i;
            continue;
        }
        flat += tree[i];
    }
    EXPECT_NE(flat.find("{\"type\": \"fomal\", \"label\": \"jugglerLayer\", \"bounds\": [0, 0, 384, 512], \"visible\": true, "
                        "\"children\": [{\"type\": \"fomal\", \"label\": \"juggler\", \"bounds\": [0, 0, 384, 512], "
                        "\"visible\": true, \"children\": [{\"type\": \"juggler\", \"label\": \"balls\", \"bounds\": [42, 113, 300, 300]"),
              std::string::npos)
        << tree;
    const fs::path both = s.write("both.events", "click 5 505\nwait 100\nclick 378 505\nwait 100\n");
    tree = panel({"--layout-file", layout.string(), "--events", both.string(), "--tree"});
    EXPECT_EQ(tree.find("\"type\": \"juggler\""), std::string::npos) << tree;
    EXPECT_NE(tree.find("{\"type\": \"fomal\", \"label\": \"jugglerLayer\", \"bounds\": [0, 0, 384, 512], \"visible\": true, \"children\": []}"),
              std::string::npos)
        << tree;
}

TEST(PanelLayoutsTest, TheJugglerDrawsAsStoredInTheBulb) {
    Scratch s;
    const fs::path layout = s.write("juggler.fomal", bulbAndRing("{ type: \"fomal\", layout: \"juggler\" }"));
    const fs::path events = s.write("juggler.events", "wait 1500\n");
    panel({"--layout-file", layout.string(), "--events", events.string(), "-o", (s.dir / "juggler.png").string()});
    expectAsStored(s.dir / "juggler.png", "layout-juggler.png");
}

TEST(PanelLayoutsTest, AKeyOfTheRingPressedDrawsAsStored) {
    Scratch s;
    const fs::path layout = s.write("ring.fomal", bulbAndRing(""));
    // Key 2 (D), at 150 degrees: lower left.
    const fs::path events =
        s.write("ring.events", "down 79 327\nwait 50\nshot " + (s.dir / "pressed.png").string() + "\nup 79 327\n");
    panel({"--layout-file", layout.string(), "--events", events.string(), "-o", (s.dir / "released.png").string()});
    expectAsStored(s.dir / "pressed.png", "view-keyring-pressed.png");
    // Released, no key is lit: the same picture as before any press.
    const fs::path none = s.write("none.events", "wait 50\n");
    panel({"--layout-file", layout.string(), "--events", none.string(), "-o", (s.dir / "untouched.png").string()});
    EXPECT_EQ(readBytes(s.dir / "released.png"), readBytes(s.dir / "untouched.png"));
    EXPECT_NE(readBytes(s.dir / "released.png"), readBytes(s.dir / "pressed.png"));
}

TEST(PanelLayoutsTest, TheKeysOfAChordPlayedOnTheKeyboardAreLitWhileItSounds) {
    Scratch s;
    const fs::path layout = s.write("ring.fomal", bulbAndRing(""));
    // C, E and G through the plug-in's MIDI input: keys 0, 4 and 7.
    const fs::path events = s.write("chord.events", "note 60 100\nnote 64 100\nnote 67 100\nwait 300\nshot " +
                                                        (s.dir / "chord.png").string() +
                                                        "\nnoteoff 60\nnoteoff 64\nnoteoff 67\nwait 4000\n");
    panel({"--layout-file", layout.string(), "--events", events.string(), "-o", (s.dir / "after.png").string()});
    expectAsStored(s.dir / "chord.png", "view-keyring-chord.png");
    // Once the chord has died away no key is lit.
    const fs::path none = s.write("none.events", "wait 50\n");
    panel({"--layout-file", layout.string(), "--events", none.string(), "-o", (s.dir / "untouched.png").string()});
    EXPECT_EQ(readBytes(s.dir / "after.png"), readBytes(s.dir / "untouched.png"));
}

namespace {

// Runs the panel and keeps what it wrote to the error output: the alerts.
struct PanelRun {
    int status = 0;
    std::string out, err;
};

PanelRun panelRun(const std::vector<std::string>& args) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    PanelRun run;
    run.status = cli::runPanel(args);
    run.err = testing::internal::GetCapturedStderr();
    run.out = testing::internal::GetCapturedStdout();
    return run;
}

// The tutorial's buttons and the time a page takes to type out in full.
const char* const NEXT_PAGE = "click 315 499\n";
const char* const TYPED_OUT = "wait 20000\n";

std::string nextPages(int n) {
    std::string events = "wait 1000\n";
    for (int i = 0; i < n; ++i) events += std::string(NEXT_PAGE) + "wait 200\n";
    return events;
}

}  // namespace

TEST(PanelLayoutsTest, TheTutorialOpensByItselfOnlyAtAFirstStart) {
    Scratch s;
    const fs::path events = s.write("wait.events", "wait 2000\n");
    const std::string first = panel({"--first-start", "--events", events.string(), "--tree"});
    EXPECT_EQ(count(first, "\"label\": \"tutorial\""), 1u) << first;
    EXPECT_EQ(count(first, "\"label\": \"tutorialBubble\""), 1u) << first;
    const std::string returning = panel({"--events", events.string(), "--tree"});
    EXPECT_EQ(count(returning, "\"label\": \"tutorial\""), 0u) << returning;
    // Another modal open at the first start gives way to the tutorial, once.
    const std::string about = panel({"--first-start", "--layout", "about", "--events", events.string(), "--tree"});
    EXPECT_EQ(count(about, "\"label\": \"tutorial\""), 1u) << about;
    EXPECT_EQ(count(about, "\"label\": \"about\""), 0u) << about;
}

TEST(PanelLayoutsTest, TheTutorialsFirstPageDrawsAsStoredTypedOut) {
    Scratch s;
    const fs::path half = s.write("half.events", "wait 6000\n");
    panel({"--layout", "tutorial", "--events", half.string(), "-o", (s.dir / "half.png").string()});
    expectAsStored(s.dir / "half.png", "tutorial-page0-typing.png");
    const fs::path events = s.write("page0.events", TYPED_OUT);
    panel({"--layout", "tutorial", "--events", events.string(), "-o", (s.dir / "page0.png").string()});
    expectAsStored(s.dir / "page0.png", "tutorial-page0.png");
}

TEST(PanelLayoutsTest, TheBulbOfThePageAboutGrowingIsRingedWhenItsWordIsClicked) {
    Scratch s;
    // "bulb" stands in the first line of page 1.
    const fs::path events = s.write("page1.events", nextPages(1) + TYPED_OUT + "click 185 432\nwait 1200\n");
    const std::string tree =
        panel({"--layout", "tutorial", "--events", events.string(), "-o", (s.dir / "page1.png").string(), "--tree"});
    EXPECT_EQ(count(tree, "{\"type\": \"ring\", \"label\": \"ring\""), 1u) << tree;
    expectAsStored(s.dir / "page1.png", "tutorial-page1.png");
}

TEST(PanelLayoutsTest, TheModWheelPageSetsTheWheelHalfWayAndMarksItsRing) {
    Scratch s;
    const fs::path events = s.write("page7.events", nextPages(7) + "wait 4000\n");
    const PanelRun run = panelRun({"--layout", "tutorial", "--events", events.string(), "--print-patch", "-o",
                                   (s.dir / "page7.png").string()});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_NE(run.out.find("ModWheel: 50.00000000 %"), std::string::npos) << run.out;
    expectAsStored(s.dir / "page7.png", "tutorial-page7.png");
}

TEST(PanelLayoutsTest, TheLastPageDrawsAsStoredAndTheNextButtonIsOff) {
    Scratch s;
    const fs::path events = s.write("page21.events", nextPages(22) + TYPED_OUT);
    panel({"--layout", "tutorial", "--events", events.string(), "-o", (s.dir / "page21.png").string()});
    expectAsStored(s.dir / "page21.png", "tutorial-page21.png");
}

TEST(PanelLayoutsTest, TheTutorialMovesOnTwoSecondsAfterABranchWasDragged) {
    Scratch s;
    // Page 2 rings the seed by itself once its words reach it; page 1 does not.
    const std::string drag = nextPages(1) + "wait 500\ndrag 192 290 192 340 10\n";
    const fs::path dragged = s.write("dragged.events", drag + "wait 2100\nwait 12000\n");
    const std::string moved = panel({"--layout", "tutorial", "--events", dragged.string(), "--tree"});
    EXPECT_EQ(count(moved, "{\"type\": \"ring\", \"label\": \"ring\""), 1u) << moved;
    // Not before the two seconds are up.
    const fs::path early = s.write("early.events", drag + "wait 1900\n" + TYPED_OUT);
    const std::string waiting = panel({"--layout", "tutorial", "--events", early.string(), "--tree"});
    EXPECT_EQ(count(waiting, "\"label\": \"ring\""), 0u) << waiting;
    // Without the drag page 1 stays.
    const fs::path still = s.write("still.events", nextPages(1) + "wait 14600\n");
    const std::string stayed = panel({"--layout", "tutorial", "--events", still.string(), "--tree"});
    EXPECT_EQ(count(stayed, "\"label\": \"ring\""), 0u) << stayed;
}

TEST(PanelLayoutsTest, ClosingTheUnfinishedTutorialAsksWhetherItShouldComeBack) {
    Scratch s;
    const fs::path events = s.write("close.events", "wait 1000\nclick 344 499\nwait 100\nchoose No\nwait 1000\n");
    const PanelRun run = panelRun({"--first-start", "--events", events.string(), "--tree"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err,
              "alert: Tendrane: Would you like the tutorial to open again the next time you start Tendrane?\n");
    EXPECT_EQ(count(run.out, "\"label\": \"tutorial\""), 0u) << run.out;
}

TEST(PanelLayoutsTest, TheGenesOpenAsStoredAndScroll) {
    Scratch s;
    const fs::path rest = s.write("rest.events", "wait 2000\n");
    panel({"--layout", "dna", "--events", rest.string(), "-o", (s.dir / "rest.png").string()});
    expectAsStored(s.dir / "rest.png", "dna-layout-rest.png");
    const fs::path scrolled = s.write("scrolled.events", "wait 1500\ndrag 330 420 330 170 10\nwait 1000\n");
    panel({"--layout", "dna", "--events", scrolled.string(), "-o", (s.dir / "scrolled.png").string()});
    expectAsStored(s.dir / "scrolled.png", "dna-layout-scrolled.png");
}

TEST(PanelLayoutsTest, TheHelpOfTheGeneUnderTheMouseTypesItselfOut) {
    Scratch s;
    // Help on, then the mouse on env_time's name.
    const std::string help = "wait 1500\nclick 32 482\nwait 500\nmove 80 126\n";
    const fs::path half = s.write("half.events", help + "wait 1000\n");
    panel({"--layout", "dna", "--events", half.string(), "-o", (s.dir / "half.png").string()});
    expectAsStored(s.dir / "half.png", "dna-help-typing.png");
    const fs::path full = s.write("full.events", help + "wait 5000\n");
    panel({"--layout", "dna", "--events", full.string(), "-o", (s.dir / "full.png").string()});
    expectAsStored(s.dir / "full.png", "dna-help-typed.png");
    // A gene low in the molecule has its help at the top: flt_q, scrolled into view.
    const fs::path low = s.write("low.events", "wait 1500\nclick 32 482\nwait 500\ndrag 330 420 330 170 10\nwait 1000\n"
                                               "move 75 355\nwait 6000\n");
    panel({"--layout", "dna", "--events", low.string(), "-o", (s.dir / "low.png").string()});
    expectAsStored(s.dir / "low.png", "dna-help-top.png");
}

TEST(PanelLayoutsTest, AGeneDraggedOnTheMoleculeChangesThePatch) {
    Scratch s;
    // env_time's near ball, 60 pixels up: 0.5 + 60 x 0.005.
    const fs::path events = s.write("drag.events", "wait 1500\nmove 80 126\nwait 300\ndrag 126 122 126 62 10\nwait 500\n");
    const std::string patch = panel({"--layout", "dna", "--events", events.string(), "--print-patch", "-o",
                                     (s.dir / "dragged.png").string()});
    EXPECT_NE(patch.find("env_time: 0.80000001,"), std::string::npos) << patch;
    EXPECT_NE(patch.find("env_loop: 0.50000000,"), std::string::npos) << patch;
    expectAsStored(s.dir / "dragged.png", "dna-layout-dragged.png");
}

TEST(PanelLayoutsTest, TheKerningPageShowsEachFontInPairsAndStepsThroughThem) {
    Scratch s;
    const fs::path first = s.write("first.events", "wait 1500\n");
    panel({"--layout", "kerning", "--events", first.string(), "-o", (s.dir / "first.png").string()});
    expectAsStored(s.dir / "first.png", "kerning-futura14.png");
    // Seven fonts: seven steps come back to the first.
    std::string steps = "wait 1500\n";
    for (int i = 0; i < 7; ++i) steps += "click 315 495\nwait 500\n";
    const fs::path round = s.write("round.events", steps);
    panel({"--layout", "kerning", "--events", round.string(), "-o", (s.dir / "round.png").string()});
    const fs::path one = s.write("one.events", "wait 1500\nclick 315 495\nwait 500\n");
    panel({"--layout", "kerning", "--events", one.string(), "-o", (s.dir / "one.png").string()});
    EXPECT_NE(readBytes(s.dir / "one.png"), readBytes(s.dir / "first.png"));
    const std::string tree = panel({"--layout", "kerning", "--events", round.string(), "--tree"});
    EXPECT_NE(tree.find("\"label\": \"kerningBubble\""), std::string::npos) << tree;
}
