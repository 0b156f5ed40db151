#include "fomal/EditorCore.h"

#include <gtest/gtest.h>

#include "ViewTestSupport.h"

TEST(EditorCoreTest, OnlyTheInvalidatedRegionIsRedrawn) {
    viewtest::Editor e("views: { { type: \"rectangle\", label: \"box\", bounds: { 10, 10, 20, 20 }, fill: 0xFF00FF00 } }");
    const OrlPixels::IntRect first = e.core.paint();
    EXPECT_EQ(first.width, 384);
    EXPECT_EQ(first.height, 512);
    EXPECT_TRUE(e.core.paint().isEmpty());  // nothing moved, nothing drawn
    e.find("box").invalidate();
    const OrlPixels::IntRect again = e.core.paint();
    EXPECT_EQ(again.left, 10);
    EXPECT_EQ(again.top, 10);
    EXPECT_EQ(again.width, 20);
    EXPECT_EQ(again.height, 20);
    EXPECT_EQ(e.core.pixels()[15 * 384 + 15], 0xFF00FF00u);
    EXPECT_EQ(e.core.pixels()[5 * 384 + 5], 0xFF000000u);
}

TEST(EditorCoreTest, AHintShowsAfterTheMouseRestsAndHidesOnAPress) {
    viewtest::Editor e("views: { { type: \"click\", bounds: { 10, 10, 50, 50 }, hint: \"Main Menu\", action: \"nop\" } }");
    e.core.mouseMove({20, 20, 0});
    e.wait(Fomal::EditorCore::HINT_DELAY_MS - 1);
    EXPECT_FALSE(e.core.hint().shown());
    e.wait(1);
    ASSERT_TRUE(e.core.hint().shown());
    EXPECT_EQ(e.core.hint().text(), "Main Menu");
    // Below the mouse by the configured offset.
    EXPECT_EQ(e.core.hint().bounds().left, 20);
    EXPECT_EQ(e.core.hint().bounds().top, 40);
    EXPECT_EQ(e.core.hint().bounds().height, 15);
    e.core.mouseDown({20, 20, Fomal::LEFT_BIT});
    EXPECT_FALSE(e.core.hint().shown());
}

TEST(EditorCoreTest, HintsPassThroughTheSubstitution) {
    viewtest::Editor e(
        "views: { { type: \"click\", bounds: { 0, 0, 50, 50 }, hint: \"Plant ([windows]control[/windows][mac]command[/mac]-click) ^N\" } }");
    e.core.mouseMove({20, 20, 0});
    e.wait(Fomal::EditorCore::HINT_DELAY_MS);
    EXPECT_EQ(e.core.hint().text(), "Plant (control-click) Init");
}

TEST(EditorCoreTest, TheCursorIsTheFirstSetOnTheHitViewOrItsAncestors) {
    viewtest::Editor e("cursor: \"hand\" views: { { type: \"click\", bounds: { 0, 0, 50, 50 }, cursor: \"iBeam\" },"
                       "                          { type: \"click\", bounds: { 60, 0, 50, 50 } } }");
    e.core.mouseMove({20, 20, 0});
    EXPECT_EQ(e.core.cursor(), Fomal::Cursor::iBeam);
    e.core.mouseMove({70, 20, 0});
    EXPECT_EQ(e.core.cursor(), Fomal::Cursor::hand);
}

TEST(EditorCoreTest, AnAlertIsDrawnOverThePanelAndTakesEveryPress) {
    viewtest::Editor e("views: { { type: \"click\", action: \"hideView\", params: \"box\" },"
                       "         { type: \"rectangle\", label: \"box\", bounds: { 0, 0, 5, 5 }, fill: 0xFFFFFFFF } }");
    e.core.paint();
    e.core.actions().perform(e.root(), "alert", "{ text: \"Hello\" }", false);
    EXPECT_FALSE(e.core.paint().isEmpty());
    e.click(2, 300);  // outside the box: the alert keeps it
    EXPECT_FALSE(e.find("box").hidden());
    EXPECT_TRUE(e.core.dialogOpen());
    EXPECT_TRUE(e.core.keyDown({"return", 0, 0}));
    EXPECT_FALSE(e.core.dialogOpen());
}

TEST(EditorCoreTest, NothingIsDueWhenNothingMoves) {
    viewtest::Editor e("views: { { type: \"rectangle\", fill: 0xFF202020 } }");
    e.core.paint();
    EXPECT_EQ(e.core.nextWake(), INT64_MAX);
    e.wait(10);
    EXPECT_TRUE(e.core.paint().isEmpty());
}

namespace {

// The platform's dialogs as a test answers them.
struct AnsweringDialogs : Fomal::NativeDialogs {
    std::string word;
    std::string lastText;
    std::string pick;
    std::string alert(const Fomal::AlertRequest&, std::string_view text) override {
        lastText = std::string(text);
        return word;
    }
    const Fomal::PopupItem* popup(const std::vector<Fomal::PopupItem>& items, float, float) override {
        for (const Fomal::PopupItem& item : items)
            if (item.title == pick) return &item;
        return nullptr;
    }
};

}  // namespace

TEST(EditorCoreTest, NativeDialogsAnswerInsteadOfTheDrawnOnes) {
    viewtest::Editor e("views: { { type: \"rectangle\", label: \"box\", bounds: { 0, 0, 5, 5 }, fill: 0xFFFFFFFF } }");
    AnsweringDialogs dialogs;
    e.core.useNativeDialogs(&dialogs);
    dialogs.word = "no";
    e.core.actions().perform(e.root(), "alert",
                             "{ text: \"Hide ^N?\", buttons: \"yes no\", reactions: { { \"yes\", \"hideView\", \"box\" } } }", false);
    EXPECT_FALSE(e.core.dialogOpen());
    EXPECT_EQ(dialogs.lastText, "Hide Init?");
    EXPECT_FALSE(e.find("box").hidden());
    dialogs.word = "yes";
    e.core.actions().perform(e.root(), "alert",
                             "{ text: \"Hide?\", buttons: \"yes no\", reactions: { { \"yes\", \"hideView\", \"box\" } } }", false);
    EXPECT_TRUE(e.find("box").hidden());
    EXPECT_EQ(e.alerts.size(), 2u);  // still reported as they appear

    dialogs.pick = "Show";
    e.core.actions().perform(e.root(), "popup", "{ items: { { \"Show\", \"showView\", \"box\" } } }", false);
    EXPECT_FALSE(e.core.dialogOpen());
    EXPECT_FALSE(e.find("box").hidden());
    e.core.useNativeDialogs(nullptr);
    e.core.actions().perform(e.root(), "popup", "{ items: { { \"Show\", \"showView\", \"box\" } } }", false);
    EXPECT_TRUE(e.core.dialogOpen());
}

// What fails while the editor opens is shown in its alert over an empty
// panel; the editor goes on living and closes cleanly.
namespace {

struct Opening {
    Fomal::StillHost host;
    Fomal::VirtualClock clock;
    Fomal::EditorCore core{host, clock};
    std::vector<std::string> alerts;
    Opening() {
        core.onAlert = [this](const std::string& title, const std::string& text) { alerts.push_back(title + ": " + text); };
    }
};

}  // namespace

TEST(EditorCoreTest, AMissingStartScriptEndsTheOpeningWithItsAlert) {
    Opening o;
    Fomal::ScriptSetup setup;
    setup.startScript = "nosuchscript.quol";
    EXPECT_FALSE(o.core.open(setup, "main"));
    ASSERT_EQ(o.alerts.size(), 1u);
    EXPECT_NE(o.alerts[0].find("Could not load text resource"), std::string::npos) << o.alerts[0];
    // The panel paints: the alert over an empty window.
    EXPECT_FALSE(o.core.paint().isEmpty());
    EXPECT_TRUE(o.core.dialogOpen());
    o.core.idle();
    o.core.close();
}

TEST(EditorCoreTest, AMissingLayoutEndsTheOpeningWithItsAlert) {
    Opening o;
    EXPECT_FALSE(o.core.open(Fomal::ScriptSetup(), "nosuchlayout"));
    ASSERT_EQ(o.alerts.size(), 1u);
    EXPECT_NE(o.alerts[0].find("Could not obtain layout : nosuchlayout"), std::string::npos) << o.alerts[0];
    EXPECT_FALSE(o.core.paint().isEmpty());
    o.core.close();
}

TEST(EditorCoreTest, ABrokenLayoutOrImageOrFontEndsTheOpeningWithItsAlert) {
    const std::pair<const char*, const char*> cases[] = {
        {"views: { { type: \"raster\", image: \"noSuchImage\" } }", "Could not obtain image : noSuchImage"},
        {"views: { { type: \"caption\", font: { fnt: \"noFont\" } } }", "Could not obtain font : noFont"},
        {"views: { { type: \"noSuchType\" } }", "noSuchType"},
        {"views: { { type: \"rectangle\", cursor: \"nosuch\" } }", "Unknown cursor: nosuch"},
    };
    for (const auto& [layout, message] : cases) {
        Opening o;
        EXPECT_FALSE(o.core.openText(Fomal::ScriptSetup(), layout)) << layout;
        ASSERT_EQ(o.alerts.size(), 1u) << layout;
        EXPECT_NE(o.alerts[0].find(message), std::string::npos) << o.alerts[0];
        EXPECT_FALSE(o.core.paint().isEmpty());
        o.core.close();
    }
}
