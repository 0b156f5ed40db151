#include "fomal/BuiltInActions.h"

#include <gtest/gtest.h>

#include "ViewTestSupport.h"

namespace {

using viewtest::Editor;

const char* const PANEL =
    "views: {"
    "  { type: \"fomal\", label: \"holder\", bounds: { 20, 20, 200, 200 }, views: {"
    "      { type: \"rectangle\", label: \"a\", bounds: { 0, 0, 10, 10 }, fill: 0xFF0000FF,"
    "        triggers: { { when: \"closing\", action: \"{ ::closed = ::closed # 'a;' }\" },"
    "                    { when: \"closefx\", action: \"{ ::closed = ::closed # 'fx;' }\" } } },"
    "      { type: \"rectangle\", label: \"b\", bounds: { 10, 0, 10, 10 }, fill: 0xFF00FF00 } } } }";

std::string run(Editor& e, std::string_view action, std::string_view params, Fomal::View* target = nullptr) {
    try {
        return e.core.actions().perform(target != nullptr ? *target : e.root(), action, params, false);
    } catch (const std::exception& x) {
        return std::string("failed: ") + x.what();
    }
}

std::string global(Editor& e, std::string_view name) {
    return e.core.scripts().evaluate(e.root(), std::string("{ ") + std::string(name) + " }");
}

TEST(BuiltInActionsTest, EveryNameOfTheTableIsKnown) {
    for (std::string_view name :
         {"nop", "batch", "alert", "popup", "openView", "closeView", "openWindow", "closeWindow", "showView", "hideView",
          "trigger", "animate", "delayed", "cancel", "gotoPage", "typingRate", "refresh", "launch", "openURL", "open",
          "save", "load", "previous", "next", "undo", "redo", "plant", "preview", "midiConfig", "stopLearning",
          "showRotationHandle"})
        EXPECT_NE(Fomal::findBuiltInAction(name), nullptr) << name;
    EXPECT_EQ(Fomal::findBuiltInAction("execute"), nullptr);
}

TEST(BuiltInActionsTest, BatchPerformsEachInTurn) {
    Editor e(PANEL);
    EXPECT_EQ(run(e, "batch", "{ { \"hideView\", \"a\" }, { \"hideView\", \"b\" } }"), "");
    EXPECT_TRUE(e.find("a").hidden());
    EXPECT_TRUE(e.find("b").hidden());
}

TEST(BuiltInActionsTest, ShowAndHideTakeALabelOrAnObjectWithToggle) {
    Editor e(PANEL);
    run(e, "hideView", "{ label: \"a\" }");
    EXPECT_TRUE(e.find("a").hidden());
    run(e, "showView", "{ label: \"a\", toggle: true }");
    EXPECT_FALSE(e.find("a").hidden());
    run(e, "showView", "{ label: \"a\", toggle: true }");
    EXPECT_TRUE(e.find("a").hidden());
    run(e, "showView", "\"a\"");
    EXPECT_FALSE(e.find("a").hidden());
}

TEST(BuiltInActionsTest, OpenViewBuildsAChildOfTheTargetAndFiresOpened) {
    Editor e(PANEL);
    Fomal::View& holder = e.find("holder");
    run(e,
        "openView",
        "{ type: \"rectangle\", label: \"c\", bounds: { 5, 5, 10, 10 }, fill: 0xFFFFFFFF,"
        "  triggers: { { when: \"opened\", action: \"{ ::opened = 'yes' }\" } } }",
        &holder);
    Fomal::View* c = e.root().findView("c");
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->parent(), &holder);
    EXPECT_EQ(c->rect().left, 25.0f);  // in the target's terms
    EXPECT_EQ(global(e, "::opened"), "yes");
    // With toggle an open view of that label closes instead.
    run(e, "openView", "{ type: \"rectangle\", label: \"c\", toggle: true }", &holder);
    EXPECT_EQ(e.root().findView("c"), nullptr);
}

TEST(BuiltInActionsTest, OpenViewWithPromoteMovesTheOpenViewToTheTop) {
    Editor e(PANEL);
    Fomal::View& holder = e.find("holder");
    run(e, "openView", "{ type: \"rectangle\", label: \"a\", promote: true }", &holder);
    ASSERT_EQ(holder.children().size(), 2u);
    EXPECT_EQ(holder.children().back()->label(), "a");
}

TEST(BuiltInActionsTest, CloseViewFiresClosingAndRemovesTheView) {
    Editor e(PANEL);
    e.core.scripts().evaluate(e.root(), "{ ::closed = '' }");
    run(e, "closeView", "\"a\"");
    EXPECT_EQ(e.root().findView("a"), nullptr);
    EXPECT_EQ(global(e, "::closed"), "a;");
    // Without a parameter the target itself goes.
    run(e, "closeView", "", &e.find("b"));
    EXPECT_EQ(e.root().findView("b"), nullptr);
}

TEST(BuiltInActionsTest, TriggerRunsTheEntriesOrElseTheAlternative) {
    Editor e(PANEL);
    e.core.scripts().evaluate(e.root(), "{ ::closed = '' }");
    run(e, "trigger", "{ what: \"closefx\", label: \"a\", alternatively: \"closeView\" }");
    EXPECT_EQ(global(e, "::closed"), "fx;");
    EXPECT_NE(e.root().findView("a"), nullptr);
    // "b" has no closing animation: it closes at once.
    run(e, "trigger", "{ what: \"closefx\", label: \"b\", alternatively: \"closeView\" }");
    EXPECT_EQ(e.root().findView("b"), nullptr);
    run(e, "trigger", "\"closefx\"", &e.find("a"));
    EXPECT_EQ(global(e, "::closed"), "fx;fx;");
    // A view that is not open hears nothing, and nothing fails.
    EXPECT_EQ(run(e, "trigger", "{ what: \"closefx\", label: \"tutorial\", alternatively: \"closeView\" }"), "");
    EXPECT_EQ(global(e, "::closed"), "fx;fx;");
    EXPECT_NE(e.root().findView("a"), nullptr);
}

TEST(BuiltInActionsTest, DelayedActionsRunWhenDueAndCancelByLabel) {
    Editor e(PANEL);
    EXPECT_EQ(run(e, "delayed", "{ delay: 100 }"), "failed: Missing action for delayed action");
    run(e, "delayed", "{ delay: 100, action: \"hideView\", params: \"a\", label: \"x\" }");
    run(e, "delayed", "{ delay: 150, action: \"hideView\", params: \"b\", label: \"y\" }");
    e.wait(99);
    EXPECT_FALSE(e.find("a").hidden());
    e.wait(1);
    EXPECT_TRUE(e.find("a").hidden());
    run(e, "cancel", "\"y\"");
    e.wait(100);
    EXPECT_FALSE(e.find("b").hidden());
}

TEST(BuiltInActionsTest, ClosingAViewDropsItsDelayedActions) {
    Editor e(PANEL);
    e.core.scripts().evaluate(e.root(), "{ ::ran = 'no' }");
    run(e, "delayed", "{ delay: 10, action: \"{ ::ran = 'yes' }\" }", &e.find("a"));
    run(e, "closeView", "{ label: \"a\", closing: false }");
    e.wait(20);
    EXPECT_EQ(global(e, "::ran"), "no");
}

TEST(BuiltInActionsTest, ADelayedFailureIsDroppedUnlessItAsksForAlerts) {
    Editor e(PANEL);
    run(e, "delayed", "{ action: \"explode\" }");
    e.wait(1);
    EXPECT_TRUE(e.alerts.empty());
    run(e, "delayed", "{ action: \"explode\", alerts: true }");
    e.wait(1);
    ASSERT_EQ(e.alerts.size(), 1u);
    EXPECT_NE(e.alerts[0].find("Unknown action: explode"), std::string::npos);
}

TEST(BuiltInActionsTest, ParameterMessages) {
    Editor e(PANEL);
    EXPECT_EQ(run(e, "preview", "{ key: \"sideways\" }"),
              "failed: Unknown key param: sideways (should be \"up\" or \"down\")");
    EXPECT_EQ(run(e, "preview", "{ key: \"down\", note: 128 }"), "failed: Note out of range: 128");
    EXPECT_EQ(run(e, "preview", "{ key: \"down\", note: -1 }"), "failed: Note out of range: -1");
    EXPECT_EQ(run(e, "preview", "{ key: \"up\" }"), "");
    EXPECT_EQ(run(e, "launch", "{ path: \"x.pdf\", relativeTo: \"desktop\" }"), "failed: Unknown relativeTo: desktop");
    EXPECT_EQ(run(e, "gotoPage", "{ page: 3 }"), "failed: Missing 'label' parameter");
    EXPECT_EQ(run(e, "typingRate", "{ rate: 3 }"), "failed: Missing 'label' parameter");
    EXPECT_EQ(run(e, "animate", "{ type: \"sideways\" }"), "failed: Invalid / missing animation type: sideways");
    EXPECT_EQ(run(e, "animate", "{ time: 1 }"), "failed: Invalid / missing animation type: ");
}

TEST(BuiltInActionsTest, UndoAndRedoCanBeDoneOnlyWhenTheHostHasAStep) {
    Editor e(PANEL);
    EXPECT_FALSE(e.core.actions().canPerform(e.root(), "undo", ""));
    EXPECT_FALSE(e.core.actions().canPerform(e.root(), "redo", ""));
    EXPECT_FALSE(e.core.actions().canPerform(e.root(), "previous", ""));
    EXPECT_TRUE(e.core.actions().canPerform(e.root(), "nop", ""));
    // No plant in this tree: nothing to grow.
    EXPECT_FALSE(e.core.actions().canPerform(e.root(), "plant", ""));
}

TEST(BuiltInActionsTest, CanPerformOfGotoPageParsesAnObjectWithoutItsClosingBrace) {
    Editor e(PANEL);
    // No bubble of that label: no page to go to. The label is read
    // although the brace is missing.
    EXPECT_FALSE(e.core.actions().canPerform(e.root(), "gotoPage", "{ label: \"tutorialBubble\", page: 9, wrap: false"));
    try {
        e.core.actions().canPerform(e.root(), "gotoPage", "{ page: 9, wrap: false");
        FAIL() << "no failure";
    } catch (const std::exception& x) {
        EXPECT_STREQ(x.what(), "Missing 'label' parameter");
    }
}

}  // namespace
