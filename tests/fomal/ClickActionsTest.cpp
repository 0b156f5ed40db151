#include "fomal/ClickActions.h"

#include <gtest/gtest.h>

#include "ViewTestSupport.h"

namespace {

using namespace Fomal;
using viewtest::Editor;

TEST(ClickActionsTest, AnEntryAnswersOnlyWhenEveryWordHolds) {
    const MouseEvent left{5, 5, LEFT_BIT};
    const MouseEvent controlLeft{5, 5, LEFT_BIT | CONTROL_BIT};
    const MouseEvent right{5, 5, RIGHT_BIT};
    EXPECT_TRUE(clickMaskAnswers(parseClickMask("click"), releaseBits(left, true)));
    EXPECT_FALSE(clickMaskAnswers(parseClickMask("click"), releaseBits(left, false)));  // let go outside
    EXPECT_TRUE(clickMaskAnswers(parseClickMask("up"), releaseBits(left, false)));
    EXPECT_TRUE(clickMaskAnswers(parseClickMask("release"), releaseBits(left, false)));
    EXPECT_TRUE(clickMaskAnswers(parseClickMask("down"), pressBits(left)));
    EXPECT_TRUE(clickMaskAnswers(parseClickMask("press"), pressBits(left)));
    EXPECT_FALSE(clickMaskAnswers(parseClickMask("down"), releaseBits(left, true)));
    // A control-click is not a click, and a click not a control-click.
    EXPECT_FALSE(clickMaskAnswers(parseClickMask("click"), releaseBits(controlLeft, true)));
    EXPECT_TRUE(clickMaskAnswers(parseClickMask("click+windows+control"), releaseBits(controlLeft, true)));
    EXPECT_FALSE(clickMaskAnswers(parseClickMask("click+windows+control"), releaseBits(left, true)));
    // The other platform's twin never answers here.
    EXPECT_FALSE(clickMaskAnswers(parseClickMask("click+mac+command"), releaseBits(MouseEvent{5, 5, LEFT_BIT | COMMAND_BIT}, true)));
    // The right button is the context gesture; plain words mean the left one.
    EXPECT_TRUE(clickMaskAnswers(parseClickMask("context"), pressBits(right)));
    EXPECT_FALSE(clickMaskAnswers(parseClickMask("down"), pressBits(right)));
    EXPECT_TRUE(clickMaskAnswers(parseClickMask("down+right"), pressBits(right)));
    EXPECT_FALSE(clickMaskAnswers(parseClickMask("context"), pressBits(left)));
    // An empty mask is a click.
    EXPECT_TRUE(clickMaskAnswers(parseClickMask(""), releaseBits(left, true)));
    EXPECT_FALSE(clickMaskAnswers(parseClickMask(""), pressBits(left)));
}

const char* const SEED =
    "views: { { type: \"click\", label: \"seed\", bounds: { 100, 100, 50, 50 }, actions: {"
    "  { \"click\", \"{ ::log = ::log # 'plant;' }\" },"
    "  { \"down\", \"{ ::log = ::log # 'sound;' }\" },"
    "  { \"up\", \"{ ::log = ::log # 'quiet;' }\" },"
    "  { \"down+windows+control\", \"{ ::log = ::log # 'try;' }\" },"
    "  { \"down+mac+command\", \"{ ::log = ::log # 'mac;' }\" },"
    "  { \"release+windows+control\", \"{ ::log = ::log # 'back;' }\" },"
    "  { \"click+windows+control\", \"{ ::log = ::log # 'keep;' }\" } } } }";

std::string logOf(Editor& e) { return e.core.scripts().evaluate(e.root(), "{ ::log }"); }

TEST(ClickActionsTest, TheSeedSoundsOnPressAndPlantsOnAClick) {
    Editor e(SEED);
    e.core.scripts().evaluate(e.root(), "{ ::log = '' }");
    e.click(120, 120);
    EXPECT_EQ(logOf(e), "sound;plant;quiet;");
}

TEST(ClickActionsTest, AControlClickTriesARandomSeedAndKeepsIt) {
    Editor e(SEED);
    e.core.scripts().evaluate(e.root(), "{ ::log = '' }");
    e.click(120, 120, LEFT_BIT | CONTROL_BIT);
    EXPECT_EQ(logOf(e), "try;back;keep;");
}

TEST(ClickActionsTest, TheReleaseGoesToThePressedViewAlsoOutsideIt) {
    Editor e(SEED);
    e.core.scripts().evaluate(e.root(), "{ ::log = '' }");
    e.core.mouseDown({120, 120, LEFT_BIT});
    e.core.mouseMove({300, 20, LEFT_BIT});
    e.core.mouseUp({300, 20, LEFT_BIT});
    EXPECT_EQ(logOf(e), "sound;quiet;");  // no click outside
}

TEST(ClickActionsTest, ALoneActionStandsForClick) {
    Editor e("views: { { type: \"click\", bounds: { 0, 0, 10, 10 }, action: \"hideView\", params: \"box\" },"
             "         { type: \"rectangle\", label: \"box\", bounds: { 20, 20, 5, 5 }, fill: 0xFFFFFFFF } }");
    e.core.mouseDown({5, 5, LEFT_BIT});
    EXPECT_FALSE(e.find("box").hidden());
    e.core.mouseUp({5, 5, LEFT_BIT});
    EXPECT_TRUE(e.find("box").hidden());
}

TEST(ClickActionsTest, AFullSizeNopClickBlocksClicksAndHintsBeneath) {
    Editor e("views: { { type: \"click\", hint: \"beneath\", action: \"hideView\", params: \"box\" },"
             "         { type: \"rectangle\", label: \"box\", bounds: { 20, 20, 5, 5 }, fill: 0xFFFFFFFF },"
             "         { type: \"click\", action: \"nop\", hint: \"\" } }");
    e.click(50, 50);
    EXPECT_FALSE(e.find("box").hidden());
    e.core.mouseMove({50, 50, 0});
    e.wait(Fomal::EditorCore::HINT_DELAY_MS + 1);
    EXPECT_FALSE(e.core.hint().shown());
}

TEST(ClickActionsTest, AThruViewIsDrawnButNeverTheTarget) {
    Editor e("views: { { type: \"click\", action: \"hideView\", params: \"box\" },"
             "         { type: \"rectangle\", label: \"box\", bounds: { 20, 20, 5, 5 }, fill: 0xFFFFFFFF },"
             "         { type: \"click\", thru: true, action: \"nop\" } }");
    e.click(50, 50);
    EXPECT_TRUE(e.find("box").hidden());
}

TEST(ClickActionsTest, AWrongMaskWordStopsTheLayout) {
    EXPECT_EQ(viewtest::failureOf("views: { { type: \"click\", actions: { { \"click+twice\", \"nop\" } } } }"),
              "Invalid click mask constant: twice");
}

}  // namespace
