#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

#include "pixels/Polygon.h"

using namespace OrlPixels;

TEST(PolygonStorage, LinesStoreSharedPointsTwiceAndMovesReplaceAPendingStart) {
    Polygon p;
    p.moveTo(1, 1);
    p.moveTo(2, 2);  // replaces the pending start
    EXPECT_EQ(p.pointCount(), 1u);
    p.lineTo(5, 2);
    p.lineTo(5, 6);
    ASSERT_EQ(p.pointCount(), 4u);
    EXPECT_EQ(p.point(0), (Point{2, 2}));
    EXPECT_EQ(p.point(1), (Point{5, 2}));
    EXPECT_EQ(p.point(2), (Point{5, 2}));
    EXPECT_EQ(p.point(3), (Point{5, 6}));
    EXPECT_EQ(p.edgeCount(), 2u);
    p.moveTo(9, 9);
    EXPECT_EQ(p.pointCount(), 5u);
    EXPECT_EQ(p.edgeCount(), 2u);  // whole edges only
    p.close(0);
    EXPECT_EQ(p.point(5), (Point{2, 2}));
    EXPECT_THROW(p.close(100), std::length_error);
}

TEST(PolygonStorage, RectangleIsFourClockwiseEdges) {
    Polygon p;
    p.addRectangle(1, 2, 3, 4);
    ASSERT_EQ(p.edgeCount(), 4u);
    EXPECT_EQ(p.point(1), (Point{4, 2}));
    EXPECT_EQ(p.point(3), (Point{4, 6}));
    EXPECT_EQ(p.point(5), (Point{1, 6}));
    EXPECT_EQ(p.point(7), (Point{1, 2}));
    const PolygonBounds b = p.calcBounds();
    EXPECT_EQ(b.left, 1);
    EXPECT_EQ(b.bottom, 6);
}

TEST(PolygonCurves, BigCircleHasOneHundredSegmentsAndSmallOnesFewer) {
    Polygon big;
    big.addCircle(0, 0, 1000);
    EXPECT_EQ(big.edgeCount(), 100u);
    EXPECT_EQ(big.point(0), (Point{1000, 0}));
    EXPECT_EQ(big.point(199), big.point(0));  // closed
    Polygon small;
    small.addCircle(0, 0, 4);  // step 0.5 rad: 12 lines and the close
    EXPECT_EQ(small.edgeCount(), 13u);
    Polygon coarse;
    coarse.addCircle(0, 0, 4, 0.5);  // quality halves the segments: step 1 rad
    EXPECT_EQ(coarse.edgeCount(), 7u);
    for (std::size_t i = 0; i < small.pointCount(); ++i)
        EXPECT_NEAR(std::hypot(small.point(i).x, small.point(i).y), 4, 1e-9);
}

TEST(PolygonCurves, ArcsEndExactlyAtTheirEndAngleOrClose) {
    Polygon arc;
    arc.addArc(10, 10, 5, 5, 0, 1.5);
    const Point end = arc.point(arc.pointCount() - 1);
    EXPECT_DOUBLE_EQ(end.x, 10 + 5 * std::cos(1.5));
    EXPECT_DOUBLE_EQ(end.y, 10 + 5 * std::sin(1.5));
    Polygon back;
    back.addArc(0, 0, 10, 10, 0, -1.0);
    EXPECT_LT(back.point(1).y, 0);  // negative sweep turns the other way
    Polygon full;
    full.addArc(0, 0, 10, 10, 0.25, 6.283185307179586);
    EXPECT_EQ(full.point(full.pointCount() - 1), full.point(0));
}

TEST(PolygonTransform, SharedPointsStayShared) {
    Polygon p;
    p.moveTo(0.1, 0.2);
    p.lineTo(3.3, 4.4);
    p.lineTo(-1.7, 9.9);
    p.transform(AffineTransformation::rotation(0.7).then(AffineTransformation::scaling(1.3, 0.3)));
    EXPECT_EQ(p.point(1), p.point(2));
    AffineTransformation inv;
    EXPECT_FALSE(AffineTransformation(1, 2, 0, 2, 4, 0).invert(inv));
    EXPECT_TRUE(AffineTransformation(2, 0, 5, 0, 4, 1).invert(inv));
    double x = 7, y = 9;
    inv.apply(x, y);
    EXPECT_DOUBLE_EQ(x, 1);
    EXPECT_DOUBLE_EQ(y, 2);
}
