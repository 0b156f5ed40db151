#include <gtest/gtest.h>

#include <cmath>

#include "pixels/ColorTable.h"
#include "pixels/LinearRampMask.h"
#include "pixels/LookupRaster.h"
#include "pixels/RadialRampMask.h"
#include "pixels/SolidMask.h"
#include "pixels/SolidRaster.h"
#include "tests/pixels/PixelTestSupport.h"

using namespace OrlPixels;
using namespace pixeltest;

TEST(GradientTable, SingleStopGivesAConstantTable) {
    const ColorTable t = buildGradientTable({{0.3, 0xFF336699u}});
    for (int i = 0; i < 256; ++i) EXPECT_EQ(t.entries[i], 0xFF336699u) << i;
    EXPECT_TRUE(t.opaque);
}

TEST(GradientTable, CoincidentStopsGiveAHardStepAtTheirIndex) {
    // 0.5 * 255 + 0.5 truncates to 128.
    const ColorTable t = buildGradientTable({{0.0, 0xFF000000u}, {0.5, 0xFF000000u}, {0.5, 0xFFFFFFFFu}, {1.0, 0xFFFFFFFFu}});
    for (int i = 0; i < 128; ++i) EXPECT_EQ(t.entries[i], 0xFF000000u) << i;
    for (int i = 128; i < 256; ++i) EXPECT_EQ(t.entries[i], 0xFFFFFFFFu) << i;
}

TEST(GradientTable, TwoStopsBlendWithTheTableWeights) {
    const ColorTable t = buildGradientTable({{0.0, 0xFF000000u}, {1.0, 0xFFFF00FFu}});
    // Segment [0, 255): step = 0x40000000 / 255; t = (i * step) >> 22.
    const std::int32_t step = 0x40000000 / 255;
    for (int i : {0, 1, 100, 200, 254}) {
        const std::uint32_t w = std::uint32_t((std::int64_t(i) * step) >> 22);
        EXPECT_EQ(t.entries[i], lerpPixel(0xFF000000u, 0xFFFF00FFu, w)) << i;
    }
    // The trailing stop at 256 makes the last index its own segment.
    EXPECT_EQ(t.entries[255], 0xFFFF00FFu);
    EXPECT_TRUE(t.opaque);
    const ColorTable fading = buildGradientTable({{0.0, 0xFF000000u}, {1.0, 0u}});
    EXPECT_FALSE(fading.opaque);
}

TEST(LinearRamp, CutsARowIntoZeroRampAndFull) {
    LinearRampMask ramp(10, 0, 20, 0);  // 0 at x 10, full at x 20
    EXPECT_DOUBLE_EQ(ramp.stepX(), 6553.6);
    std::vector<MaskSpan> spans;
    std::vector<Coverage> row = renderRow(ramp, 0, 3, 40, &spans);
    ASSERT_EQ(row.size(), 40u);
    ASSERT_EQ(spans.size(), 3u);
    EXPECT_TRUE(spans[0].solid());
    EXPECT_EQ(spans[0].length(), 11);  // value <= 0 up to and including x 10
    EXPECT_FALSE(spans[1].solid());
    EXPECT_TRUE(spans[2].solid());
    EXPECT_TRUE(spans[2].opaque());
    // The start value once, then whole steps: -65536 + 15 * 6553.
    EXPECT_EQ(row[15], Coverage((-65536 + 15 * 6553) >> 8));
    EXPECT_EQ(row[39], 255);
}

TEST(LinearRamp, VerticalRampGivesOneSolidSpanPerRow) {
    LinearRampMask ramp(0, 0, 0, 100);
    std::vector<MaskSpan> spans;
    std::vector<Coverage> row = renderRow(ramp, 0, 50, 30, &spans);
    ASSERT_EQ(spans.size(), 1u);
    EXPECT_TRUE(spans[0].solid());
    EXPECT_EQ(row[0], Coverage(std::int64_t(std::trunc(50 * 655.36)) >> 8));
    LinearRampMask point(5, 5, 5, 5);  // zero length: the factor stays 0
    row = renderRow(point, 0, 0, 10);
    EXPECT_EQ(row[9], 0);
}

TEST(LookupRasterBehaviour, MapsRawAndSolidSpansAndFollowsTheOpaqueByte) {
    const ColorTable t = buildGradientTable({{0.0, 0u}, {1.0, 0xFFFFFFFFu}});
    LinearRampMask ramp(0, 0, 10, 0);
    LookupRaster lookup(ramp, &t);
    IntRect b;
    lookup.calcBounds(b);
    EXPECT_EQ(b, INFINITE_RECT);  // the ramp is infinite
    std::vector<Span> spans;
    std::vector<Pixel> row = renderRow(lookup, -5, 0, 20, &spans);
    ASSERT_EQ(row.size(), 20u);
    EXPECT_EQ(row[0], 0u);
    EXPECT_EQ(row[19], 0xFFFFFFFFu);
    EXPECT_TRUE(spans.back().solid());
    EXPECT_TRUE(spans.back().opaque());
    EXPECT_FALSE(spans[1].opaque());  // the table is not all opaque

    const ColorTable solid = buildGradientTable({{0.0, 0xFF0000FFu}, {1.0, 0xFFFF0000u}});
    SolidMask half(128);
    LookupRaster constant(half, &solid);
    spans.clear();
    row = renderRow(constant, 0, 0, 8, &spans);
    ASSERT_EQ(spans.size(), 1u);
    EXPECT_EQ(row[0], solid.entries[128]);
    EXPECT_TRUE(spans[0].opaque());
}

TEST(RadialRamp, TableAndValuesFromCentreToRim) {
    const unsigned char* t = RadialRampMask::table();
    EXPECT_EQ(t[0], 255);
    EXPECT_EQ(t[4095], 0);
    EXPECT_EQ(t[1024], 255 - int(std::floor(std::sqrt(1024 / 4095.0) * 255 + 0.5)));
    RadialRampMask glow(50, 50, 20, 10);
    IntRect b;
    glow.calcBounds(b);
    EXPECT_EQ(b, IntRect(30, 40, 40, 20));
    std::vector<Coverage> row = renderRow(glow, 0, 49, 100);
    ASSERT_EQ(row.size(), 100u);
    // Half a pixel off in y is 1/20 of the radius there: 255 * 0.95.
    EXPECT_EQ(row[49], 242);
    EXPECT_EQ(row[50], 242);
    EXPECT_EQ(row[10], 0);
    EXPECT_EQ(row[80], 0);
    // Falls off monotonically to the rim.
    for (int x = 50; x < 69; ++x) EXPECT_GE(row[x], row[x + 1]) << x;
    // Far rows are one solid 0.
    std::vector<MaskSpan> spans;
    renderRow(glow, 0, 5, 100, &spans);
    ASSERT_EQ(spans.size(), 1u);
    EXPECT_EQ(*spans[0].data, 0);
}

TEST(RadialRamp, NegativeRadiiAreTakenByMagnitude) {
    RadialRampMask a(20, 20, 8, 6);
    RadialRampMask b(20, 20, -8, -6);
    EXPECT_EQ(renderRect(a, IntRect(0, 0, 40, 40)), renderRect(b, IntRect(0, 0, 40, 40)));
}

#include "pixels/Gradient.h"
#include "pixels/Opacity.h"

TEST(GradientViews, LinearGradientIsClippedToTheViewRectangle) {
    LinearGradient g(IntRect(2, 0, 6, 4), 2, 0, 8, 0, {{0.0, 0xFF000000u}, {1.0, 0xFFFFFFFFu}});
    IntRect b;
    g.calcBounds(b);
    EXPECT_EQ(b, IntRect(2, 0, 6, 4));
    std::vector<Pixel> row = renderRow(g, 0, 1, 10);
    ASSERT_EQ(row.size(), 10u);
    EXPECT_EQ(row[1], 0u);
    EXPECT_EQ(row[2], 0xFF000000u);
    EXPECT_EQ(row[8], 0u);
    EXPECT_GT(row[7] & 0xFF, row[3] & 0xFF);
}

TEST(Opacity, PercentBecomesAMaskValue) {
    EXPECT_EQ(opacityMaskValue(opacityFromPercent(100)), 255);
    EXPECT_EQ(opacityMaskValue(opacityFromPercent(50)), 127);  // trunc(0.5 * 255.99999)
    EXPECT_EQ(opacityMaskValue(opacityFromPercent(0)), 0);
    Canvas canvas(2, 1, 0xFF000000u);
    SolidRaster white(0xFFFFFFFFu);
    drawWithOpacity(canvas.surface, white, opacityFromPercent(50), NORMAL_MODE);
    EXPECT_EQ(canvas.at(0, 0), overPixel(scalePixel(0xFFFFFFFFu, 128), 0xFF000000u));
}
