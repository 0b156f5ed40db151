#include "fomal/SliderView.h"

#include <gtest/gtest.h>

#include "ViewTestSupport.h"

namespace {

using Fomal::LEFT_BIT;

// A slit from (0, 10) to (200, 10): the value is the fraction of the way
// along it, so the cap of 0.5 stands at x = 100.
constexpr const char* STRAIGHT =
    "views: { { type: \"slider\", label: \"Cutoff\", bounds: { 0, 0, 200, 20 }, capWidth: 10, capHeight: 16,"
    "           capColor: 0xFFFFFFFF, slitColor: 0xFF808080, default: 0.25, fineRatio: 10, snap: 0.5, snapArea: 4,"
    "           hint: \"Cutoff ^X\" } }";

double valueOf(viewtest::Editor& e) { return e.host.controlValue("Cutoff"); }

}  // namespace

TEST(SliderViewTest, DraggingTheCapFollowsTheMouseAlongTheSlit) {
    viewtest::Editor e(STRAIGHT);
    e.core.mouseDown({100, 10, LEFT_BIT});
    EXPECT_DOUBLE_EQ(valueOf(e), 0.5);
    e.core.mouseMove({150, 30, LEFT_BIT});  // off the slit sideways: only the run along it counts
    EXPECT_DOUBLE_EQ(valueOf(e), 0.75);
    e.core.mouseMove({400, 10, LEFT_BIT});
    EXPECT_DOUBLE_EQ(valueOf(e), 1.0);
    e.core.mouseMove({300, 10, LEFT_BIT});  // held at the end, then back by the same run
    EXPECT_DOUBLE_EQ(valueOf(e), 0.5);
    e.core.mouseUp({300, 10, LEFT_BIT});
    // The whole drag was one edit.
    EXPECT_EQ(e.host.gestures(), 1);
}

TEST(SliderViewTest, ShiftMovesByTheFineRatio) {
    viewtest::Editor e(STRAIGHT);
    e.core.mouseDown({100, 10, LEFT_BIT});
    e.core.mouseMove({200, 10, LEFT_BIT | Fomal::SHIFT_BIT});
    EXPECT_NEAR(valueOf(e), 0.5 + 0.5 * 0.1, 1e-12);
    e.core.mouseMove({220, 10, LEFT_BIT});  // shift let go: full speed again from here
    EXPECT_NEAR(valueOf(e), 0.65, 1e-12);
}

TEST(SliderViewTest, AControlClickResetsToTheDefault) {
    viewtest::Editor e(STRAIGHT);
    e.click(100, 10, LEFT_BIT | Fomal::CONTROL_BIT);
    EXPECT_DOUBLE_EQ(valueOf(e), 0.25);
    // The press is over: moving does not drag.
    e.core.mouseMove({180, 10, LEFT_BIT});
    EXPECT_DOUBLE_EQ(valueOf(e), 0.25);
}

TEST(SliderViewTest, APressOnTheSlitBringsTheCapThere) {
    viewtest::Editor e(STRAIGHT);
    e.core.mouseDown({49, 10, LEFT_BIT});  // the pixel's centre is 49.5 px along
    EXPECT_NEAR(valueOf(e), 0.2475, 1e-12);
    e.core.mouseUp({49, 10, LEFT_BIT});
    e.click(100, 0);  // above the slit, beside the cap: nothing
    EXPECT_NEAR(valueOf(e), 0.2475, 1e-12);
}

TEST(SliderViewTest, NearTheSnapValueTheValueSnaps) {
    viewtest::Editor e(STRAIGHT);
    e.host.changeControl("Cutoff", 0.25);
    e.core.mouseDown({50, 10, LEFT_BIT});
    e.core.mouseMove({97, 10, LEFT_BIT});  // 3 px short of the snap point
    EXPECT_DOUBLE_EQ(valueOf(e), 0.5);
    e.core.mouseMove({103, 10, LEFT_BIT});  // 3 px past it
    EXPECT_DOUBLE_EQ(valueOf(e), 0.5);
    e.core.mouseMove({106, 10, LEFT_BIT});  // 6 px past: free again, nothing lost on the way
    EXPECT_NEAR(valueOf(e), 0.53, 1e-12);
    e.core.mouseUp({106, 10, LEFT_BIT});
}

TEST(SliderViewTest, TheHintShowsTheValueLiveWhileDragging) {
    viewtest::Editor e(STRAIGHT);
    e.core.mouseDown({100, 10, LEFT_BIT});
    e.core.mouseMove({150, 10, LEFT_BIT});
    ASSERT_TRUE(e.core.hint().shown());
    EXPECT_EQ(e.core.hint().text(), "Cutoff 0.75");
    e.core.mouseMove({160, 10, LEFT_BIT});
    EXPECT_EQ(e.core.hint().text(), "Cutoff 0.80");
    e.core.mouseUp({160, 10, LEFT_BIT});
}

TEST(SliderViewTest, AChangeRedrawsOnlyWhereTheCapWasAndIs) {
    viewtest::Editor e(STRAIGHT);
    e.core.paint();
    e.host.changeControl("Cutoff", 0.25);  // from outside the editor, as automation does
    e.core.idle();
    const OrlPixels::IntRect redrawn = e.core.paint();
    EXPECT_GE(redrawn.left, 40);
    EXPECT_LE(redrawn.right(), 112);
    // The cap now stands at x = 50.
    EXPECT_EQ(e.core.pixels()[10 * 384 + 50], 0xFFFFFFFFu);
    EXPECT_NE(e.core.pixels()[10 * 384 + 100], 0xFFFFFFFFu);
}

TEST(SliderViewTest, AnArcSliderTurnsWithTheMouseAroundItsCentre) {
    // A quarter circle from the right (0 degrees) clockwise to the bottom.
    viewtest::Editor e(
        "views: { { type: \"arcSlider\", label: \"Wheel\", bounds: { 0, 0, 200, 200 }, center: { 100, 100 }, radius: 80,"
        "           startAngle: 0, sweepAngle: 90, capWidth: 12, capHeight: 12, capStyle: \"ellipse\","
        "           capColor: 0xFFFFFFFF } }");
    auto& slider = static_cast<Fomal::SliderView&>(e.find("Wheel"));
    const Fomal::PointF cap = slider.capCentre(0.5);  // at 45 degrees
    EXPECT_NEAR(cap.x, 100 + 80 * 0.70710678, 1e-4);
    EXPECT_NEAR(cap.y, 100 + 80 * 0.70710678, 1e-4);
    // Off the cap the arc does not take the mouse.
    e.click(180, 100);
    EXPECT_DOUBLE_EQ(e.host.controlValue("Wheel"), 0.5);
    e.core.mouseDown({int(cap.x), int(cap.y), LEFT_BIT});
    e.core.mouseMove({100, 190, LEFT_BIT});  // straight down from the centre: 90 degrees
    EXPECT_NEAR(e.host.controlValue("Wheel"), 1.0, 0.02);
    e.core.mouseMove({190, 100, LEFT_BIT});  // to the right: 0 degrees
    EXPECT_NEAR(e.host.controlValue("Wheel"), 0.0, 0.02);
    e.core.mouseUp({190, 100, LEFT_BIT});
}

TEST(SliderViewTest, AnUnknownCapStyleFails) {
    EXPECT_EQ(viewtest::failureOf("views: { { type: \"slider\", label: \"x\", capStyle: \"round\" } }"), "Unknown capStyle: round");
    EXPECT_EQ(Fomal::parseCapStyle("ellipse"), Fomal::CapStyle::ellipse);
}
