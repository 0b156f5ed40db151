#include <gtest/gtest.h>

#include <csetjmp>
#include <functional>
#include <cstring>

#include "pixels/BlockGenerator.h"
#include "pixels/Film.h"
#include "pixels/ImageLoader.h"
#include "pixels/PlainImage.h"
#include "pixels/PlainMaskImage.h"
#include "pixels/Png.h"
#include "pixels/RunLengthImage.h"
#include "pixels/RunOptimizer.h"
#include "pixels/SolidRaster.h"
#include "tests/pixels/PixelTestSupport.h"

#ifdef TENDRANE_HAVE_LIBPNG
#include <png.h>
#endif

using namespace OrlPixels;
using namespace pixeltest;

namespace {

std::string messageOf(const std::function<void()>& f) {
    try {
        f();
    } catch (const std::exception& e) {
        return e.what();
    }
    return "";
}

#ifdef TENDRANE_HAVE_LIBPNG
void appendBytes(png_structp png, png_bytep data, png_size_t n) {
    auto* out = static_cast<std::vector<std::uint8_t>*>(png_get_io_ptr(png));
    out->insert(out->end(), data, data + n);
}
void noFlush(png_structp) {}

// Writes a PNG of any colour type and depth from rows of raw samples.
std::vector<std::uint8_t> makePng(int width, int height, int colorType, int depth, const std::vector<std::uint8_t>& raw,
                                  const std::vector<png_color>& palette = {}, double gamma = 0,
                                  bool interlace = false) {
    std::vector<std::uint8_t> out;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return {};
    }
    png_set_write_fn(png, &out, appendBytes, noFlush);
    png_set_IHDR(png, info, png_uint_32(width), png_uint_32(height), depth, colorType,
                 interlace ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (!palette.empty()) png_set_PLTE(png, info, palette.data(), int(palette.size()));
    if (gamma != 0) png_set_gAMA(png, info, gamma);
    png_write_info(png, info);
    const std::size_t rowBytes = raw.size() / std::size_t(height);
    std::vector<png_bytep> rows{std::size_t(height)};
    for (int y = 0; y < height; ++y) rows[std::size_t(y)] = const_cast<png_bytep>(raw.data() + rowBytes * std::size_t(y));
    png_write_image(png, rows.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return out;
}
#endif

}  // namespace

#ifdef TENDRANE_HAVE_LIBPNG

TEST(PngReading, RgbaIsPremultipliedIntoTheNativeWord) {
    const std::vector<std::uint8_t> raw = {255, 128, 0, 255, 200, 100, 50, 128, 10, 20, 30, 0};
    const std::vector<std::uint8_t> file = makePng(3, 1, PNG_COLOR_TYPE_RGB_ALPHA, 8, raw);
    DecodedPng d = decodePng(file.data(), file.size());
    ASSERT_EQ(d.width, 3);
    EXPECT_FALSE(d.opaque);
    EXPECT_EQ(d.pixels[0], 0xFFFF8000u);
    // f = 129: 200*129>>8 = 100, 100*129>>8 = 50, 50*129>>8 = 25.
    EXPECT_EQ(d.pixels[1], 0x80643219u);
    EXPECT_EQ(d.pixels[2], 0u);
    DecodedPng straight = decodePng(file.data(), file.size(), 0, false);
    EXPECT_EQ(straight.pixels[1], 0x80C86432u);
}

TEST(PngReading, GreyPaletteLowDepthAndSixteenBitExpandToOpaqueWords) {
    // Grey, 8 bit.
    std::vector<std::uint8_t> file = makePng(2, 1, PNG_COLOR_TYPE_GRAY, 8, {0x10, 0xF0});
    DecodedPng d = decodePng(file.data(), file.size());
    EXPECT_TRUE(d.opaque);
    EXPECT_EQ(d.pixels[0], 0xFF101010u);
    EXPECT_EQ(d.pixels[1], 0xFFF0F0F0u);
    // Grey, 1 bit: 0b10000000 -> white, black.
    file = makePng(2, 1, PNG_COLOR_TYPE_GRAY, 1, {0x80});
    d = decodePng(file.data(), file.size());
    EXPECT_EQ(d.pixels[0], 0xFFFFFFFFu);
    EXPECT_EQ(d.pixels[1], 0xFF000000u);
    // Palette, 4 bit.
    file = makePng(2, 1, PNG_COLOR_TYPE_PALETTE, 4, {0x10}, {{1, 2, 3}, {200, 100, 50}});
    d = decodePng(file.data(), file.size());
    EXPECT_TRUE(d.opaque);
    EXPECT_EQ(d.pixels[0], 0xFFC86432u);
    EXPECT_EQ(d.pixels[1], 0xFF010203u);
    // RGB, 16 bit: stripped to the high bytes.
    file = makePng(1, 1, PNG_COLOR_TYPE_RGB, 16, {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC});
    d = decodePng(file.data(), file.size());
    EXPECT_EQ(d.pixels[0], 0xFF12569Au);
    // Grey with alpha.
    file = makePng(1, 1, PNG_COLOR_TYPE_GRAY_ALPHA, 8, {0xFF, 0x40});
    d = decodePng(file.data(), file.size());
    EXPECT_FALSE(d.opaque);
    EXPECT_EQ(d.pixels[0], 0x40404040u);
}

TEST(PngReading, InterlacedFilesReadLikePlainOnes) {
    std::vector<std::uint8_t> raw;
    for (int i = 0; i < 9 * 7; ++i) {
        raw.push_back(std::uint8_t(i * 3));
        raw.push_back(std::uint8_t(255 - i));
        raw.push_back(std::uint8_t(i));
    }
    const std::vector<std::uint8_t> plain = makePng(9, 7, PNG_COLOR_TYPE_RGB, 8, raw);
    const std::vector<std::uint8_t> laced = makePng(9, 7, PNG_COLOR_TYPE_RGB, 8, raw, {}, 0, true);
    EXPECT_EQ(decodePng(plain.data(), plain.size()).pixels, decodePng(laced.data(), laced.size()).pixels);
}

TEST(PngReading, GammaCorrectsFromTheFileGamma) {
    const std::vector<std::uint8_t> file = makePng(1, 1, PNG_COLOR_TYPE_GRAY, 8, {128}, {}, 0.45455);
    EXPECT_EQ(decodePng(file.data(), file.size(), 0).pixels[0], 0xFF808080u);
    // A display gamma equal to the file's leaves values alone; another one moves them.
    const Pixel same = decodePng(file.data(), file.size(), 1 / 0.45455).pixels[0];
    EXPECT_NEAR(int(same & 0xFF), 128, 1);
    const Pixel brighter = decodePng(file.data(), file.size(), 1.0).pixels[0];
    EXPECT_NE(brighter, 0xFF808080u);
}

TEST(PngReading, FailuresCarryTheReaderText) {
    const std::uint8_t junk[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    EXPECT_EQ(messageOf([&] { decodePng(junk, sizeof junk); }), "Error reading PNG image : invalid format");
    std::vector<std::uint8_t> file = makePng(4, 4, PNG_COLOR_TYPE_RGB, 8, std::vector<std::uint8_t>(48, 7));
    file.resize(file.size() / 2);  // cut off inside the data
    EXPECT_EQ(messageOf([&] { decodePng(file.data(), file.size()); }), "Error reading PNG image : invalid format");
    EXPECT_THROW(decodePng(junk, 0), OrlPNG);
}

TEST(PngReading, MaskTargetsTakeGreyOrAlpha) {
    std::vector<std::uint8_t> file = makePng(2, 1, PNG_COLOR_TYPE_GRAY, 8, {0x10, 0xF0});
    DecodedPng d = decodePngMask(file.data(), file.size());
    EXPECT_EQ(d.values, (std::vector<Coverage>{0x10, 0xF0}));
    file = makePng(2, 1, PNG_COLOR_TYPE_RGB_ALPHA, 8, {1, 2, 3, 40, 4, 5, 6, 250});
    d = decodePngMask(file.data(), file.size());
    EXPECT_EQ(d.values, (std::vector<Coverage>{40, 250}));
}

TEST(PngWriting, EncodedImageReadsBackStraight) {
    const std::vector<Pixel> px = {0xFF102030u, 0x80402010u, 0u, 0x01010101u};
    const std::vector<std::uint8_t> file = encodePng(px.data(), 2, 2, 2);
    ASSERT_FALSE(file.empty());
    DecodedPng d = decodePng(file.data(), file.size(), 0, false);
    EXPECT_EQ(d.pixels[0], 0xFF102030u);
    EXPECT_EQ(d.pixels[1], 0x80804020u);  // alpha divided out
    EXPECT_EQ(d.pixels[2], 0u);
    EXPECT_EQ(d.pixels[3], 0x01FFFFFFu);
}

TEST(ImageLoading, FormatsBuildTheirImageKinds) {
    std::vector<std::uint8_t> raw;
    for (int i = 0; i < 20 * 10; ++i) {
        raw.push_back(i < 100 ? 255 : 10);
        raw.push_back(0);
        raw.push_back(0);
        raw.push_back(i < 100 ? 255 : 0);
    }
    const std::vector<std::uint8_t> file = makePng(20, 10, PNG_COLOR_TYPE_RGB_ALPHA, 8, raw);
    ImageRef plain = imageFromPng(file.data(), file.size(), parseImageFormat(""));
    ImageRef rle = imageFromPng(file.data(), file.size(), parseImageFormat("rle"));
    ImageRef mask = imageFromPng(file.data(), file.size(), parseImageFormat("mask"));
    ImageRef rleMask = imageFromPng(file.data(), file.size(), parseImageFormat("rlemask"));
    EXPECT_NE(dynamic_cast<PlainImage*>(plain.get()), nullptr);
    EXPECT_NE(dynamic_cast<RleRaster*>(rle.get()), nullptr);
    EXPECT_NE(dynamic_cast<PlainMaskImage*>(mask.get()), nullptr);
    EXPECT_NE(dynamic_cast<RleMask*>(rleMask.get()), nullptr);
    Canvas a(30, 20, 0xFF00FF00u), b(30, 20, 0xFF00FF00u);
    plain->draw(a.surface, 3, 4);
    rle->draw(b.surface, 3, 4);
    EXPECT_EQ(a.pixels, b.pixels);
    EXPECT_EQ(a.at(3, 4), 0xFFFF0000u);
    EXPECT_EQ(a.at(2, 4), 0xFF00FF00u);
    Canvas c(30, 20, 0xFFFFFFFFu), d(30, 20, 0xFFFFFFFFu);
    mask->color = 0xFF000000u;
    rleMask->color = 0xFF000000u;
    mask->drawPart(c.surface, IntRect(0, 4, 20, 3), 0, 0);
    rleMask->drawPart(d.surface, IntRect(0, 4, 20, 3), 0, 0);
    EXPECT_EQ(c.pixels, d.pixels);
    EXPECT_EQ(c.at(0, 0), 0xFF000000u);      // row 4 of the image, alpha 255
    EXPECT_EQ(c.at(0, 1), 0xFFFFFFFFu);      // row 5: alpha 0
    EXPECT_EQ(c.at(0, 3), 0xFFFFFFFFu);      // outside the part
    EXPECT_EQ(messageOf([] { parseImageFormat("jpeg"); }), "Unknown image format specification: jpeg");
}

TEST(ImageLoading, MissingResourceAndBadDataName_TheImage) {
    EXPECT_EQ(messageOf([] { loadImage("NoSuchImageAnywhere", PLAIN_FORMAT); }),
              "Could not load image resource NoSuchImageAnywhere");
    EXPECT_EQ(messageOf([] { loadImageFile("/nonexistent/folder/picture", PLAIN_FORMAT); }),
              "Could not load image resource /nonexistent/folder/picture");
}

#endif  // TENDRANE_HAVE_LIBPNG

TEST(RunLength, FullyTransparentImageIsOneSolidRunPer3FFFPixels) {
    const int width = 0x3FFF * 2 + 100;
    std::vector<Pixel> px(std::size_t(width) * 2, 0u);
    PixelBlockRaster block(px.data(), width, IntRect(0, 0, width, 2), false);
    RleRaster rle(block);
    const RunTable<Pixel>& t = rle.table();
    ASSERT_EQ(t.rows.size(), 2u);
    ASSERT_EQ(t.runs.size(), 6u);
    EXPECT_EQ(t.runs[0], RunTable<Pixel>::SOLID | 0x3FFF);
    EXPECT_EQ(t.runs[1], RunTable<Pixel>::SOLID | 0x3FFF);
    EXPECT_EQ(t.runs[2], RunTable<Pixel>::SOLID | 100);
    EXPECT_EQ(t.pixels.size(), 6u);
    EXPECT_EQ(t.rows[1].run, 3);
    EXPECT_EQ(t.rows[1].pixel, 3);
}

TEST(RunLength, OptimizerFindsSolidAndOpaqueRuns) {
    std::vector<Pixel> px = {0x10000000u, 0x20000000u, 7, 7, 7, 7, 7, 0xFF000001u, 0xFF000002u, 0xFE000003u,
                             0xFF000004u, 0xFF000005u, 0x40000000u, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu};
    const int n = int(px.size());
    PixelBlockRaster block(px.data(), n, IntRect(0, 0, n, 1), false);
    RunOptimizer optimizer(block);
    std::vector<Span> spans;
    std::vector<Pixel> row = renderRow(optimizer, 0, 0, n, &spans);
    EXPECT_EQ(row, px);
    ASSERT_EQ(spans.size(), 5u);
    EXPECT_FALSE(spans[0].solid());
    EXPECT_EQ(spans[0].length(), 2);
    EXPECT_TRUE(spans[1].solid());
    EXPECT_EQ(spans[1].length(), 5);
    EXPECT_FALSE(spans[2].solid());
    EXPECT_TRUE(spans[2].opaque());  // 0xFE counts
    EXPECT_EQ(spans[2].length(), 5);
    EXPECT_FALSE(spans[3].opaque());
    EXPECT_TRUE(spans[4].solid());
    EXPECT_TRUE(spans[4].opaque());
}

TEST(RunLength, RawSpansPointIntoThePixelTableWhichIsNeverWritten) {
    std::vector<Pixel> px(64 * 4);
    for (std::size_t i = 0; i < px.size(); ++i) px[i] = 0x80000000u | Pixel(i * 2654435761u & 0x7F7F7F);
    PixelBlockRaster block(px.data(), 64, IntRect(0, 0, 64, 4), false);
    RleRaster rle(block);
    const std::vector<Pixel> table = rle.table().pixels;
    std::vector<Span> spans;
    std::vector<Pixel> row = renderRow(rle, 0, 1, 64, &spans);
    ASSERT_EQ(row.size(), 64u);
    for (int x = 0; x < 64; ++x) EXPECT_EQ(row[x], px[64 + x]);
    bool intoTable = false;
    for (const Span& s : spans)
        intoTable |= !s.solid() && s.data >= rle.table().pixels.data() &&
                     s.data < rle.table().pixels.data() + rle.table().pixels.size();
    EXPECT_TRUE(intoTable);
    // Compose it over a surface: the result is right and the table untouched.
    Canvas canvas(64, 4, 0xFFFFFFFFu);
    canvas.surface.draw(rle);
    EXPECT_EQ(rle.table().pixels, table);
    EXPECT_EQ(canvas.at(5, 2), overPixel(px[2 * 64 + 5], 0xFFFFFFFFu));
    // As a fill, too: copied, not aliased.
    canvas.surface.fill(rle, IntRect(0, 0, 64, 4));
    EXPECT_EQ(canvas.at(7, 3), px[3 * 64 + 7]);
    EXPECT_EQ(rle.table().pixels, table);
}

TEST(RunLength, CursorContinuesAStripAndRestartsForAColumnLeftOfIt) {
    std::vector<Pixel> px(40 * 3);
    for (std::size_t i = 0; i < px.size(); ++i) px[i] = (i / 5) % 2 ? 0xFF0000FFu : Pixel(0x10101010u * (i % 7));
    PixelBlockRaster block(px.data(), 40, IntRect(0, 0, 40, 3), false);
    RleRaster rle(block);
    std::vector<Pixel> a = renderRow(rle, 0, 1, 17);
    const int runAfterFirst = rle.table().cursor.run;
    std::vector<Pixel> b = renderRow(rle, 17, 1, 23);
    EXPECT_GE(rle.table().cursor.run, runAfterFirst);
    a.insert(a.end(), b.begin(), b.end());
    EXPECT_EQ(a, std::vector<Pixel>(px.begin() + 40, px.begin() + 80));
    // A column left of the cursor: the row restarts from its index.
    std::vector<Pixel> again = renderRow(rle, 3, 1, 10);
    EXPECT_EQ(again, std::vector<Pixel>(px.begin() + 43, px.begin() + 53));
    EXPECT_EQ(rle.table().cursor.row, 1);
    // Outside the bounds: solid 0 around.
    std::vector<Span> spans;
    std::vector<Pixel> wide = renderRow(rle, -5, 2, 50, &spans);
    EXPECT_EQ(wide[0], 0u);
    EXPECT_EQ(wide[5], px[80]);
    EXPECT_EQ(wide[49], 0u);
    EXPECT_TRUE(spans.front().solid());
    EXPECT_TRUE(spans.back().solid());
}

TEST(RunLength, MasksCompressAndReadBack) {
    std::vector<Coverage> values(30 * 2);
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = Coverage(i < 20 ? 255 : (i * 37) & 0xFF);
    MaskBlock block(values.data(), 30, IntRect(0, 0, 30, 2), false);
    RleMask rle(block);
    EXPECT_EQ(renderRect(rle, IntRect(0, 0, 30, 2)), values);
    EXPECT_EQ(rle.table().runs[0] & RunTable<Coverage>::SOLID, RunTable<Coverage>::SOLID);
}

TEST(Films, FramesRunAlongTheLongerAxis) {
    std::vector<Pixel> px(10 * 40);
    for (std::size_t i = 0; i < px.size(); ++i) px[i] = 0xFF000000u | Pixel(i / 100);  // 4 frames of 10 rows
    ImageRef strip(new PlainImage(10, 40, true, px));
    Film film(strip, 10, 10);
    EXPECT_TRUE(film.vertical());
    EXPECT_EQ(film.frameCount(), 4);
    EXPECT_EQ(film.frame(2), IntRect(0, 20, 10, 10));
    EXPECT_EQ(film.frame(9), IntRect(0, 30, 10, 10));
    Canvas canvas(12, 12, 0);
    film.drawFrame(canvas.surface, 2, 1, 1);
    EXPECT_EQ(canvas.at(1, 1), 0xFF000002u);
    EXPECT_EQ(canvas.at(10, 10), 0xFF000002u);
    EXPECT_EQ(canvas.at(11, 11), 0u);
    ImageRef across(new PlainImage(30, 10, true, std::vector<Pixel>(300, 0xFF000000u)));
    Film sideways(across, 10, 10);
    EXPECT_FALSE(sideways.vertical());
    EXPECT_EQ(sideways.frameCount(), 3);
}
