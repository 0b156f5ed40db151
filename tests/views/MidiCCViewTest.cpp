#include "views/MidiCCView.h"

#include <gtest/gtest.h>

#include "tests/fomal/ViewTestSupport.h"
#include "views/LivingViews.h"

namespace {

// Function 2 is Tuning.
constexpr int TUNING = 2;

std::string layout(const char* label) {
    return std::string("views: { { type: \"midiCC\", label: \"") + label +
           "\", bounds: { 15, 153, 35, 18 }, film: \"CCLabelBackgrounds\", blinkRate: 500, align: \"center\","
           "  offset: { 0, -4 }, hint: \"Tuning controller no. ^X\","
           "  font: { film: \"MIDILabelCharacters\", ascent: 10, advance: 6, charset: \"0123456789abcdefg#-?\" } } }";
}

struct MidiCC : viewtest::Editor {
    MidiCC() : viewtest::Editor((views::registerLivingViews(), layout("ccTuning"))) {}
    views::MidiCCView& view() { return static_cast<views::MidiCCView&>(find("ccTuning")); }
};

}  // namespace

TEST(MidiCCViewTest, TheLabelNamesTheFunction) {
    views::registerLivingViews();
    EXPECT_EQ(views::midiFunctionOfLabel("ccModWheel"), 0);
    EXPECT_EQ(views::midiFunctionOfLabel("ccTriggerH"), 16);
    EXPECT_EQ(viewtest::failureOf(layout("Tuning")), "midiCC label must start with 'cc'");
    EXPECT_EQ(viewtest::failureOf(layout("ccPitch")), "Unknown MIDI function (label): Pitch");
}

TEST(MidiCCViewTest, ItShowsTheNumberOfItsController) {
    MidiCC e;
    EXPECT_EQ(e.view().shownText(), "-");
    e.host.assignController(TUNING, 17);
    e.core.idle();
    EXPECT_EQ(e.view().shownText(), "17");
    e.core.mouseMove({30, 160, 0});
    e.wait(Fomal::EditorCore::HINT_DELAY_MS);
    EXPECT_EQ(e.core.hint().text(), "Tuning controller no. 17");
}

TEST(MidiCCViewTest, AClickClearsTheControllerAndListensWithABlink) {
    MidiCC e;
    e.host.assignController(TUNING, 17);
    e.core.paint();
    const std::vector<std::uint32_t> atRest(e.core.pixels().begin(), e.core.pixels().end());
    e.click(30, 160);
    EXPECT_EQ(e.host.learningFunction(), TUNING);
    EXPECT_EQ(e.host.controllerOf(TUNING), -1);
    EXPECT_EQ(e.view().shownText(), "?");
    e.core.paint();
    const std::vector<std::uint32_t> listening(e.core.pixels().begin(), e.core.pixels().end());
    EXPECT_NE(listening, atRest);  // the plate is lit
    e.wait(500);
    EXPECT_EQ(e.view().shownText(), "");
    e.wait(500);
    EXPECT_EQ(e.view().shownText(), "?");
    // A controller moved: the host has learned, and the plate shows it.
    e.host.assignController(TUNING, 21);
    e.host.stopLearning();
    e.wait(1);
    EXPECT_EQ(e.view().shownText(), "21");
    e.wait(2000);
    EXPECT_EQ(e.view().shownText(), "21");
}

TEST(MidiCCViewTest, DraggingUpOrDownStepsTheNumber) {
    MidiCC e;
    e.host.assignController(TUNING, 17);
    e.core.mouseDown({30, 160, Fomal::LEFT_BIT});
    e.core.mouseMove({30, 160 - 3 * views::MidiCCView::DRAG_STEP, Fomal::LEFT_BIT});
    EXPECT_EQ(e.host.controllerOf(TUNING), 20);
    e.core.mouseMove({30, 160 + 100 * views::MidiCCView::DRAG_STEP, Fomal::LEFT_BIT});
    EXPECT_EQ(e.host.controllerOf(TUNING), -1);  // down to none, no further
    e.core.mouseUp({30, 160 + 100 * views::MidiCCView::DRAG_STEP, Fomal::LEFT_BIT});
    // A drag does not listen.
    EXPECT_EQ(e.host.learningFunction(), -1);
}
