#include "pixels/BitmapFont.h"

#include <gtest/gtest.h>

#include "FontTestSupport.h"
#include "PixelTestSupport.h"

using namespace OrlPixels;
using pixeltest::Canvas;

namespace {

// The columns of a row that carry any ink.
std::vector<int> inkedColumns(const Canvas& c, int y) {
    std::vector<int> xs;
    for (int x = 0; x < c.width; ++x)
        if (c.pixels[std::size_t(y) * std::size_t(c.width) + std::size_t(x)] != 0xFF000000u) xs.push_back(x);
    return xs;
}

long inkSum(const Canvas& c) {
    long sum = 0;
    for (Pixel p : c.pixels) sum += long(p & 0xFF);
    return sum;
}

}  // namespace

TEST(BitmapFontTest, MeasureSumsAdvancesAndKerning) {
    const FontRef f = fonttest::boxes();
    EXPECT_EQ(f->measure("A").width, 5);
    EXPECT_EQ(f->measure("V").width, 4);
    EXPECT_EQ(f->measure("AV").width, 5 - 2 + 4);
    EXPECT_EQ(f->measure("VA").width, 9);  // no pair V,A
    EXPECT_EQ(f->measure("AV").height, 9);
    EXPECT_EQ(f->measure("").width, 0);
    EXPECT_EQ(f->lineHeight(), 9);
    EXPECT_EQ(f->ascent(), 7);
}

TEST(BitmapFontTest, ATrailingSpaceWidensTheText) {
    const FontRef f = fonttest::boxes();
    EXPECT_EQ(f->measure("A ").width, f->measure("A").width + 3);
    EXPECT_EQ(f->measure(" ").width, 3);
}

TEST(BitmapFontTest, ACharacterTheFontLacksTakesNoRoomAndDrawsNothing) {
    const FontRef f = fonttest::boxes();
    EXPECT_EQ(f->measure("AzA").width, f->measure("AA").width);
    Canvas a(32, 12, 0xFF000000u), b(32, 12, 0xFF000000u);
    f->draw(a.surface, "AzA", 2, 1, 0xFFFFFFFFu);
    f->draw(b.surface, "AA", 2, 1, 0xFFFFFFFFu);
    EXPECT_EQ(a.pixels, b.pixels);
}

TEST(BitmapFontTest, GlyphsLandAtPenPlusOffsetsAndKerningMovesThePen) {
    const FontRef f = fonttest::boxes();
    Canvas c(32, 12, 0xFF000000u);
    f->draw(c.surface, "AV", 2, 1, 0xFFFFFFFFu);
    // y = 1 + yoffset 1: the boxes start on row 2 and take 6 rows.
    EXPECT_TRUE(inkedColumns(c, 1).empty());
    EXPECT_TRUE(inkedColumns(c, 8).empty());
    // A at 2..5; V at pen 2 + 5 - 2 = 5, plus xoffset 1: 6..8.
    EXPECT_EQ(inkedColumns(c, 2), (std::vector<int>{2, 3, 4, 5, 6, 7, 8}));
    Canvas apart(32, 12, 0xFF000000u);
    f->draw(apart.surface, "VA", 2, 1, 0xFFFFFFFFu);
    // V at 3..5, A at 2 + 4 = 6..9.
    EXPECT_EQ(inkedColumns(apart, 7), (std::vector<int>{3, 4, 5, 6, 7, 8, 9}));
}

TEST(BitmapFontTest, TheColourIsChosenAtDrawTime) {
    const FontRef f = fonttest::boxes();
    Canvas c(16, 12, 0);
    f->draw(c.surface, "A", 0, 0, 0xFF00FF00u);
    EXPECT_EQ(c.pixels[std::size_t(3) * 16 + 1], 0xFF00FF00u);
    EXPECT_EQ(c.pixels[0], 0u);
}

TEST(BitmapFontTest, TwoGammasGiveTwoWeights) {
    const FontRef light = fonttest::boxes(1.8);
    const FontRef heavy = fonttest::boxes(2.7);
    Canvas a(16, 12, 0xFF000000u), b(16, 12, 0xFF000000u);
    light->draw(a.surface, "g", 0, 0, 0xFFFFFFFFu);
    heavy->draw(b.surface, "g", 0, 0, 0xFFFFFFFFu);
    // The half-covered glyph decodes to a different coverage at each gamma.
    EXPECT_NE(inkSum(a), inkSum(b));
    EXPECT_GT(inkSum(a), 0);
    EXPECT_GT(inkSum(b), 0);
}

TEST(BitmapFontTest, AFontThatIsNotThereFails) {
    try {
        loadBitmapFont("noSuchFont", 0);
        FAIL() << "no failure";
    } catch (const Exception& e) {
        EXPECT_STREQ(e.what(), "Could not obtain font : noSuchFont");
    }
}

TEST(BitmapFontTest, APageThatIsNotGivenFails) {
    EXPECT_THROW(bitmapFontFromData(fonttest::description(), {}, 0), OrlAngelCode::Exception);
}

// ---------------------------------------------------------------------------
// The panel's fonts, each at the weight for dark text on light ground (gamma
// 1.8) and for light text on dark ground (2.7), pixel for pixel against the
// stored picture. TENDRANE_WRITE_GOLDEN=1 replaces it (only after looking).

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

const char* const PANEL_FONTS[] = {"futura14", "futura14_lt", "futura16", "futura16b_lt",
                                   "futura18", "futura18i",   "segoe14b"};

std::vector<Pixel> specimen(int& width, int& height) {
    const std::string lines[2] = {"Tuning Atonality Release Effect AV To Wa 0.5",
                                  "Volume = -6.0 dB  \"Plant Seed\" (quick!) fx_chors"};
    width = 384;
    height = 0;
    for (const char* name : PANEL_FONTS) height += 2 * (2 * loadBitmapFont(name, 1.8)->lineHeight() + 4);
    std::vector<Pixel> pixels(std::size_t(width) * std::size_t(height), 0xFFE8E8E8u);
    Surface surface(pixels.data(), width, IntRect(0, 0, width, height));
    int y = 0;
    for (const char* name : PANEL_FONTS) {
        for (int dark = 0; dark < 2; ++dark) {
            const FontRef f = loadBitmapFont(name, dark ? 2.7 : 1.8);
            const int band = 2 * f->lineHeight() + 4;
            if (dark)
                for (int r = y; r < y + band; ++r)
                    for (int x = 0; x < width; ++x) pixels[std::size_t(r) * std::size_t(width) + std::size_t(x)] = 0xFF141A14u;
            for (int l = 0; l < 2; ++l)
                f->draw(surface, lines[l], 4, y + 2 + l * f->lineHeight(), dark ? 0xFFE0E0E0u : 0xFF000000u);
            y += band;
        }
    }
    return pixels;
}

}  // namespace

TEST(BitmapFontTest, ThePanelFontsDrawAsStored) {
    if (!pngAvailable()) GTEST_SKIP() << "no PNG support in this build";
    int width = 0, height = 0;
    const std::vector<Pixel> pixels = specimen(width, height);
    const std::filesystem::path stored = std::filesystem::path(TENDRANE_SOURCE_DIR) / "tests/golden/fonts/specimen.png";
    const char* write = std::getenv("TENDRANE_WRITE_GOLDEN");
    if (write != nullptr && std::string(write) == "1") {
        std::filesystem::create_directories(stored.parent_path());
        const std::vector<std::uint8_t> png = encodePng(pixels.data(), width, height, width);
        std::ofstream(stored, std::ios::binary).write(reinterpret_cast<const char*>(png.data()), std::streamsize(png.size()));
    }
    std::ifstream in(stored, std::ios::binary);
    const std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    ASSERT_FALSE(bytes.empty()) << "missing " << stored;
    const DecodedPng d = decodePng(bytes.data(), bytes.size(), 0, true);
    ASSERT_EQ(d.width, width);
    ASSERT_EQ(d.height, height);
    std::size_t differing = 0;
    for (std::size_t i = 0; i < pixels.size(); ++i) differing += pixels[i] != d.pixels[i];
    EXPECT_EQ(differing, 0u);
}

TEST(BitmapFontTest, EqualNameAndGammaShareOneDecodedFont) {
    const FontRef a = loadBitmapFont("futura14", 1.8);
    const FontRef b = loadBitmapFont("FUTURA14", 1.8);
    const FontRef c = loadBitmapFont("futura14", 2.7);
    EXPECT_EQ(a.get(), b.get());
    EXPECT_NE(a.get(), c.get());
    EXPECT_GT(a->measure("AV").width, 0);
    // The face's kerning reached the description.
    EXPECT_LT(a->measure("AV").width, a->measure("A").width + a->measure("V").width);
}
