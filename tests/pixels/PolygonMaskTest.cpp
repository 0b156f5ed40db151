#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "pixels/PolygonMask.h"
#include "tests/pixels/PixelTestSupport.h"

using namespace OrlPixels;
using namespace pixeltest;

namespace {

double coverageSum(PolygonMask& mask, const IntRect& r, int strip = MAX_SPAN_REQUEST) {
    const std::vector<Coverage> all = renderRect(mask, r, strip);
    EXPECT_EQ(all.size(), std::size_t(r.width) * r.height);
    double sum = 0;
    for (Coverage c : all) sum += c;
    return sum / 255.0;
}

double shoelace(const Polygon& p) {
    double a = 0;
    for (std::size_t i = 0; i < p.edgeCount(); ++i) {
        const Point& s = p.point(2 * i);
        const Point& e = p.point(2 * i + 1);
        a += s.x * e.y - e.x * s.y;
    }
    return std::fabs(a) / 2;
}

Polygon star(double cx, double cy, double outer, double inner, int points) {
    Polygon p;
    for (int i = 0; i < 2 * points; ++i) {
        const double r = i % 2 == 0 ? outer : inner;
        const double a = i * 3.141592653589793 / points;
        if (i == 0)
            p.moveTo(cx + r * std::sin(a), cy - r * std::cos(a));
        else
            p.lineTo(cx + r * std::sin(a), cy - r * std::cos(a));
    }
    p.close(0);
    return p;
}

}  // namespace

TEST(PolygonMaskCoverage, IntegratesToTheExactAreaOfThePolygon) {
    const Polygon shapes[] = {star(300.3, 150.7, 140, 55, 5), star(60.1, 60.9, 40.25, 33.3, 9)};
    for (const Polygon& p : shapes) {
        PolygonMask mask(p, IntRect(0, 0, 600, 300));
        const double area = shoelace(p);
        const double measured = coverageSum(mask, IntRect(0, 0, 600, 300));
        // Each pixel's byte truncates by less than 1/255; the total stays within a small error.
        EXPECT_NEAR(measured, area, area * 0.004);
    }
    Polygon square;
    square.addRectangle(10.25, 20.5, 100.5, 30.25);
    PolygonMask mask(square, IntRect(0, 0, 200, 100));
    EXPECT_NEAR(coverageSum(mask, IntRect(0, 0, 200, 100)), 100.5 * 30.25, 100.5 * 30.25 * 0.004);
}

TEST(PolygonMaskCoverage, StripWidthDoesNotChangeTheResult) {
    // Edges that run on past a strip's last column must still cover it.
    Polygon p = star(320.5, 130.25, 125, 40, 6);
    const IntRect area(0, 0, 640, 260);
    PolygonMask a(p, area);
    PolygonMask b(p, area);
    PolygonMask c(p, area);
    const std::vector<Coverage> wide = renderRect(a, area);
    const std::vector<Coverage> narrow = renderRect(b, area, 37);
    const std::vector<Coverage> single = renderRect(c, area, 1);
    ASSERT_EQ(wide.size(), narrow.size());
    ASSERT_EQ(wide.size(), single.size());
    int worstNarrow = 0, worstSingle = 0, firstBad = -1;
    for (std::size_t i = 0; i < wide.size(); ++i) {
        worstNarrow = std::max(worstNarrow, std::abs(int(wide[i]) - int(narrow[i])));
        const int d = std::abs(int(wide[i]) - int(single[i]));
        if (d > worstSingle && firstBad < 0 && d > 1) firstBad = int(i);
        worstSingle = std::max(worstSingle, d);
    }
    EXPECT_EQ(worstNarrow, 0);
    // One-column strips take the share left of the strip in one product,
    // which may round one level apart from the column-by-column sum.
    EXPECT_LE(worstSingle, 1) << "first at x " << firstBad % 640 << " y " << firstBad / 640;
}

TEST(PolygonMaskCoverage, FullInteriorIsHandedUpAsOneOpaqueSolidSpan) {
    Polygon p;
    p.addRectangle(2, 0, 100, 10);
    PolygonMask mask(p, IntRect(0, 0, 120, 10));
    std::vector<MaskSpan> spans;
    std::vector<Coverage> row = renderRow(mask, 0, 5, 120, &spans);
    ASSERT_EQ(row.size(), 120u);
    // Solid 0, the left edge's column, one solid full run up to the bounds, solid 0.
    ASSERT_EQ(spans.size(), 4u);
    EXPECT_TRUE(spans[0].solid());
    EXPECT_FALSE(spans[1].solid());
    EXPECT_TRUE(spans[2].solid());
    EXPECT_TRUE(spans[2].opaque());
    EXPECT_EQ(spans[2].length(), 99);
    EXPECT_EQ(*spans[2].data, 255);
    EXPECT_TRUE(spans[3].solid());
    EXPECT_EQ(*spans[3].data, 0);
}

TEST(PolygonMaskCoverage, SharedPointsAreConvertedOnceSoChainsHaveNoCracks) {
    // A fan of triangles meeting at points with awkward fractions: every
    // interior pixel must be exactly full.
    Polygon p;
    const double cx = 50.5 + 1.0 / 1024, cy = 50.5 - 1.0 / 512;
    const int n = 13;
    for (int i = 0; i < n; ++i) {
        const double a0 = i * 2 * 3.141592653589793 / n;
        const double a1 = (i + 1) * 2 * 3.141592653589793 / n;
        p.moveTo(cx, cy);
        p.lineTo(cx + 40 * std::cos(a0), cy + 40 * std::sin(a0));
        p.lineTo(cx + 40 * std::cos(a1), cy + 40 * std::sin(a1));
        p.lineTo(cx, cy);
    }
    PolygonMask mask(p, IntRect(0, 0, 101, 101));
    const std::vector<Coverage> all = renderRect(mask, IntRect(0, 0, 101, 101));
    ASSERT_EQ(all.size(), 101u * 101u);
    int cracks = 0;
    for (int y = 30; y < 71; ++y)
        for (int x = 30; x < 71; ++x) cracks += all[std::size_t(y) * 101 + x] != 255;
    EXPECT_EQ(cracks, 0);

    // The conversion of a shared start is the previous end's, by value.
    Polygon chain;
    chain.moveTo(0.3, 0.3);
    chain.lineTo(10.00195, 5.5);
    chain.lineTo(3, 20);
    PolygonMask chained(chain, IntRect(0, 0, 30, 30));
    ASSERT_EQ(chained.edgeCount(), 2u);
    const PolygonEdge& e0 = chained.edges()[0];
    const PolygonEdge& e1 = chained.edges()[1];
    EXPECT_EQ(e0.bottom, e1.top);
    EXPECT_EQ(e1.top, 1408);                      // 5.5 * 256
    EXPECT_EQ(e1.startX >> 32, std::int64_t(2560));  // floor(10.00195 * 256 + 0.5)
}

TEST(PolygonMaskCoverage, EdgeLeftOfTheClipStillFillsTheInterior) {
    Polygon p;
    p.addRectangle(-50, 2, 80, 4);  // the left edge lies left of the clip
    PolygonMask mask(p, IntRect(0, 0, 40, 10));
    ASSERT_EQ(mask.edgeCount(), 2u);  // both vertical edges kept, the horizontal ones dropped
    std::vector<Coverage> row = renderRow(mask, 0, 3, 40);
    ASSERT_EQ(row.size(), 40u);
    for (int x = 0; x < 30; ++x) EXPECT_EQ(row[x], 255) << x;
    for (int x = 30; x < 40; ++x) EXPECT_EQ(row[x], 0) << x;
}

TEST(PolygonMaskCoverage, OverlappingContoursWithTheSameWindingClampAt255) {
    Polygon p;
    p.addRectangle(0, 0, 20, 20);
    p.addRectangle(5, 5, 20, 20);
    p.addRectangle(8, 8, 4, 4);
    PolygonMask mask(p, IntRect(0, 0, 30, 30));
    std::vector<Coverage> row = renderRow(mask, 0, 10, 30);
    ASSERT_EQ(row.size(), 30u);
    EXPECT_EQ(row[10], 255);  // three layers
    EXPECT_EQ(row[6], 255);   // two layers
    PolygonMask evenOdd(p, IntRect(0, 0, 30, 30), evenOddFillRule);
    row = renderRow(evenOdd, 0, 10, 30);
    EXPECT_EQ(row[10], 255);  // three layers: odd
    EXPECT_EQ(row[6], 0);     // two layers: even
    EXPECT_EQ(row[2], 255);
}

TEST(PolygonMaskCoverage, ClipOfWidthOneUsesTwoCellsSafely) {
    Polygon p;
    p.moveTo(-3.2, 0);
    p.lineTo(7.7, 10);
    p.lineTo(-3.2, 10);
    p.close(0);
    PolygonMask mask(p, IntRect(2, 0, 1, 10));
    IntRect b;
    mask.calcBounds(b);
    EXPECT_EQ(b.width, 1);
    int total = 0;
    for (int y = 0; y < 10; ++y) {
        // Consumers may ask for more than the clip; only the clip is worked out.
        std::vector<Coverage> row = renderRow(mask, 0, y, 8);
        ASSERT_EQ(row.size(), 8u);
        EXPECT_EQ(row[0], 0);
        EXPECT_EQ(row[3], 0);
        total += row[2];
    }
    // The column from x 2 to 3 lies below the diagonal for 10 - 5.23 rows.
    EXPECT_NEAR(total, (10 - (4.77 + 5.69) / 2) * 255, 12);
}

TEST(PolygonMaskCoverage, HorizontalEdgesAreDroppedAndAddNothing) {
    Polygon flat;
    flat.addLine(0, 5, 30, 5);
    flat.addLine(30, 5.001, 0, 5.001);  // rounds to the same 24.8 row
    PolygonMask mask(flat, IntRect(0, 0, 40, 10));
    EXPECT_EQ(mask.edgeCount(), 0u);
    std::vector<Coverage> row = renderRow(mask, 0, 5, 40);
    ASSERT_EQ(row.size(), 40u);
    for (Coverage c : row) EXPECT_EQ(c, 0);
    Polygon empty;
    PolygonMask none(empty, IntRect(0, 0, 10, 10));
    IntRect b;
    none.calcBounds(b);
    EXPECT_TRUE(b.isEmpty());
}

TEST(PolygonMaskCoverage, EdgeRecordsHoldExactSlopeAndCoverageStep) {
    Polygon p;
    p.addLine(0, 0, 3, 2);    // down and right: dx 768, dy 512
    p.addLine(1, 10, 1, 4);   // vertical, upward
    PolygonMask mask(p, IntRect(0, 0, 20, 20));
    ASSERT_EQ(mask.edgeCount(), 2u);
    const PolygonEdge& e = mask.edges()[0];
    EXPECT_EQ(e.slope, std::int64_t(0x180000000LL));  // 1.5
    EXPECT_EQ(e.coverageStep, 0xAAAA);               // 2/3 in 16.16, truncated
    const PolygonEdge& v = mask.edges()[1];
    EXPECT_EQ(v.slope, 0);
    EXPECT_EQ(v.coverageStep, -0x8000);
    EXPECT_EQ(v.top, 4 * 256);
    EXPECT_EQ(v.bottom, 10 * 256);
}

TEST(PolygonMaskCoverage, EdgeStartingAboveTheClipIsCutAtTheClipTop) {
    Polygon p;
    p.addLine(0, -10, 10, 10);
    PolygonMask mask(p, IntRect(0, 0, 20, 20));
    ASSERT_EQ(mask.edgeCount(), 1u);
    EXPECT_EQ(mask.edges()[0].top, 0);
    EXPECT_EQ(mask.edges()[0].startX >> 32, 5 * 256);
}

TEST(PolygonMaskCoverage, AnyCoordinatesOutsideTheBoundsGiveOneSolidZero) {
    Polygon p;
    p.addRectangle(10, 10, 5, 5);
    PolygonMask mask(p, IntRect(0, 0, 100, 100));
    std::vector<MaskSpan> spans;
    renderRow(mask, -1000, 2, 50, &spans);
    ASSERT_EQ(spans.size(), 1u);
    EXPECT_EQ(*spans[0].data, 0);
    spans.clear();
    renderRow(mask, 20, 12, 50, &spans);
    ASSERT_EQ(spans.size(), 1u);
}
