#include "fomal/ViewAnimation.h"

#include <gtest/gtest.h>

#include "ViewTestSupport.h"

namespace {

using namespace Fomal;

TEST(ViewAnimationTest, TheParametersAndTheirDefaults) {
    const AnimationRequest r = readAnimationRequest(
        "{ type: \"out\", time: 0.25, offsetStart: { 0, -40 }, zoomStart: 0.0, alphaStart: 0.5, finally: \"closeView\" }");
    EXPECT_FALSE(r.in);
    EXPECT_FALSE(r.reset);
    EXPECT_DOUBLE_EQ(r.timeMs, 250.0);
    EXPECT_DOUBLE_EQ(r.updateFreq, 20.0);
    EXPECT_DOUBLE_EQ(r.ends.offsetStartY, -40.0);
    EXPECT_DOUBLE_EQ(r.ends.zoomStart, 0.0);
    EXPECT_DOUBLE_EQ(r.ends.offsetCurve, 0.5);
    EXPECT_DOUBLE_EQ(r.ends.rotationStartDegrees, 0.0);
    EXPECT_EQ(r.finallyAction, "closeView");
}

TEST(ViewAnimationTest, AnInRunsFromTheFarEndToRestTickByTick) {
    ViewAnimation a;
    AnimationRequest r = readAnimationRequest("{ type: \"in\", time: 0.2, updateFreq: 20 }");
    a.start(r, 1000);
    EXPECT_TRUE(a.running());
    EXPECT_DOUBLE_EQ(a.t(), 0.0);
    EXPECT_FALSE(a.advance(1049));
    EXPECT_DOUBLE_EQ(a.t(), 0.0);
    EXPECT_FALSE(a.advance(1050));  // one tick of 50 ms over 200
    EXPECT_DOUBLE_EQ(a.t(), 0.25);
    EXPECT_FALSE(a.advance(1150));
    EXPECT_DOUBLE_EQ(a.t(), 0.75);
    EXPECT_TRUE(a.advance(1200));
    EXPECT_DOUBLE_EQ(a.t(), 1.0);
    EXPECT_FALSE(a.running());
    EXPECT_TRUE(a.pose().atRest);
}

TEST(ViewAnimationTest, AnOutRunsFromRestDownToTheFarEnd) {
    ViewAnimation a;
    a.start(readAnimationRequest("{ type: \"out\", time: 0.1, alphaStart: 0 }"), 0);
    EXPECT_DOUBLE_EQ(a.t(), 1.0);
    EXPECT_FALSE(a.advance(50));
    EXPECT_DOUBLE_EQ(a.t(), 0.5);
    EXPECT_EQ(a.pose().alpha, 127);  // 255.99999 * 0.5, truncated
    EXPECT_TRUE(a.advance(100));
    EXPECT_EQ(a.pose().alpha, 0);
}

TEST(ViewAnimationTest, WithoutResetAnAnimationGoesOnFromWhereItStands) {
    ViewAnimation a;
    a.start(readAnimationRequest("{ type: \"in\", time: 0.2 }"), 0);
    a.advance(100);
    EXPECT_DOUBLE_EQ(a.t(), 0.5);
    a.start(readAnimationRequest("{ type: \"out\", time: 0.2 }"), 100);
    EXPECT_DOUBLE_EQ(a.t(), 0.5);
    // An "in" with reset restarts at once from the far end.
    a.start(readAnimationRequest("{ type: \"in\", time: 0.2, reset: true }"), 100);
    EXPECT_DOUBLE_EQ(a.t(), 0.0);
}

TEST(ViewAnimationTest, FinallyRunsOnTheViewWhenTheAnimationEnds) {
    viewtest::Editor e(
        "views: { { type: \"rectangle\", label: \"box\", bounds: { 100, 100, 40, 40 }, fill: 0xFFFFFFFF,"
        "  triggers: { { when: \"closefx\", action: \"animate\","
        "              params: { type: \"out\", time: 0.1, zoomStart: 0.0, finally: \"closeView\" } } } } }");
    e.core.paint();
    e.core.actions().perform(e.root(), "trigger", "{ what: \"closefx\", label: \"box\" }", false);
    e.wait(60);
    ASSERT_NE(e.root().findView("box"), nullptr);
    // Half way the box is drawn at half its size about its centre.
    e.core.paint();
    EXPECT_EQ(e.core.pixels()[120 * 384 + 120], 0xFFFFFFFFu);
    EXPECT_EQ(e.core.pixels()[102 * 384 + 102], 0xFF000000u);
    e.wait(50);
    EXPECT_EQ(e.root().findView("box"), nullptr);
    e.core.paint();
    EXPECT_EQ(e.core.pixels()[120 * 384 + 120], 0xFF000000u);
}

TEST(ViewAnimationTest, ZeroZoomDrawsNothingAtTheFarEnd) {
    viewtest::Editor e("views: { { type: \"rectangle\", label: \"box\", bounds: { 100, 100, 40, 40 }, fill: 0xFFFFFFFF } }");
    e.core.actions().perform(e.find("box"), "animate", "{ type: \"in\", time: 1, zoomStart: 0.0 }", false);
    e.core.paint();
    EXPECT_EQ(e.core.pixels()[120 * 384 + 120], 0xFF000000u);
    e.wait(1000);
    e.core.paint();
    EXPECT_EQ(e.core.pixels()[101 * 384 + 101], 0xFFFFFFFFu);
}

}  // namespace
