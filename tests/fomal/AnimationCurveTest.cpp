#include "fomal/AnimationCurve.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Fomal;

TEST(AnimationCurveTest, EndsAreFixedForEveryShape) {
    for (double c : {0.0, 0.1, 0.5, 0.9, 1.0}) {
        EXPECT_EQ(animationCurve(0, c), 0.0) << c;
        EXPECT_EQ(animationCurve(1, c), 1.0) << c;
    }
}

TEST(AnimationCurveTest, HalfIsLinearSmallerStartsSlowlyLargerQuickly) {
    EXPECT_DOUBLE_EQ(animationCurve(0.25, 0.5), 0.25);
    // c = 0.9 at t = 0.5: 0.45 / (0.8 * 0.5 + 0.1) = 0.9.
    EXPECT_DOUBLE_EQ(animationCurve(0.5, 0.9), 0.9);
    // c = 0.1 at t = 0.5: 0.05 / (-0.4 + 0.9) = 0.1.
    EXPECT_DOUBLE_EQ(animationCurve(0.5, 0.1), 0.1);
    EXPECT_LT(animationCurve(0.3, 0.2), 0.3);
    EXPECT_GT(animationCurve(0.3, 0.8), 0.3);
}

TEST(AnimationCurveTest, PoseAtTheFarEndAndAtRest) {
    AnimationEnds about;  // the about page's opening
    about.zoomStart = 0.75;
    about.zoomCurve = 0.9;
    about.alphaStart = 0.0;
    about.alphaCurve = 0.75;
    const AnimationPose far = animationPose(about, 0.0);
    EXPECT_FALSE(far.atRest);
    EXPECT_EQ(far.alpha, 0);
    EXPECT_DOUBLE_EQ(far.zoom, 0.75);
    const AnimationPose rest = animationPose(about, 1.0);
    EXPECT_TRUE(rest.atRest);
    EXPECT_EQ(rest.alpha, 256);
    EXPECT_DOUBLE_EQ(rest.zoom, 1.0);
    // Halfway: alpha 255.99999 * f(0.5, 0.75) = 255.99999 * 0.75, truncated.
    EXPECT_EQ(animationPose(about, 0.5).alpha, 191);
}

TEST(AnimationCurveTest, ZeroZoomCollapsesTheViewToAPoint) {
    AnimationEnds e;
    e.zoomStart = 0.0;
    EXPECT_TRUE(animationPose(e, 0.0).drawsNothing);
    EXPECT_FALSE(animationPose(e, 0.5).drawsNothing);
}

TEST(AnimationCurveTest, OffsetAndRotationRunBackToRest) {
    AnimationEnds tutorial;
    tutorial.offsetStartY = 512;
    tutorial.offsetCurve = 0.9;
    tutorial.rotationStartDegrees = 90;
    EXPECT_DOUBLE_EQ(animationPose(tutorial, 0.0).offsetY, 512);
    EXPECT_NEAR(animationPose(tutorial, 0.5).offsetY, 512 * (1 - 0.9), 1e-9);
    EXPECT_NEAR(animationPose(tutorial, 0.0).rotation, 90 * 0.01745329252, 1e-12);
    EXPECT_DOUBLE_EQ(animationPose(tutorial, 0.5).offsetX, 0.0);
}
