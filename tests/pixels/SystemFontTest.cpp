#include "pixels/SystemFont.h"

#include <gtest/gtest.h>

#include "PixelTestSupport.h"

using namespace OrlPixels;
using pixeltest::Canvas;

namespace {

long inkSum(const Canvas& c) {
    long sum = 0;
    for (Pixel p : c.pixels) sum += long(p & 0xFF);
    return sum;
}

platform::SystemTextStyle style(double size, bool bold = false, bool italic = false, bool underline = false,
                                std::string face = {}) {
    platform::SystemTextStyle s;
    s.face = std::move(face);
    s.size = size;
    s.bold = bold;
    s.italic = italic;
    s.underline = underline;
    return s;
}

}  // namespace

TEST(SystemFontTest, TheDefaultFaceDrawsText) {
    SystemFont f(style(10));
    EXPECT_GT(f.lineHeight(), 8);
    EXPECT_GT(f.ascent(), 5);
    EXPECT_LT(f.ascent(), f.lineHeight());
    const TextSize s = f.measure("Play Notes");
    EXPECT_GT(s.width, 30);
    EXPECT_EQ(s.height, f.lineHeight());
    Canvas c(120, 20, 0xFF000000u);
    f.draw(c.surface, "Play Notes", 2, 2, 0xFFFFFFFFu);
    EXPECT_GT(inkSum(c), 255 * 20);
}

TEST(SystemFontTest, ATrailingSpaceWidensTheText) {
    SystemFont f(style(10));
    EXPECT_GT(f.measure("Hint ").width, f.measure("Hint").width);
}

TEST(SystemFontTest, BoldIsWiderAndHeavier) {
    SystemFont regular(style(10));
    SystemFont bold(style(10, true));
    EXPECT_GT(bold.measure("Volume").width, regular.measure("Volume").width);
}

TEST(SystemFontTest, UnderlineAddsInkBelowTheBaseline) {
    SystemFont plain(style(10));
    SystemFont underlined(style(10, false, false, true));
    Canvas a(80, 20, 0xFF000000u), b(80, 20, 0xFF000000u);
    plain.draw(a.surface, "ace", 0, 0, 0xFFFFFFFFu);
    underlined.draw(b.surface, "ace", 0, 0, 0xFFFFFFFFu);
    EXPECT_GT(inkSum(b), inkSum(a));
}

TEST(SystemFontTest, AnUnknownFaceFallsBackToTheDefault) {
    SystemFont unknown(style(10, false, false, false, "No Such Face Anywhere"));
    SystemFont fallback(style(10));
    EXPECT_EQ(unknown.measure("Tuning = 0.5").width, fallback.measure("Tuning = 0.5").width);
}

TEST(SystemFontTest, TheSameTextDrawsTheSamePixelsTwice) {
    SystemFont f(style(10));
    Canvas a(80, 20, 0xFFFFFFFFu), b(80, 20, 0xFFFFFFFFu);
    f.draw(a.surface, "Release", 1, 1, 0xFF000000u);
    f.draw(b.surface, "Release", 1, 1, 0xFF000000u);
    EXPECT_EQ(a.pixels, b.pixels);
}
