// The plant's line painter: the coverage table of a gamma, the two pixels a
// step touches with the fraction and its complement, both axes, clipping to
// the surface, and the whole plant painted piece by piece.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "patch/NorvelleProgram.h"
#include "pixels/Surface.h"
#include "views/PlantMainPanel.h"
#include "views/PlantPainter.h"

namespace {

using OrlPixels::Pixel;
using views::PlantCoverageTable;

struct Block {
    int width, height;
    std::vector<Pixel> pixels;
    OrlPixels::Surface surface;
    Block(int w, int h) : width(w), height(h), pixels(std::size_t(w) * h, 0) {
        surface = OrlPixels::Surface(pixels.data(), w, OrlPixels::IntRect(0, 0, w, h));
    }
    Pixel at(int x, int y) const { return pixels[std::size_t(y) * width + x]; }
    int touched() const {
        int n = 0;
        for (Pixel p : pixels) n += p != 0;
        return n;
    }
};

TEST(PlantPainter, CoverageTableOfAGamma) {
    const PlantCoverageTable linear(1.0);
    for (int i = 0; i < 256; ++i) EXPECT_EQ(linear.value[i], i);
    const PlantCoverageTable two(2.0);
    EXPECT_EQ(two.value[0], 0);
    EXPECT_EQ(two.value[255], 255);
    // floor(255 * sqrt(64 / 255)) = floor(255 * 0.5009794) = floor(127.75) = 127
    EXPECT_EQ(two.value[64], 127);
    // floor(255 * sqrt(1 / 255)) = floor(15.97) = 15
    EXPECT_EQ(two.value[1], 15);
    // No gamma at all draws nothing but full coverage; none is out of range.
    const PlantCoverageTable odd(-3.0);
    for (int i = 0; i < 256; ++i) EXPECT_LE(odd.value[i], 255);
}

TEST(PlantPainter, AHorizontalLineThroughPixelCentresIsOnePixelWide) {
    Block b(16, 16);
    const PlantCoverageTable linear(1.0);
    // y = 10.5 is the centre of row 10: fraction 0, row 10 fully covered.
    views::drawPlantLine(2.5, 10.5, 7.5, 10.5, b.surface, linear, 0xFFFFFFFFu);
    for (int x = 2; x <= 7; ++x) EXPECT_EQ(b.at(x, 10), 0xFFFFFFFFu) << x;
    EXPECT_EQ(b.touched(), 6);
}

TEST(PlantPainter, TheFractionSplitsCoverageBetweenTwoPixels) {
    Block b(16, 16);
    const PlantCoverageTable linear(1.0);
    // y = 10.75: a quarter pixel below row 10's centre: 64/256 goes to row 11
    // and 191 (255 - 64) to row 10. White scaled by k(191) = 192: 255 * 192 >> 8
    // = 191 a channel; by k(64) = 65: 255 * 65 >> 8 = 64.
    views::drawPlantLine(3.5, 10.75, 5.5, 10.75, b.surface, linear, 0xFFFFFFFFu);
    for (int x = 3; x <= 5; ++x) {
        EXPECT_EQ(b.at(x, 10), 0xBFBFBFBFu) << x;
        EXPECT_EQ(b.at(x, 11), 0x40404040u) << x;
    }
    EXPECT_EQ(b.touched(), 6);
}

TEST(PlantPainter, ASteepLineStepsAlongY) {
    Block b(16, 16);
    const PlantCoverageTable linear(1.0);
    views::drawPlantLine(4.5, 1.5, 4.5, 12.5, b.surface, linear, 0xFF00FF00u);
    for (int y = 1; y <= 12; ++y) EXPECT_EQ(b.at(4, y), 0xFF00FF00u) << y;
    EXPECT_EQ(b.touched(), 12);
    // Drawn the other way round, the same pixels.
    Block c(16, 16);
    views::drawPlantLine(4.5, 12.5, 4.5, 1.5, c.surface, linear, 0xFF00FF00u);
    EXPECT_EQ(c.pixels, b.pixels);
}

TEST(PlantPainter, ADiagonalComposesOverWhatIsThere) {
    Block b(16, 16);
    for (Pixel& p : b.pixels) p = 0xFF000000u;  // opaque black
    const PlantCoverageTable linear(1.0);
    // Half-transparent red over black: 0x80800000 + black less its half.
    views::drawPlantLine(0.5, 0.5, 8.5, 8.5, b.surface, linear, 0x80800000u);
    for (int i = 0; i <= 8; ++i) {
        // k(0x80) = 0x81: black's alpha 0xFF keeps 0xFF - (0xFF * 0x81 >> 8) = 0x7F.
        EXPECT_EQ(b.at(i, i), 0x80800000u + 0xFF000000u - 0x80000000u) << i;
    }
}

TEST(PlantPainter, LinesAreClippedToTheSurface) {
    Block b(16, 16);
    const PlantCoverageTable linear(1.0);
    views::drawPlantLine(-100.5, 5.5, 100.5, 5.5, b.surface, linear, 0xFFFFFFFFu);
    EXPECT_EQ(b.touched(), 16);
    views::drawPlantLine(-50, -50, -10, -20, b.surface, linear, 0xFFFFFFFFu);
    views::drawPlantLine(1e12, 3, 5, 3, b.surface, linear, 0xFFFFFFFFu);
    views::drawPlantLine(std::nan(""), 3, 5, 3, b.surface, linear, 0xFFFFFFFFu);
    views::drawPlantLine(4, 4, 4, 4, b.surface, linear, 0xFFFFFFFFu);
    EXPECT_EQ(b.touched(), 16);
    // A clip of the block shares its coordinates.
    Block c(16, 16);
    OrlPixels::Surface clip = c.surface.clipped(OrlPixels::IntRect(4, 0, 4, 16));
    views::drawPlantLine(0.5, 5.5, 15.5, 5.5, clip, linear, 0xFFFFFFFFu);
    EXPECT_EQ(c.touched(), 4);
    EXPECT_EQ(c.at(4, 5), 0xFFFFFFFFu);
    EXPECT_EQ(c.at(7, 5), 0xFFFFFFFFu);
}

TEST(PlantPainter, ThePanelsPlantPaintsGreenLinesAroundTheSeed) {
    NorvelleProgram record;
    for (int i = 0; i < BRANCH_COUNT; ++i) record.setParam(Param::Branch1 + i, 0.6f);
    views::PlantGeometry plant;
    views::growMainPanelPlantAtRest(record, plant);
    Block b(384, 512);
    for (Pixel& p : b.pixels) p = 0xFF000000u;
    views::paintPlant(b.surface, plant, PlantCoverageTable(views::mainPanelPlant().settings.gamma));
    int lit = 0, greenest = 0;
    for (int y = 0; y < 512; ++y)
        for (int x = 0; x < 384; ++x) {
            const Pixel p = b.at(x, y);
            if (p == 0xFF000000u) continue;
            ++lit;
            const int r = (p >> 16) & 0xFF, g = (p >> 8) & 0xFF, bl = p & 0xFF;
            greenest += g >= r && g >= bl;
            // Within the bulb around the seed at (192, 264).
            EXPECT_LT(std::hypot(x - 192.0, y - 264.0), 130.0);
        }
    EXPECT_GT(lit, 1000);
    // Hues between 1/6 and 1/2 are green above red and blue: the plant's hue
    // of 0.3 with a deviation of 0.07 a generation keeps most lines there.
    EXPECT_GT(greenest, lit * 3 / 4);
    // The seed's core stays dark.
    EXPECT_EQ(b.at(192, 264), 0xFF000000u);
}

}  // namespace
