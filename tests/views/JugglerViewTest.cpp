#include "views/JugglerView.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "tests/fomal/ViewTestSupport.h"
#include "views/LivingViews.h"

namespace {

// The bulb of the main panel: centre (192, 263).
constexpr int CX = 192, CY = 263;

std::string layout(std::string_view keys) {
    return "views: { { type: \"juggler\", label: \"balls\", bounds: { 42, 113, 300, 300 }, " + std::string(keys) + " } }";
}

struct Juggler : viewtest::Editor {
    explicit Juggler(std::string_view keys) : viewtest::Editor((views::registerLivingViews(), layout(keys))) {}
    views::JugglerView& view() { return static_cast<views::JugglerView&>(find("balls")); }
};

const char* const FOUR = "ballColors: { 0xFFE02828, 0xFFF0C030, 0xFF30B050, 0xFFE8E8F0 }";

}  // namespace

TEST(JugglerViewTest, ThereIsABallForEachColour) {
    Juggler four(FOUR);
    ASSERT_EQ(four.view().balls().size(), 4u);
    EXPECT_EQ(four.view().balls()[0].color, 0xFFE02828u);
    EXPECT_EQ(four.view().balls()[3].color, 0xFFE8E8F0u);
    Juggler one("ballColor: 0xFF2040E0");
    ASSERT_EQ(one.view().balls().size(), 1u);
    EXPECT_EQ(one.view().balls()[0].color, 0xFF2040E0u);
    // The single form adds its ball to the list.
    Juggler both("ballColors: { 0xFFE02828 }, ballColor: 0xFF2040E0");
    EXPECT_EQ(both.view().balls().size(), 2u);
}

TEST(JugglerViewTest, WithoutAColourItCannotBeBuilt) {
    views::registerLivingViews();
    EXPECT_EQ(viewtest::failureOf(layout("bulbRadius: 117")), "Must specify at least one ball color");
    EXPECT_EQ(viewtest::failureOf(layout("ballColors: { }")), "Must specify at least one ball color");
}

TEST(JugglerViewTest, BadKeysFailWithTheirReadersMessages) {
    views::registerLivingViews();
    EXPECT_EQ(viewtest::failureOf(layout("ballColors: { red }")), "Invalid number: 'red'");
    EXPECT_EQ(viewtest::failureOf(layout("ballColor: 0xFF000000, bulbRadius: huge")), "Undefined symbol: 'huge'");
    EXPECT_EQ(viewtest::failureOf(layout("ballColor: 0xFF000000, gradientOffset: { -2, (3 }")), "Expected ')'");
}

TEST(JugglerViewTest, TheKeysDefaultToThePanelsToy) {
    Juggler j(FOUR);
    EXPECT_EQ(j.view().bulbRadius(), 117);
    EXPECT_EQ(j.view().ballRadius(), 10);
}

TEST(JugglerViewTest, BallsStayInsideTheBulbAndKeepMoving) {
    Juggler j(FOUR);
    const double room = 117 - 10;
    double moved = 0;
    for (int second = 0; second < 20; ++second) {
        std::vector<views::JugglerView::Ball> before = j.view().balls();
        j.wait(1000);
        for (std::size_t i = 0; i < before.size(); ++i) {
            const views::JugglerView::Ball& b = j.view().balls()[i];
            EXPECT_LE(std::hypot(b.x, b.y), room + 1e-9);
            moved += std::hypot(b.x - before[i].x, b.y - before[i].y);
        }
    }
    // The rim keeps them bouncing: they do not come to rest.
    EXPECT_GT(moved, 20 * 4 * 10.0);
}

TEST(JugglerViewTest, GravityComesFromTheGravityControl) {
    Juggler heavy("ballColor: 0xFFFFFFFF");
    Juggler weightless("ballColor: 0xFFFFFFFF");
    heavy.host.changeControl("JugglerGravity", 1.0);
    weightless.host.changeControl("JugglerGravity", 0.0);
    const double vy = heavy.view().balls()[0].vy;
    heavy.view().step(0.05);
    weightless.view().step(0.05);
    EXPECT_NEAR(heavy.view().balls()[0].vy - vy, views::JugglerView::MAX_GRAVITY * 0.05, 1e-6);
    EXPECT_NEAR(weightless.view().balls()[0].vy, vy, 1e-9);
}

TEST(JugglerViewTest, TheRimThrowsABallBackWithTheBumperForce) {
    for (double force : {0.0, 1.0}) {
        Juggler j("ballColor: 0xFFFFFFFF");
        j.host.changeControl("JugglerGravity", 0.0);
        j.host.changeControl("JugglerBumperForce", force);
        // Fly straight right into the rim.
        views::JugglerView& v = j.view();
        auto& ball = const_cast<views::JugglerView::Ball&>(v.balls()[0]);
        ball.x = 100;
        ball.y = 0;
        ball.vx = 200;
        ball.vy = 0;
        v.step(0.1);
        EXPECT_LE(ball.x, 107.0);
        EXPECT_NEAR(ball.vx, -(views::JugglerView::RESTITUTION * 200 + views::JugglerView::MAX_BUMP * force), 1e-6)
            << force;
    }
}

TEST(JugglerViewTest, ABallIsAShadedDiscOverItsShadow) {
    Juggler j("ballColor: 0xFFE02020, gradientOffset: { -2, -3 }, shadowOffset: { 2, 3 }, shadowScale: 2.0");
    auto& ball = const_cast<views::JugglerView::Ball&>(j.view().balls()[0]);
    ball.x = 0;
    ball.y = 0;
    j.core.paint();
    const auto at = [&](int x, int y) { return j.core.pixels()[std::size_t(y) * 384 + std::size_t(x)]; };
    const auto red = [](std::uint32_t p) { return int((p >> 16) & 0xFF); };
    // Brightest at the ramp's centre, moved up and left; darker at the rim
    // by the gradient amount.
    const std::uint32_t lit = at(CX - 2, CY - 3);
    EXPECT_GE(red(lit), 0xD0);
    EXPECT_EQ(lit >> 24, 0xFFu);
    const std::uint32_t rim = at(CX + 6, CY + 5);
    EXPECT_LT(red(rim), red(lit));
    EXPECT_GE(red(rim), 0x70);
    // Beyond the ball lies the shadow: dark, translucent.
    const std::uint32_t shadow = at(CX + 12, CY + 12);
    EXPECT_EQ(red(shadow), 0);
    EXPECT_EQ(at(CX + 40, CY + 40), 0xFF000000u);  // the panel's black
}

TEST(JugglerViewTest, ItMovesAtItsUpdateRate) {
    Juggler j(std::string(FOUR) + ", updateFreq: 10");
    const double x = j.view().balls()[0].x;
    j.wait(99);
    EXPECT_EQ(j.view().balls()[0].x, x);
    j.wait(1);
    EXPECT_NE(j.view().balls()[0].x, x);
}
