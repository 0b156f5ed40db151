#include "views/BubbleView.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <string>

#include "fomal/ActionDispatcher.h"
#include "tests/fomal/ViewTestSupport.h"
#include "views/LivingViews.h"

namespace {

constexpr double PI = 3.14159265358979323846;

const char* const STYLES =
    "styles: { default: { font: { fnt: \"futura18\", color: 0xFF000000, gamma: 1.8 }, lineSpacing: -4, typingRate: 20 },"
    " i: { font: { fnt: \"futura18i\", color: 0xFF000000, gamma: 1.8 }, lineSpacing: -5 },"
    " key: { font: { fnt: \"segoe14b\" }, frame: { color: 0x40000000, stroke: 1, margin: 0, padding: 0, joints: miter } },"
    " u: { underline: { color: 0xFF000000, stroke: 1, dash: 4, gap: 2, offset: 2 } },"
    " fast: { typingRate: 0 } }";

// A bubble over the lower part of the panel with a rectangle to act on.
std::string layout(std::string_view keys, std::string_view pages) {
    return "views: { { type: \"rectangle\", label: \"other\", bounds: { 0, 0, 10, 10 }, color: 0xFF00FF00 },"
           " { type: \"bubble\", label: \"bubble\", bounds: { 20, 300, 300, 10 }, fill: 0xE8E8E8E8,"
           " frame: { color: 0xE0202020, stroke: 2 }, margins: { 10, 10, -10, -10 }, paddings: { 15, 7, -15, -12 },"
           " minHeight: 10, maxHeight: 450, corners: { 15, 15 }, moveResizeFPS: 30, moveResizeTime: 0.3,"
           " moveResizeCurve: 0.8, " +
           std::string(STYLES) + ", pages: { " + std::string(pages) + " }" +
           (keys.empty() ? "" : ", ") + std::string(keys) + " } }";
}

struct Bubble : viewtest::Editor {
    Bubble(std::string_view keys, std::string_view pages)
        : viewtest::Editor((views::registerLivingViews(), layout(keys, pages))) {}
    views::BubbleView& view() { return static_cast<views::BubbleView&>(find("bubble")); }
    bool otherHidden() { return find("other").hidden(); }
    std::string perform(std::string_view action, std::string_view params) {
        return core.actions().perform(root(), action, params, false);
    }
    bool canPerform(std::string_view action, std::string_view params) {
        return core.actions().canPerform(root(), action, params);
    }
    std::string failureOf(std::string_view action, std::string_view params) {
        try {
            perform(action, params);
        } catch (const std::exception& e) {
            return e.what();
        }
        return "(no failure)";
    }
    // The panel point in the middle of the page's run `index`.
    std::pair<int, int> runCentre(std::size_t index) {
        const views::PlacedRun& r = view().wrapped().runs.at(index);
        const views::MarkupLine& line = view().wrapped().lines.at(std::size_t(r.line));
        const Fomal::RectF b = view().bubbleRect();
        const double width = view().compiled().ops.at(r.op).width;
        return {int(b.left + 15 + r.x + width / 2), int(b.top + 7 + line.top + line.height / 2)};
    }
};

}  // namespace

TEST(BubbleViewTest, WithoutADefaultStyleTheLayoutFails) {
    views::registerLivingViews();
    EXPECT_EQ(viewtest::failureOf("views: { { type: \"bubble\", pages: { \"a\" }, styles: { i: { typingRate: 1 } } } }"),
              "Missing (default) style specification for bubble view");
}

TEST(BubbleViewTest, AStyleClosedOutOfOrderFailsWhenTheLayoutLoads) {
    views::registerLivingViews();
    EXPECT_EQ(viewtest::failureOf(layout("", "\"<i><u>x</i></u>\"")), "Unbalanced style tags: u and i");
}

TEST(BubbleViewTest, TheOutlineIsFourQuarterArcsAndTheTail) {
    Bubble b("tailSize: { 6, 9 }, tailPosition: 100", "\"Hello\"");
    const OrlPixels::Polygon shape = b.view().outline();
    const Fomal::RectF r = b.view().bubbleRect();
    EXPECT_EQ(r.left, 30);
    EXPECT_EQ(r.right(), 310);
    // The step of 15-pixel corners: 2 / 15, above 2 pi / 100. Each quarter
    // has its points at whole steps below a quarter turn and its end.
    const double step = 2.0 / 15.0;
    const int perQuarter = int(std::ceil((PI / 2) / step)) + 1;
    ASSERT_EQ(shape.edgeCount(), std::size_t(4 * perQuarter + 3));
    // One closed chain: each edge starts where the one before it ends.
    for (std::size_t i = 1; i < shape.edgeCount(); ++i) EXPECT_EQ(shape.point(2 * i), shape.point(2 * i - 1));
    EXPECT_EQ(shape.point(shape.pointCount() - 1), shape.point(0));
    // It starts at the top edge where the top right corner begins, and
    // runs clockwise.
    EXPECT_NEAR(shape.point(0).x, r.right() - 15, 1e-9);
    EXPECT_NEAR(shape.point(0).y, r.top, 1e-9);
    EXPECT_NEAR(shape.point(2).x, r.right() - 15 + 15 * std::cos(-PI / 2 + step), 1e-9);
    EXPECT_NEAR(shape.point(2).y, r.top + 15 + 15 * std::sin(-PI / 2 + step), 1e-9);
    // The tail after the bottom right corner: right, tip, left.
    const std::size_t t = 2 * std::size_t(2 * perQuarter);
    EXPECT_NEAR(shape.point(t).x, r.left + 100 + 6, 1e-9);
    EXPECT_NEAR(shape.point(t).y, r.bottom(), 1e-9);
    EXPECT_NEAR(shape.point(t + 2).x, r.left + 100, 1e-9);
    EXPECT_NEAR(shape.point(t + 2).y, r.bottom() + 9, 1e-9);
    EXPECT_NEAR(shape.point(t + 4).x, r.left + 100 - 6, 1e-9);
    EXPECT_NEAR(shape.point(t + 4).y, r.bottom(), 1e-9);
    // Without a tail height there is no tail.
    Bubble flat("tailSize: { 6, 0 }, tailPosition: 100", "\"Hello\"");
    EXPECT_EQ(flat.view().outline().edgeCount(), std::size_t(4 * perQuarter));
    // Large corners step by 2 pi / 100.
    Bubble round("corners: { 40, 40 }", "\"Hello\"");
    const int large = int(std::ceil((PI / 2) / (2 * PI / 100))) + 1;
    EXPECT_EQ(round.view().outline().edgeCount(), std::size_t(4 * large));
}

TEST(BubbleViewTest, TheHeightFitsTheTextAndKeepsTheBottomEdge) {
    Bubble b("", "\"One line.\", \"Many words that will not fit on one line of the bubble, so that the text wraps"
                 " onto a second and a third line of its own.\"");
    views::BubbleView& v = b.view();
    ASSERT_EQ(v.wrapped().lines.size(), 1u);
    const double margins = 7 + 12 + 10 + 10;
    EXPECT_FLOAT_EQ(v.rect().height, float(v.wrapped().height + margins));
    EXPECT_FLOAT_EQ(v.rect().bottom(), 310);
    const float oneLine = v.rect().height;

    b.perform("gotoPage", "{ label: \"bubble\", page: 1 }");
    EXPECT_GE(v.wrapped().lines.size(), 3u);
    const float target = float(v.wrapped().height + margins);
    EXPECT_FLOAT_EQ(v.targetRect().height, target);
    // It grows upward over the move-resize time.
    b.wait(100);
    EXPECT_GT(v.rect().height, oneLine);
    EXPECT_LT(v.rect().height, target);
    EXPECT_NEAR(v.rect().bottom(), 310, 1e-3);
    b.wait(250);
    EXPECT_FLOAT_EQ(v.rect().height, target);
    EXPECT_FLOAT_EQ(v.rect().bottom(), 310);
}

TEST(BubbleViewTest, TheHeightStaysWithinItsLimits) {
    Bubble low("minHeight: 200", "\"Short.\"");
    EXPECT_FLOAT_EQ(low.view().rect().height, 200);
    EXPECT_FLOAT_EQ(low.view().rect().bottom(), 310);
    std::string longPage = "\"";
    for (int i = 0; i < 60; ++i) longPage += "many words make a long page ";
    longPage += "\"";
    Bubble high("maxHeight: 120", longPage);
    EXPECT_FLOAT_EQ(high.view().rect().height, 120);
    EXPECT_FLOAT_EQ(high.view().rect().top, 190);
}

TEST(BubbleViewTest, TypingFollowsTheClockAtTheStylesRate) {
    Bubble b("", "\"abcdefghij klmnopqrst\"");
    views::BubbleView& v = b.view();
    EXPECT_EQ(v.compiled().characters, 21);
    EXPECT_EQ(v.shownCharacters(), 0);
    b.wait(500);
    // 20 characters a second, ticked at 30 frames a second.
    EXPECT_GE(v.shownCharacters(), 9);
    EXPECT_LE(v.shownCharacters(), 10);
    b.wait(600);
    EXPECT_EQ(v.shownCharacters(), 21);
    EXPECT_FALSE(v.typing());
    // At rest the view asks for nothing more.
    EXPECT_EQ(b.core.nextWake(), INT64_MAX);
}

TEST(BubbleViewTest, AStyleWithTypingRateZeroShowsItsTextAtOnce) {
    Bubble b("", "\"<fast>All of this at once.</fast>\"");
    EXPECT_EQ(b.view().shownCharacters(), b.view().compiled().characters);
    EXPECT_FALSE(b.view().typing());
    // Mixed: the slow part types, the fast part appears whole.
    Bubble mixed("", "\"ab <fast>cdefgh</fast>\"");
    mixed.wait(120);
    EXPECT_EQ(mixed.view().shownCharacters(), 2);
    // "ab " takes 150 ms; the next tick shows the rest.
    mixed.wait(60);
    EXPECT_EQ(mixed.view().shownCharacters(), 3 + 6);
}

TEST(BubbleViewTest, APauseHoldsTheTyping) {
    Bubble b("", "\"ab<pause delay: 1 />cd\"");
    views::BubbleView& v = b.view();
    b.wait(150);
    EXPECT_EQ(v.shownCharacters(), 2);
    b.wait(800);
    EXPECT_EQ(v.shownCharacters(), 2);
    b.wait(400);
    EXPECT_EQ(v.shownCharacters(), 4);
}

TEST(BubbleViewTest, ADoActionRunsWhenTypingReachesIt) {
    Bubble b("", "\"abcd<do action: hideView params: \\\"other\\\" />ef\"");
    b.wait(150);
    EXPECT_FALSE(b.otherHidden());
    b.wait(100);
    EXPECT_TRUE(b.otherHidden());
    Bubble later("", "\"ab<do action: hideView params: \\\"other\\\" delay: 0.5 />\"");
    later.wait(300);
    EXPECT_FALSE(later.otherHidden());
    later.wait(400);
    EXPECT_TRUE(later.otherHidden());
}

TEST(BubbleViewTest, AClickSpeedsTheTypingUpAndASecondRunsTheReclickAction) {
    Bubble b("clickParams: { rate: 4, reclickAction: hideView, reclickParams: \"other\" }",
             "\"abcdefghijklmnopqrstuvwxyz abcdefghijklmnopqrstuvwxyz\"");
    views::BubbleView& v = b.view();
    b.wait(100);
    const int before = v.shownCharacters();
    const Fomal::RectF r = v.bubbleRect();
    b.click(int(r.left + 5), int(r.top + 5));
    EXPECT_EQ(v.speedFactor(), 4.0);
    EXPECT_TRUE(v.typing());
    b.wait(200);
    // 80 characters a second now.
    EXPECT_GE(v.shownCharacters() - before, 14);
    EXPECT_FALSE(b.otherHidden());
    b.click(int(r.left + 5), int(r.top + 5));
    EXPECT_TRUE(b.otherHidden());
}

TEST(BubbleViewTest, TheTutorialsClickGoesThroughTheLabelAndRateZeroShowsAll) {
    Bubble b("clickAction: \"typingRate\", clickParams: { label: \"bubble\", rate: 0, reclickAction: hideView,"
             " reclickParams: \"other\" }",
             "\"A page that takes a while to type out.\"");
    views::BubbleView& v = b.view();
    b.wait(100);
    const Fomal::RectF r = v.bubbleRect();
    b.click(int(r.left + 5), int(r.top + 5));
    EXPECT_FALSE(v.typing());
    EXPECT_EQ(v.shownCharacters(), v.compiled().characters);
    EXPECT_FALSE(b.otherHidden());
    b.click(int(r.left + 5), int(r.top + 5));
    EXPECT_TRUE(b.otherHidden());
}

TEST(BubbleViewTest, AClickableWordRunsItsActionAndShowsTheHand) {
    Bubble b("", "\"<fast>Press <click action: hideView params: \\\"other\\\">here</click> now</fast>\"");
    const auto [x, y] = b.runCentre(1);
    b.core.mouseMove({x, y, 0});
    EXPECT_EQ(b.core.cursor(), Fomal::Cursor::hand);
    const auto [px, py] = b.runCentre(0);
    b.core.mouseMove({px, py, 0});
    EXPECT_NE(b.core.cursor(), Fomal::Cursor::hand);
    b.click(x, y);
    EXPECT_TRUE(b.otherHidden());
}

TEST(BubbleViewTest, GotoPageShowsThePageFromItsStartAndABadNumberFails) {
    Bubble b("", "\"First page.\", \"Second page.\"");
    views::BubbleView& v = b.view();
    b.wait(2000);
    EXPECT_FALSE(v.typing());
    b.perform("gotoPage", "{ label: \"bubble\", page: 1 }");
    EXPECT_EQ(v.page(), 1);
    EXPECT_EQ(v.shownCharacters(), 0);
    EXPECT_TRUE(v.typing());
    EXPECT_EQ(v.compiled().ops.front().text, "Second");
    // Numbers wrap around by default; not with `wrap` false.
    b.perform("gotoPage", "{ label: \"bubble\", page: 2 }");
    EXPECT_EQ(v.page(), 0);
    EXPECT_TRUE(b.canPerform("gotoPage", "{ label: \"bubble\", page: 1, wrap: false }"));
    EXPECT_FALSE(b.canPerform("gotoPage", "{ label: \"bubble\", page: 2, wrap: false }"));
    EXPECT_FALSE(b.canPerform("gotoPage", "{ label: \"bubble\", page: 9, wrap: false"));
    EXPECT_EQ(b.failureOf("gotoPage", "{ label: \"bubble\", page: 2, wrap: false }"), "Invalid page number: 2");
    EXPECT_EQ(b.failureOf("gotoPage", "{ label: \"bubble\", page: \"two\" }"), "Invalid page number: two");
    EXPECT_EQ(b.failureOf("gotoPage", "{ page: 1 }"), "Missing 'label' parameter");
}

TEST(BubbleViewTest, AMoveTagAnimatesTheBubbleToItsTarget) {
    Bubble b("", "\"Home.\", \"<move bounds='{ 0, 0, $, $ }' time: 0.2 />Up here.\"");
    views::BubbleView& v = b.view();
    const Fomal::RectF home = v.rect();
    b.perform("gotoPage", "{ label: \"bubble\", page: 1 }");
    ASSERT_TRUE(v.moving());
    EXPECT_EQ(v.targetRect().top, 0);
    EXPECT_EQ(v.targetRect().left, 0);
    EXPECT_EQ(v.targetRect().width, home.width);
    EXPECT_EQ(v.targetRect().height, home.height);
    b.wait(100);
    EXPECT_GT(v.rect().top, 0);
    EXPECT_LT(v.rect().top, home.top);
    b.wait(150);
    EXPECT_FALSE(v.moving());
    EXPECT_EQ(v.rect().top, 0);
    EXPECT_EQ(v.rect().left, 0);
    // The next page starts from the bubble's home.
    b.perform("gotoPage", "{ label: \"bubble\", page: 0 }");
    b.wait(400);
    EXPECT_EQ(v.rect().top, home.top);
    EXPECT_EQ(v.rect().left, home.left);
}

TEST(BubbleViewTest, ScriptSectionsOfThePageRunAfterTheLayoutHasOpened) {
    views::registerLivingViews();
    viewtest::Editor e(
        "triggers: { { when: \"opened\", action: \"{ ::bubbleWord = function { 'kerning' } }\" } }"
        " views: { { type: \"bubble\", label: \"bubble\", bounds: { 20, 300, 300, 60 }, " +
        std::string(STYLES) +
        ", pages: { \"<fast><i>[quol]{ bubbleWord() }[/quol]</i> pairs</fast>\", \"[quol]{ bubbleWord() }[/quol]\" } } }");
    views::BubbleView& v = static_cast<views::BubbleView&>(e.find("bubble"));
    e.wait(50);
    EXPECT_TRUE(e.alerts.empty()) << e.alerts.front();
    ASSERT_EQ(v.compiled().ops.size(), 2u);
    EXPECT_EQ(v.compiled().ops[0].text, "kerning");
    EXPECT_EQ(v.compiled().ops[0].style, v.styles().find("i"));
    // It types from there: a style inside another is that style alone,
    // so "kerning" types at the default's rate.
    EXPECT_TRUE(v.typing());
    e.wait(500);
    EXPECT_EQ(v.shownCharacters(), v.compiled().characters);
    // A page set later runs its scripts at once.
    e.core.actions().perform(e.root(), "gotoPage", "{ label: \"bubble\", page: 1 }", false);
    ASSERT_EQ(v.compiled().ops.size(), 1u);
    EXPECT_EQ(v.compiled().ops[0].text, "kerning");
}

TEST(BubbleViewTest, AnAutoClickRepeatsWhileHeldAndAPlainOneRunsOnRelease) {
    // Each run of the action opens one more view inside the bubble.
    Bubble b("", "\"<fast><click action: openView params: { type: rectangle } auto>more</click>"
                 " <click action: openView params: { type: rectangle }>once</click></fast>\"");
    views::BubbleView& v = b.view();
    const auto [x, y] = b.runCentre(0);
    b.core.mouseDown({x, y, Fomal::LEFT_BIT});
    EXPECT_EQ(v.children().size(), 1u);
    b.wait(views::BubbleView::REPEAT_DELAY_MS);
    // At the delay, then at every interval.
    b.wait(2 * views::BubbleView::REPEAT_INTERVAL_MS + 10);
    EXPECT_EQ(v.children().size(), 4u);
    b.core.mouseUp({x, y, Fomal::LEFT_BIT});
    b.wait(500);
    EXPECT_EQ(v.children().size(), 4u);
    EXPECT_EQ(b.core.nextWake(), INT64_MAX);

    const auto [ox, oy] = b.runCentre(1);
    b.core.mouseDown({ox, oy, Fomal::LEFT_BIT});
    EXPECT_EQ(v.children().size(), 4u);
    b.core.mouseUp({ox, oy, Fomal::LEFT_BIT});
    EXPECT_EQ(v.children().size(), 5u);
    // Released away from the word, it does nothing.
    b.core.mouseDown({ox, oy, Fomal::LEFT_BIT});
    b.core.mouseUp({int(v.bubbleRect().left) + 2, int(v.bubbleRect().bottom()) - 2, Fomal::LEFT_BIT});
    EXPECT_EQ(v.children().size(), 5u);
}
