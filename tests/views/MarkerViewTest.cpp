#include "views/MarkerView.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <string>

#include "tests/fomal/ViewTestSupport.h"
#include "views/LivingViews.h"

namespace {

// What the tutorial opens to ring something: a red hand-drawn circle.
const char* const RING =
    "type: \"ring\", label: \"ring\", center: { 192, 263 }, size: { 20, 20 }, rotation: 0, random: 1.0,"
    " pen: { color: 0xFFFF4040, stroke: 6, joints: curve, caps: round }, quality: 1.0, updateFreq: 30.0, time: 1.0,"
    " start: -90, outlineWidth: 1, outlineMix: 50, sweep: 350";
// And to mark something: a yellow highlighter ring all round.
const char* const MARK =
    "type: \"ring\", label: \"ring\", center: { 192, 263 }, size: { 58, 58 }, rotation: 0, random: 0.0,"
    " pen: { color: 0x60606000, stroke: 8, joints: curve, caps: round }, quality: 1.0, updateFreq: 30.0, time: 1.0,"
    " start: -90, outlineWidth: 0, outlineMix: 0";

std::string layout(std::string_view keys) { return "views: { { " + std::string(keys) + " } }"; }

struct Marker : viewtest::Editor {
    explicit Marker(std::string_view keys) : viewtest::Editor((views::registerLivingViews(), layout(keys))) {}
    views::MarkerView& view() { return static_cast<views::MarkerView&>(find("ring")); }
    std::uint32_t at(int x, int y) {
        core.paint();
        return core.pixels()[std::size_t(y) * 384 + std::size_t(x)];
    }
};

}  // namespace

TEST(MarkerViewTest, TheStrokeIsLaidDownOverItsTimeQuicklyAtFirst) {
    Marker m(RING);
    EXPECT_EQ(m.view().progress(), 0.0);
    EXPECT_EQ(m.view().drawnSweep(), 0.0);
    EXPECT_TRUE(m.view().centreLine().isEmpty());
    m.wait(500);
    // Half the time, more than half the way.
    EXPECT_GT(m.view().progress(), 0.6);
    EXPECT_LT(m.view().progress(), 1.0);
    m.wait(600);
    EXPECT_EQ(m.view().progress(), 1.0);
    EXPECT_EQ(m.view().drawnSweep(), 350.0);
    // Then it stands and asks for no more ticks.
    EXPECT_EQ(m.core.nextWake(), INT64_MAX);
}

TEST(MarkerViewTest, ItBeginsAtStartAndRunsClockwise) {
    Marker m(std::string(MARK) + ", time: 0, sweep: 90");
    const OrlPixels::Polygon line = m.view().centreLine();
    ASSERT_GE(line.pointCount(), 2u);
    // -90 degrees is the top; 90 degrees on is the right.
    EXPECT_NEAR(line.point(0).x, 192, 1e-9);
    EXPECT_NEAR(line.point(0).y, 263 - 58, 1e-9);
    const OrlPixels::Point end = line.point(line.pointCount() - 1);
    EXPECT_NEAR(end.x, 192 + 58, 1e-9);
    EXPECT_NEAR(end.y, 263, 1e-9);
}

TEST(MarkerViewTest, SizeGivesTheRadiiAndRotationTurnsTheEllipse) {
    Marker wide(std::string(MARK) + ", time: 0, size: { 40, 20 }, start: 0, sweep: 90");
    OrlPixels::Polygon line = wide.view().centreLine();
    EXPECT_NEAR(line.point(0).x, 192 + 40, 1e-9);
    EXPECT_NEAR(line.points().back().y, 263 + 20, 1e-9);
    Marker turned(std::string(MARK) + ", time: 0, size: { 40, 20 }, start: 0, sweep: 90, rotation: 90");
    line = turned.view().centreLine();
    // Turned a quarter clockwise: the end of the long axis points down.
    EXPECT_NEAR(line.point(0).x, 192, 1e-9);
    EXPECT_NEAR(line.point(0).y, 263 + 40, 1e-9);
}

TEST(MarkerViewTest, WithoutRandomTheLineIsTheEllipseAndWithItTheHandWavers) {
    Marker steady(std::string(MARK) + ", time: 0");
    Marker wavering(std::string(MARK) + ", time: 0, random: 1.0");
    double steadyMin = 1e9, steadyMax = 0, waverMin = 1e9, waverMax = 0;
    const OrlPixels::Polygon steadyLine = steady.view().centreLine();
    const OrlPixels::Polygon waverLine = wavering.view().centreLine();
    for (const OrlPixels::Point& p : steadyLine.points()) {
        const double d = std::hypot(p.x - 192, p.y - 263);
        steadyMin = std::min(steadyMin, d);
        steadyMax = std::max(steadyMax, d);
    }
    for (const OrlPixels::Point& p : waverLine.points()) {
        const double d = std::hypot(p.x - 192, p.y - 263);
        waverMin = std::min(waverMin, d);
        waverMax = std::max(waverMax, d);
    }
    EXPECT_NEAR(steadyMin, 58, 1e-9);
    EXPECT_NEAR(steadyMax, 58, 1e-9);
    EXPECT_GT(waverMax - waverMin, 1.0);
    // By up to a tenth of the radius.
    EXPECT_GE(waverMin, 58 * 0.9 - 1e-9);
    EXPECT_LE(waverMax, 58 * 1.1 + 1e-9);
    // And the same marker at the same place wavers the same way.
    Marker again(std::string(MARK) + ", time: 0, random: 1.0");
    EXPECT_EQ(again.view().centreLine().points(), waverLine.points());
}

TEST(MarkerViewTest, WithoutSweepItGoesAllRound) {
    Marker m(std::string(MARK) + ", time: 0");
    EXPECT_EQ(m.view().drawnSweep(), 360.0);
    const OrlPixels::Polygon line = m.view().centreLine();
    EXPECT_NEAR(line.points().back().x, line.point(0).x, 1e-9);
    EXPECT_NEAR(line.points().back().y, line.point(0).y, 1e-9);
}

TEST(MarkerViewTest, ItIsPaintedWithItsPenAndAnOutlineOfDarkerInk) {
    Marker m(std::string(RING) + ", random: 0, size: { 40, 40 }, time: 0");
    // On the line at the right, in the pen's colour.
    EXPECT_EQ(m.at(192 + 40, 263), 0xFFFF4040u);
    // Just beyond the stroke's 3 pixels: the outline, the colour mixed half
    // towards black.
    // (The panel is black where nothing is drawn.)
    const std::uint32_t edge = m.at(192 + 43, 263);
    EXPECT_GE((edge >> 16) & 0xFF, 0x70u);
    EXPECT_LE((edge >> 16) & 0xFF, 0x80u);
    EXPECT_LE((edge >> 8) & 0xFF, 0x20u);
    EXPECT_EQ(m.at(192 + 46, 263), 0xFF000000u);
    EXPECT_EQ(m.at(192, 263), 0xFF000000u);  // the middle stays clear
    Marker bare(std::string(RING) + ", random: 0, size: { 40, 40 }, time: 0, outlineWidth: 0");
    EXPECT_EQ(bare.at(192 + 43, 263), 0xFF000000u);
    // The highlighter is translucent and has no outline: yellow over black.
    Marker h(std::string(MARK) + ", time: 0");
    EXPECT_EQ(h.at(192 + 58, 263), 0xFF606000u);
    EXPECT_EQ(h.at(192 + 63, 263), 0xFF000000u);
}

TEST(MarkerViewTest, GammaShapesTheEdges) {
    Marker plain(std::string(MARK) + ", time: 0, pen: { color: 0xFFFFFFFF, stroke: 1.5 }");
    Marker bright(std::string(MARK) + ", time: 0, pen: { color: 0xFFFFFFFF, stroke: 1.5 }, gamma: 2.2");
    plain.core.paint();
    bright.core.paint();
    long sumPlain = 0, sumBright = 0;
    for (std::uint32_t p : plain.core.pixels()) sumPlain += (p >> 16) & 0xFF;
    for (std::uint32_t p : bright.core.pixels()) sumBright += (p >> 16) & 0xFF;
    EXPECT_GT(sumBright, sumPlain);
}

TEST(MarkerViewTest, ItTakesNoMouse) {
    Marker m(RING);
    EXPECT_EQ(m.core.root()->hitTest(192, 243), nullptr);
}

TEST(MarkerViewTest, BadKeysFailWithTheirReadersMessages) {
    views::registerLivingViews();
    EXPECT_EQ(viewtest::failureOf(layout("type: \"ring\", size: { big, 20 }")), "Undefined symbol: 'big'");
    EXPECT_EQ(viewtest::failureOf(layout("type: \"ring\", time: (1")), "Expected ')'");
    EXPECT_EQ(viewtest::failureOf(layout("type: \"ring\", sweep: all")), "Undefined symbol: 'all'");
}

TEST(MarkerViewTest, ABadPenFailsWithThePensMessage) {
    views::registerLivingViews();
    EXPECT_EQ(viewtest::failureOf(layout("type: \"ring\", pen: { color: 0xFFFF4040, caps: wobbly }")),
              "Invalid caps: wobbly");
    EXPECT_EQ(viewtest::failureOf(layout("type: \"ring\", pen: { color: 0xFFFF4040, joints: loose }")),
              "Invalid joints: loose");
}
