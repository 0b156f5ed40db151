#include "fomal/ButtonView.h"

#include <gtest/gtest.h>

#include <vector>

#include "ViewTestSupport.h"

namespace {

using Fomal::ButtonView;

ButtonView& button(viewtest::Editor& e, const char* label) { return static_cast<ButtonView&>(e.find(label)); }

std::vector<std::uint32_t> region(viewtest::Editor& e, int left, int top, int width, int height) {
    e.core.paint();
    std::vector<std::uint32_t> out;
    for (int y = top; y < top + height; ++y)
        for (int x = left; x < left + width; ++x) out.push_back(e.core.pixels()[std::size_t(y) * 384 + std::size_t(x)]);
    return out;
}

}  // namespace

TEST(ButtonViewTest, AReleaseInsideRunsTheActionAndOneOutsideDoesNot) {
    viewtest::Editor e(
        "views: { { type: \"button\", label: \"b\", bounds: { 10, 10, 41, 41 }, film: \"RoundButtonFilm\","
        "           action: \"hideView\", params: \"box\" },"
        "         { type: \"rectangle\", label: \"box\", bounds: { 100, 100, 5, 5 }, fill: 0xFFFFFFFF } }");
    e.core.mouseDown({20, 20, Fomal::LEFT_BIT});
    EXPECT_TRUE(button(e, "b").pressed());
    // Dragged off, the button lets go; back on, it is pressed again.
    e.core.mouseMove({200, 200, Fomal::LEFT_BIT});
    EXPECT_FALSE(button(e, "b").pressed());
    e.core.mouseUp({200, 200, Fomal::LEFT_BIT});
    EXPECT_FALSE(e.find("box").hidden());

    e.click(20, 20);
    EXPECT_FALSE(button(e, "b").pressed());
    EXPECT_TRUE(e.find("box").hidden());
}

TEST(ButtonViewTest, ThePressedButtonShowsTheDownFrame) {
    viewtest::Editor e("views: { { type: \"button\", label: \"b\", bounds: { 10, 10, 41, 41 }, film: \"RoundButtonFilm\" } }");
    const std::vector<std::uint32_t> up = region(e, 10, 10, 41, 41);
    e.core.mouseDown({30, 30, Fomal::LEFT_BIT});
    const std::vector<std::uint32_t> down = region(e, 10, 10, 41, 41);
    EXPECT_NE(up, down);
    e.core.mouseUp({30, 30, Fomal::LEFT_BIT});
    EXPECT_EQ(region(e, 10, 10, 41, 41), up);
}

TEST(ButtonViewTest, AnActionThatCannotBePerformedGreysTheButtonAndIgnoresPresses) {
    // With nothing to undo, the undo button is grey and shows its disabled film.
    viewtest::Editor e(
        "views: { { type: \"button\", label: \"undo\", bounds: { 0, 0, 41, 41 }, film: \"RoundButtonFilm\","
        "           disabledFilm: \"RoundButtonFilmDis\", action: \"undo\" },"
        "         { type: \"button\", label: \"same\", bounds: { 50, 0, 41, 41 }, film: \"RoundButtonFilmDis\" } }");
    EXPECT_FALSE(button(e, "undo").enabled());
    EXPECT_TRUE(button(e, "same").enabled());
    EXPECT_EQ(region(e, 0, 0, 41, 41), region(e, 50, 0, 41, 41));
    e.core.mouseDown({20, 20, Fomal::LEFT_BIT});
    EXPECT_FALSE(button(e, "undo").pressed());
    e.core.mouseUp({20, 20, Fomal::LEFT_BIT});
}

TEST(ButtonViewTest, ASwitchFollowsTheCheckedStateOfItsScriptFunction) {
    viewtest::Editor e(
        "views: { { type: \"switch\", label: \"s\", bounds: { 0, 0, 41, 41 }, film: \"DNAButtonFilm\", action: \">flip\" } }");
    e.core.scripts().evaluate(e.root(), "{ ::on = false; ::flip = function { ::on = !::on }; ::flip.checked = function { ::on } }");
    e.click(5, 5);  // any event brings the states up to date
    EXPECT_TRUE(button(e, "s").checked());
    const std::vector<std::uint32_t> checked = region(e, 0, 0, 41, 41);
    e.click(20, 20);
    EXPECT_FALSE(button(e, "s").checked());
    EXPECT_NE(region(e, 0, 0, 41, 41), checked);
}

TEST(ButtonViewTest, TheClickRectNarrowsWhatTakesTheMouse) {
    viewtest::Editor e(
        "views: { { type: \"rectangle\", label: \"box\", bounds: { 100, 100, 5, 5 }, fill: 0xFFFFFFFF },"
        "         { type: \"button\", bounds: { 10, 10, 41, 41 }, clickRect: { 5, 5, 32, 32 },"
        "           action: \"hideView\", params: \"box\" } }");
    e.click(12, 12);  // on the button's corner, outside its click area
    EXPECT_FALSE(e.find("box").hidden());
    e.click(16, 16);
    EXPECT_TRUE(e.find("box").hidden());
}

TEST(ButtonViewTest, TheTitleIsDrawnAndMovesWithTheDownOffset) {
    viewtest::Editor e(
        "views: { { type: \"button\", label: \"b\", bounds: { 0, 0, 80, 30 }, title: \"Next\","
        "           font: { fnt: \"futura14\", color: 0xFFFFFFFF }, downOffset: { 2, 3 } } }");
    auto ink = [&](int dx, int dy) {
        // The lowest-rightmost lit pixel of the title.
        const std::vector<std::uint32_t> p = region(e, 0, 0, 80, 30);
        int last = -1;
        for (int i = 0; i < int(p.size()); ++i)
            if ((p[std::size_t(i)] & 0xFF) > 0x80) last = i;
        return std::make_pair(last % 80 - dx, last / 80 - dy);
    };
    const auto up = ink(0, 0);
    ASSERT_GE(up.second, 0);
    e.core.mouseDown({40, 15, Fomal::LEFT_BIT});
    EXPECT_EQ(ink(2, 3), up);
}
