#include <gtest/gtest.h>

#include "pixels/TransformedRaster.h"
#include "tests/pixels/PixelTestSupport.h"

using namespace OrlPixels;
using namespace pixeltest;

namespace {

struct Checker {
    std::vector<Pixel> pixels;
    PixelBlock block;
    Checker(int w, int h) : pixels(std::size_t(w) * h) {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) pixels[std::size_t(y) * w + x] = 0xFF000000u | Pixel(y * 16 + x);
        block.pixels = pixels.data();
        block.stride = w;
        block.width = w;
        block.height = h;
        block.opaque = true;
    }
};

}  // namespace

TEST(TransformedRasterBehaviour, FixedPointKeepsChainedWholeNumbersWhole) {
    EXPECT_EQ(TransformedRaster::toFixed(1.0), std::int64_t(1) << 32);
    EXPECT_EQ(TransformedRaster::toFixed(0.9999999999999999), std::int64_t(1) << 32);
    EXPECT_EQ(TransformedRaster::toFixed(-1.0), -(std::int64_t(1) << 32));
    EXPECT_EQ(TransformedRaster::toFixed(2.5), (std::int64_t(2) << 32) + 0x80000000LL);
    EXPECT_EQ(TransformedRaster::toFixed(-0.25), -(std::int64_t(1) << 32) + 0xC0000000LL);
}

TEST(TransformedRasterBehaviour, ClassesFollowTheCoefficients) {
    Checker c(8, 8);
    EXPECT_EQ(TransformedRaster(c.block, AffineTransformation::translation(3, -2), false).transformationClass(), 1);
    EXPECT_EQ(TransformedRaster(c.block, AffineTransformation(0, 1, 0, 1, 0, 0), false).transformationClass(), 2);
    EXPECT_EQ(TransformedRaster(c.block, AffineTransformation::scaling(2, 3), false).transformationClass(), 3);
    // Fractions in the x row only: a shear in y that is whole, x scale 3 inverts to 1/3.
    EXPECT_EQ(TransformedRaster(c.block, AffineTransformation(1, 0.5, 0, 0, 1, 0), false).transformationClass(), 4);
    EXPECT_EQ(TransformedRaster(c.block, AffineTransformation(1, 0, 0, 0, 4, 0), false).transformationClass(), 5);
    EXPECT_EQ(TransformedRaster(c.block, AffineTransformation::rotation(0.3), false).transformationClass(), 6);
    EXPECT_EQ(TransformedRaster(c.block, AffineTransformation(1, 2, 0, 2, 4, 0), false).transformationClass(), 0);
    PixelBlock empty;
    EXPECT_EQ(TransformedRaster(empty, AffineTransformation(), false).transformationClass(), 0);
    // A translation fraction below the filter's 8 bits still counts as whole.
    EXPECT_EQ(TransformedRaster(c.block, AffineTransformation::translation(-1e-4, 0), false).transformationClass(), 1);
}

TEST(TransformedRasterBehaviour, WholeTranslationCopiesExactly) {
    Checker c(8, 6);
    TransformedRaster moved(c.block, AffineTransformation::translation(10, 20), false);
    std::vector<Pixel> row = renderRow(moved, 0, 22, 30);
    ASSERT_EQ(row.size(), 30u);
    for (int x = 10; x < 18; ++x) EXPECT_EQ(row[x], c.pixels[2 * 8 + (x - 10)]) << x;
    EXPECT_EQ(row[9], 0u);
    EXPECT_EQ(row[18], 0u);
}

TEST(TransformedRasterBehaviour, HalfPixelShiftAveragesNeighbours) {
    std::vector<Pixel> two = {0xFF000000u, 0xFFFFFFFFu};
    PixelBlock b;
    b.pixels = two.data();
    b.stride = 2;
    b.width = 2;
    b.height = 1;
    TransformedRaster half(b, AffineTransformation::translation(-0.5, 0), false);
    std::vector<Pixel> row = renderRow(half, 0, 0, 2);
    ASSERT_EQ(row.size(), 2u);
    EXPECT_EQ(row[0], lerpPixel(0xFF000000u, 0xFFFFFFFFu, 128));
}

TEST(TransformedRasterBehaviour, WrapTilesAlsoAtNegativeCoordinates) {
    Checker c(4, 3);
    TransformedRaster tiled(c.block, AffineTransformation(), true);
    IntRect b;
    tiled.calcBounds(b);
    EXPECT_EQ(b, INFINITE_RECT);
    std::vector<Pixel> row = renderRow(tiled, -5, -1, 10);
    ASSERT_EQ(row.size(), 10u);
    // x -5 wraps to 4 - (-1 - -5) % 4 - 1 = 3; y -1 wraps to row 2.
    EXPECT_EQ(row[0], c.pixels[2 * 4 + 3]);
    EXPECT_EQ(row[1], c.pixels[2 * 4 + 0]);
    EXPECT_EQ(row[5], c.pixels[2 * 4 + 0]);
}

TEST(TransformedRasterBehaviour, UntouchedStretchesAreSolidZeroSpans) {
    Checker c(4, 4);
    TransformedRaster far(c.block, AffineTransformation::translation(600, 0), false);
    std::vector<Span> spans;
    std::vector<Pixel> row = renderRow(far, 0, 1, 256, &spans);
    ASSERT_EQ(row.size(), 256u);
    ASSERT_EQ(spans.size(), 1u);
    EXPECT_TRUE(spans[0].solid());
    spans.clear();
    TransformedRaster near(c.block, AffineTransformation::translation(100, 0), false);
    row = renderRow(near, 0, 1, 256, &spans);
    ASSERT_EQ(spans.size(), 3u);
    EXPECT_EQ(spans[0].length(), 99);  // x 99 samples source -1: its right neighbour is inside
    EXPECT_EQ(row[100], c.pixels[4]);
    TransformedRaster none(c.block, AffineTransformation(0, 0, 0, 0, 0, 0), false);
    spans.clear();
    renderRow(none, 0, 0, 16, &spans);
    ASSERT_EQ(spans.size(), 1u);
}
