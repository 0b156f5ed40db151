#include "pixels/FilmFont.h"

#include <gtest/gtest.h>

#include "PixelTestSupport.h"
#include "pixels/PlainMaskImage.h"

using namespace OrlPixels;
using pixeltest::Canvas;

namespace {

// A strip of `count` frames of 3 x 5, frame i with a dot at column 0, row i.
ImageRef strip(int count, bool vertical) {
    const int w = vertical ? 3 : 3 * count;
    const int h = vertical ? 5 * count : 5;
    std::vector<Coverage> v(std::size_t(w) * std::size_t(h), 0);
    for (int i = 0; i < count; ++i) {
        const int x = vertical ? 0 : 3 * i;
        const int y = (vertical ? 5 * i : 0) + i % 5;
        v[std::size_t(y) * std::size_t(w) + std::size_t(x)] = 255;
    }
    return ImageRef(new PlainMaskImage(w, h, std::move(v)));
}

// Row of the one inked pixel in column x, or -1.
int dotRow(const Canvas& c, int x) {
    for (int y = 0; y < c.height; ++y)
        if (c.pixels[std::size_t(y) * std::size_t(c.width) + std::size_t(x)] != 0) return y;
    return -1;
}

}  // namespace

TEST(FilmFontTest, CharsetMapsCharactersToFramesInOrder) {
    FilmFont f(strip(4, false), "0a-?", 4, 6);
    EXPECT_EQ(f.frameCount(), 4);
    EXPECT_EQ(f.frameOf('0'), 0);
    EXPECT_EQ(f.frameOf('a'), 1);
    EXPECT_EQ(f.frameOf('?'), 3);
    EXPECT_EQ(f.frameOf('b'), -1);
    EXPECT_EQ(f.lineHeight(), 5);
    EXPECT_EQ(f.ascent(), 4);
}

TEST(FilmFontTest, FirstAndCountMapARange) {
    FilmFont f(strip(3, true), 'x', 3, 4, 3);
    EXPECT_EQ(f.frameOf('x'), 0);
    EXPECT_EQ(f.frameOf('z'), 2);
    EXPECT_EQ(f.frameOf('w'), -1);
    EXPECT_EQ(f.lineHeight(), 5);
}

TEST(FilmFontTest, EveryCharacterAdvancesAlikeAndDrawsItsFrame) {
    FilmFont f(strip(4, false), "0a-?", 4, 6);
    EXPECT_EQ(f.measure("0a?").width, 18);
    EXPECT_EQ(f.measure("0b?").width, 18);  // an unknown one keeps its place
    Canvas c(30, 8, 0);
    f.draw(c.surface, "?b0a", 1, 2, 0xFFFFFFFFu);
    EXPECT_EQ(dotRow(c, 1), 2 + 3);    // '?' is frame 3
    EXPECT_EQ(dotRow(c, 7), -1);       // 'b' draws nothing
    EXPECT_EQ(dotRow(c, 13), 2 + 0);   // '0' frame 0
    EXPECT_EQ(dotRow(c, 19), 2 + 1);   // 'a' frame 1
}

TEST(FilmFontTest, FramesRunDownATallStrip) {
    FilmFont f(strip(3, true), "abc", 4, 4);
    Canvas c(16, 8, 0);
    f.draw(c.surface, "cba", 0, 0, 0xFFFFFFFFu);
    EXPECT_EQ(dotRow(c, 0), 2);
    EXPECT_EQ(dotRow(c, 4), 1);
    EXPECT_EQ(dotRow(c, 8), 0);
}
