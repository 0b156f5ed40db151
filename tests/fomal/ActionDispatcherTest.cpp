#include "fomal/ActionDispatcher.h"

#include <gtest/gtest.h>

#include "ViewTestSupport.h"
#include "fomal/PopupMenu.h"

namespace {

using viewtest::Editor;

const char* const PANEL =
    "views: { { type: \"fomal\", label: \"inner\", bounds: { 10, 10, 100, 100 },"
    "           views: { { type: \"click\", label: \"button\", bounds: { 0, 0, 20, 20 }, action: \"nop\" } } } }";

std::string failureOf(Editor& e, std::string_view action, std::string_view params = {}) {
    try {
        e.core.actions().perform(e.root(), action, params, false);
    } catch (const std::exception& x) {
        return x.what();
    }
    return "(no failure)";
}

TEST(ActionDispatcherTest, AScriptBodyRunsWithTheParamsAsItsFirstArgument) {
    Editor e(PANEL);
    EXPECT_EQ(e.core.actions().perform(e.root(), "{ 'got ' # $0 }", "{ a: 1 }", false), "got { a: 1 }");
}

TEST(ActionDispatcherTest, ANamedFunctionGetsTheRawParamsAndMayHaveDots) {
    Editor e(PANEL);
    e.core.scripts().evaluate(e.root(), "{ ::tutorial.say = function { 'said ' # $0 } }");
    EXPECT_EQ(e.core.actions().perform(e.root(), ">tutorial.say", "\"dna\"", false), "said \"dna\"");
}

TEST(ActionDispatcherTest, UnknownActionsFailWithTheirName) {
    Editor e(PANEL);
    EXPECT_EQ(failureOf(e, "explode"), "Unknown action: explode");
}

TEST(ActionDispatcherTest, WithAlertsAFailureIsShownAndTheCallerGoesOn) {
    Editor e(PANEL);
    EXPECT_EQ(e.core.actions().perform(e.root(), "explode", "", true), "");
    ASSERT_EQ(e.alerts.size(), 1u);
    EXPECT_EQ(e.alerts[0],
              "Tendrane: The operation could not be performed due to the following error:\nUnknown action: explode.");
    EXPECT_TRUE(e.core.dialogOpen());
    EXPECT_TRUE(e.core.choose("OK"));
    EXPECT_FALSE(e.core.dialogOpen());
}

TEST(ActionDispatcherTest, AScriptFailureShowsTheQuolErrorWithItsPositions) {
    Editor e(PANEL);
    e.core.actions().perform(e.root(), "{ x = 1; nothing(); }", "", true);
    ASSERT_EQ(e.alerts.size(), 1u);
    EXPECT_NE(e.alerts[0].find("Internal script-code error: Undefined: 'nothing'"), std::string::npos) << e.alerts[0];
    EXPECT_NE(e.alerts[0].find(" <!> "), std::string::npos) << e.alerts[0];
}

TEST(ActionDispatcherTest, CanPerformAsksTheEnabledMemberAndIsCheckedTheCheckedOne) {
    Editor e(PANEL);
    e.core.scripts().evaluate(e.root(),
                              "{ ::modal = function { }; ::modal.enabled = function { $0 == '\"dna\"' };"
                              "  ::modal.checked = function { true }; ::plain = function { } }");
    Fomal::ActionDispatcher& d = e.core.actions();
    EXPECT_TRUE(d.canPerform(e.root(), ">modal", "\"dna\""));
    EXPECT_FALSE(d.canPerform(e.root(), ">modal", "\"midi\""));
    EXPECT_TRUE(d.canPerform(e.root(), ">plain", ""));   // no member: yes
    EXPECT_TRUE(d.isChecked(e.root(), ">modal", ""));
    EXPECT_FALSE(d.isChecked(e.root(), ">plain", ""));  // no member: no
    EXPECT_TRUE(d.canPerform(e.root(), "{ false }", ""));  // a body always can
    EXPECT_FALSE(d.isChecked(e.root(), "nop", ""));
}

TEST(ActionDispatcherTest, ScriptsReachTheViewsThroughPerformAndCanPerform) {
    Editor e(PANEL);
    // A void target is the view the script runs for; "/" the root; else a label.
    e.core.actions().perform(e.find("inner"), "{ perform('hideView', void, 'button') }", "", false);
    EXPECT_TRUE(e.find("button").hidden());
    e.core.actions().perform(e.find("inner"), "{ perform('hideView') }", "", false);
    EXPECT_TRUE(e.find("inner").hidden());
    EXPECT_EQ(e.core.actions().perform(e.root(), "{ canPerform('undo') }", "", false), "false");
    EXPECT_EQ(e.core.actions().perform(e.root(), "{ canPerform('nop', void, '/') }", "", false), "true");
    EXPECT_EQ(failureOf(e, "{ perform('nop', void, 'nowhere') }"), "Could not find target view");
}

TEST(ActionDispatcherTest, AlertParametersAreChecked) {
    Editor e(PANEL);
    EXPECT_EQ(failureOf(e, "alert", "{ type: \"shout\" }"), "Invalid alert type : shout");
    EXPECT_EQ(failureOf(e, "alert", "{ buttons: \"ok no\" }"), "Invalid alert buttons : ok no");
    EXPECT_EQ(failureOf(e, "alert", "{ buttons: \"yes no\", default: \"maybe\" }"), "Invalid default button : maybe");
    EXPECT_EQ(failureOf(e, "alert", "{ buttons: \"yes no\", reactions: { { \"ok\", \"nop\" } } }"),
              "Invalid reaction button : ok");
    EXPECT_TRUE(e.alerts.empty());
}

TEST(ActionDispatcherTest, AnAlertShowsAndItsPressedButtonReacts) {
    Editor e(PANEL);
    e.core.actions().perform(e.root(),
                             "alert",
                             "{ type: \"question\", title: \"Update\", text: \"View the page?\", buttons: \"yes no\","
                             "  default: \"yes\", reactions: { { \"yes\", \"hideView\", \"button\" } } }",
                             false);
    ASSERT_EQ(e.alerts.size(), 1u);
    EXPECT_EQ(e.alerts[0], "Update: View the page?");
    EXPECT_FALSE(e.core.choose("Maybe"));
    EXPECT_TRUE(e.core.choose("Yes"));
    EXPECT_TRUE(e.find("button").hidden());
    // The title defaults to the product's name; "no" has no reaction.
    e.core.actions().perform(e.root(), "alert", "{ text: \"Sure?\", buttons: \"yes no\" }", false);
    EXPECT_EQ(e.alerts.back(), "Tendrane: Sure?");
    EXPECT_TRUE(e.core.choose("No"));
    EXPECT_FALSE(e.core.dialogOpen());
}

TEST(ActionDispatcherTest, APopupAsksEachItemWhetherItCanBeDoneAndIsChecked) {
    Editor e(PANEL);
    e.core.scripts().evaluate(e.root(), "{ ::pick = function { ::picked = $0 }; ::pick.checked = function { true } }");
    e.core.actions().perform(e.root(), "popup",
                             "{ items: { { \"&Undo\", \"undo\" }, \"-\", { \"Pick\", \">pick\", \"'one'\" },"
                             "           { \"More\", \"popup\", { items: { { \"Deep\", \">pick\", \"'two'\" } } } } } }",
                             false);
    ASSERT_TRUE(e.core.dialogOpen());
    auto* menu = dynamic_cast<Fomal::PopupMenu*>(e.core.overlay().back().get());
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->items().size(), 4u);
    EXPECT_FALSE(menu->items()[0].enabled);  // nothing to undo
    EXPECT_TRUE(menu->items()[1].separator());
    EXPECT_TRUE(menu->items()[2].checked);
    EXPECT_EQ(menu->items()[3].items.size(), 1u);
    EXPECT_FALSE(e.core.choose("Undo"));  // grey: stays open
    EXPECT_TRUE(e.core.dialogOpen());
    EXPECT_TRUE(e.core.choose("More"));   // opens the submenu
    EXPECT_TRUE(e.core.choose("Deep"));
    EXPECT_FALSE(e.core.dialogOpen());
    EXPECT_EQ(e.core.scripts().evaluate(e.root(), "{ ::picked }"), "\"'two'\"");  // the raw params
}

}  // namespace
