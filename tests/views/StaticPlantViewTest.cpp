#include "views/StaticPlantView.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <string>

#include "tests/fomal/ViewTestSupport.h"
#include "views/LivingViews.h"

namespace {

// The about page's plant, placed at the panel's corner: centre (92, 115).
constexpr double CX = 92, CY = 115;
const char* const ABOUT_PLANT =
    "type: \"staticPlant\", label: \"plant\", bounds: { 0, 0, 184, 230 },"
    " branches: { { 65.0, 0.75 }, { 115.0, 0.75 }, { 270, 0.68 } }, animateTime: 15.0, updateFreq: 15";

std::string layout(std::string_view keys) { return "views: { { " + std::string(keys) + " } }"; }

struct Plant : viewtest::Editor {
    explicit Plant(std::string_view keys) : viewtest::Editor((views::registerLivingViews(), layout(keys))) {}
    views::StaticPlantView& view() { return static_cast<views::StaticPlantView&>(find("plant")); }
};

struct Extent {
    double left = 1e9, top = 1e9, right = -1e9, bottom = -1e9, farthest = 0;
};

Extent extentOf(const views::PlantGeometry& g, int branch = -1) {
    Extent e;
    for (const views::PlantLine& line : g.lines()) {
        if (branch >= 0 && line.branch != branch) continue;
        for (const views::PlantPoint& p : g.points(line)) {
            e.left = std::min(e.left, p.x);
            e.right = std::max(e.right, p.x);
            e.top = std::min(e.top, p.y);
            e.bottom = std::max(e.bottom, p.y);
            e.farthest = std::max(e.farthest, std::hypot(p.x - CX, p.y - CY));
        }
    }
    return e;
}

}  // namespace

TEST(StaticPlantViewTest, TheGrowthRisesEvenlyFromZeroToOneInTheAnimateTime) {
    Plant p(ABOUT_PLANT);
    EXPECT_EQ(p.view().growth(), 0.0f);
    p.wait(7500);
    EXPECT_NEAR(p.view().growth(), 0.5f, 1.0f / 15 / 15 + 1e-6);  // within one tick of 15 a second
    p.wait(7500);
    EXPECT_EQ(p.view().growth(), 1.0f);
    p.wait(1000);
    EXPECT_EQ(p.view().growth(), 1.0f);
    // Grown and without sway it asks for no more ticks.
    EXPECT_EQ(p.core.nextWake(), INT64_MAX);
}

TEST(StaticPlantViewTest, TheGrowthScalesEveryBranchsLength) {
    Plant p(ABOUT_PLANT);
    // At the start only the shortest branches stand: 0.1 steps of 3 pixels
    // draw nothing at all.
    EXPECT_TRUE(p.view().geometry().lines().empty());
    const double atStart = extentOf(p.view().geometry()).farthest;
    p.wait(5000);
    const double third = extentOf(p.view().geometry()).farthest;
    p.wait(10000);
    const double grown = extentOf(p.view().geometry()).farthest;
    EXPECT_LT(atStart, third);
    EXPECT_LT(third, grown);
}

TEST(StaticPlantViewTest, ABranchGrowsAwayFromTheDirectionOfItsAngle) {
    // As on the panel: angle a gives u = (cos a, sin a), y downwards, and
    // the branch grows along -u. 270 degrees grows down, 90 up, 0 left, 180 right.
    const struct {
        const char* angle;
        int dx, dy;
    } cases[] = {{"270", 0, 1}, {"90", 0, -1}, {"0", -1, 0}, {"180", 1, 0}};
    for (const auto& c : cases) {
        Plant p(std::string("type: \"staticPlant\", label: \"plant\", bounds: { 0, 0, 184, 230 }, animateTime: 0,"
                            " branches: { { ") +
                c.angle + ", 1.0 } }");
        const Extent e = extentOf(p.view().geometry());
        ASSERT_FALSE(p.view().geometry().lines().empty()) << c.angle;
        if (c.dy > 0) {
            EXPECT_GT(e.bottom - CY, 40) << c.angle;
            EXPECT_GT(e.top, CY) << c.angle;
        }
        if (c.dy < 0) {
            EXPECT_LT(e.bottom, CY) << c.angle;
        }
        if (c.dx < 0) {
            EXPECT_LT(e.right, CX) << c.angle;
        }
        if (c.dx > 0) {
            EXPECT_GT(e.left, CX) << c.angle;
        }
    }
}

TEST(StaticPlantViewTest, BranchesStartAtTheCoresRimAndTakeTheRenderersKeys) {
    Plant p("type: \"staticPlant\", label: \"plant\", bounds: { 0, 0, 184, 230 }, animateTime: 0, coreSize: 20,"
            " maxBranchLength: 30, twigMaxGenerations: 0, branches: { { 270, 1 } }");
    const views::PlantGeometry& g = p.view().geometry();
    ASSERT_EQ(g.lines().size(), 1u);  // no twigs
    const views::PlantPoint first = g.points(g.lines()[0])[0];
    // (The angle goes to radians by the plant's own 0.017453292.)
    EXPECT_NEAR(first.x, CX, 1e-4);
    EXPECT_NEAR(first.y, CY + 20, 1e-9);
    EXPECT_EQ(p.view().settings.coreSize, 20);
    EXPECT_EQ(p.view().settings.maxBranchLength, 30.0f);
}

TEST(StaticPlantViewTest, ItIsTheSamePlantEveryTime) {
    Plant a(ABOUT_PLANT), b(ABOUT_PLANT);
    a.wait(15000);
    b.wait(15000);
    const views::PlantGeometry& ga = a.view().geometry();
    const views::PlantGeometry& gb = b.view().geometry();
    ASSERT_EQ(ga.lines().size(), gb.lines().size());
    ASSERT_GT(ga.lines().size(), 3u);
    for (std::size_t i = 0; i < ga.lines().size(); ++i) {
        const auto pa = ga.points(ga.lines()[i]);
        const auto pb = gb.points(gb.lines()[i]);
        ASSERT_EQ(pa.size(), pb.size());
        for (std::size_t j = 0; j < pa.size(); ++j) {
            EXPECT_EQ(pa[j].x, pb[j].x);
            EXPECT_EQ(pa[j].y, pb[j].y);
        }
    }
    a.core.paint();
    b.core.paint();
    EXPECT_EQ(a.core.pixels(), b.core.pixels());
    // And it is drawn: some of its pixels are lit.
    EXPECT_GT(std::count_if(a.core.pixels().begin(), a.core.pixels().end(), [](std::uint32_t px) { return px != 0; }), 50);
}

TEST(StaticPlantViewTest, ItSwaysOnlyWithASwayAmount) {
    Plant still(std::string(ABOUT_PLANT) + ", animateTime: 0");
    Plant swaying(std::string(ABOUT_PLANT) + ", animateTime: 0, swayAmount: 3, swayRate: 2");
    const Extent s0 = extentOf(still.view().geometry());
    const Extent w0 = extentOf(swaying.view().geometry());
    still.wait(700);
    swaying.wait(700);
    EXPECT_EQ(extentOf(still.view().geometry()).left, s0.left);
    EXPECT_NE(extentOf(swaying.view().geometry()).left, w0.left);
    EXPECT_NEAR(swaying.view().swayPhase(), 1.4f, 2.0f / 15);  // 2 radians a second
    EXPECT_EQ(still.core.nextWake(), INT64_MAX);
    EXPECT_NE(swaying.core.nextWake(), INT64_MAX);
}

TEST(StaticPlantViewTest, DecayDroopsItAndLengthensItsBranches) {
    Plant standing("type: \"staticPlant\", label: \"plant\", bounds: { 0, 0, 184, 230 }, animateTime: 0,"
                   " branches: { { 0, 0.2 } }");
    Plant decayed("type: \"staticPlant\", label: \"plant\", bounds: { 0, 0, 184, 230 }, animateTime: 0, decay: 1,"
                  " branches: { { 0, 0.2 } }");
    const Extent s = extentOf(standing.view().geometry(), 0);
    const Extent d = extentOf(decayed.view().geometry(), 0);
    // At full decay every branch is at full length (v = 1), and it leans
    // towards the bottom of the view.
    EXPECT_GT(d.farthest, s.farthest);
    EXPECT_GT(d.bottom - CY, s.bottom - CY + 5);
}

TEST(StaticPlantViewTest, ItTakesNoMouse) {
    Plant p(ABOUT_PLANT);
    EXPECT_EQ(p.core.root()->hitTest(92, 115), nullptr);
    EXPECT_FALSE(p.view().takesMouse());
}

TEST(StaticPlantViewTest, WithoutBranchesNothingGrows) {
    Plant p("type: \"staticPlant\", label: \"plant\", animateTime: 0");
    EXPECT_TRUE(p.view().geometry().lines().empty());
    EXPECT_TRUE(p.view().branches().empty());
}

TEST(StaticPlantViewTest, BadKeysFailWithTheirReadersMessages) {
    views::registerLivingViews();
    EXPECT_EQ(viewtest::failureOf(layout("type: \"staticPlant\", coreSize: big")), "Undefined symbol: 'big'");
    EXPECT_EQ(viewtest::failureOf(layout("type: \"staticPlant\", animateTime: (15")), "Expected ')'");
    EXPECT_EQ(viewtest::failureOf(layout("type: \"staticPlant\", branches: { { 65.0, long } }")),
              "Undefined symbol: 'long'");
    EXPECT_EQ(viewtest::failureOf(layout("type: \"staticPlant\", swayRate: fast")), "Undefined symbol: 'fast'");
    // The renderer's keys are read first.
    EXPECT_EQ(viewtest::failureOf(layout("type: \"staticPlant\", updateFreq: often, gamma: high")),
              "Undefined symbol: 'high'");
}
