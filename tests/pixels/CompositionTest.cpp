#include <gtest/gtest.h>

#include "pixels/AddRaster.h"
#include "pixels/ClippedRaster.h"
#include "pixels/LookupRaster.h"
#include "pixels/MaskedRaster.h"
#include "pixels/MultiplyRaster.h"
#include "pixels/OffsetRaster.h"
#include "pixels/OverRaster.h"
#include "pixels/ProductMask.h"
#include "pixels/RectangleRaster.h"
#include "pixels/SolidMask.h"
#include "pixels/SolidRaster.h"
#include "pixels/SumMask.h"
#include "pixels/Surface.h"
#include "tests/pixels/PixelTestSupport.h"

using namespace OrlPixels;
using namespace pixeltest;

TEST(IntRectBehaviour, IntersectionAndUnionFollowTheirRules) {
    EXPECT_EQ(intersection(IntRect(0, 0, 10, 10), IntRect(5, 6, 10, 10)), IntRect(5, 6, 5, 4));
    EXPECT_EQ(intersection(IntRect(0, 0, 10, 10), IntRect(10, 0, 5, 5)), IntRect(0, 0, 0, 0));
    EXPECT_EQ(intersection(IntRect(0, 0, 10, 10), INFINITE_RECT), IntRect(0, 0, 10, 10));
    EXPECT_EQ(unionOf(IntRect(), IntRect(3, 4, 5, 6)), IntRect(3, 4, 5, 6));
    EXPECT_EQ(unionOf(IntRect(3, 4, 5, 6), IntRect()), IntRect(3, 4, 5, 6));
    EXPECT_EQ(unionOf(IntRect(0, 0, 2, 2), IntRect(5, 5, 1, 1)), IntRect(0, 0, 6, 6));
    EXPECT_EQ(INFINITE_RECT, IntRect(-0x40000000, -0x40000000, 0x7FFFFFFF, 0x7FFFFFFF));
}

TEST(PixelFormulas, OverMaskedAddMultiplyAreExact) {
    // Opaque source replaces, transparent leaves the backdrop.
    EXPECT_EQ(overPixel(0xFF123456u, 0xFF654321u), 0xFF123456u);
    EXPECT_EQ(overPixel(0, 0x80402010u), 0x80402010u);
    // Half-transparent black over white: f = 0x81.
    EXPECT_EQ(overPixel(0x80000000u, 0xFFFFFFFFu), 0xFF7F7F7Fu);  // 255 - (255 * 129 >> 8)
    // Scaling by 255 is the identity, by 0 clears.
    EXPECT_EQ(scalePixel(0xFFABCDEFu, scaleFactor(255)), 0xFFABCDEFu);
    EXPECT_EQ(scalePixel(0xFFABCDEFu, scaleFactor(0)), 0u);
    EXPECT_EQ(scalePixel(0xFF000000u, scaleFactor(128)), 0x80000000u);
    // Saturated sum per byte.
    EXPECT_EQ(addPixel(0x80808080u, 0x80808080u), 0xFFFFFFFFu);
    EXPECT_EQ(addPixel(0x01020304u, 0x10203040u), 0x11223344u);
    EXPECT_EQ(addPixel(0xF0100000u, 0x20F00001u), 0xFFFF0001u);
    // Product with white is the identity.
    EXPECT_EQ(multiplyPixel(0x80402010u, 0xFFFFFFFFu), 0x80402010u);
    EXPECT_EQ(multiplyPixel(0xFFFFFFFFu, 0x80808080u), 0x80808080u);
    EXPECT_EQ(multiplyPixel(0xFF804020u, 0u), 0u);
}

TEST(SurfaceDrawing, TransparentSourceForwardsOncePerStripAndWritesNothing) {
    Canvas canvas(600, 3, 0xFF102030u);
    CountingRaster backdrop(canvas.surface);
    SolidRaster transparent(0);
    OverRaster over(backdrop, transparent);
    // The strip: one raw span pointing at the surface itself.
    Span table[MAX_SPAN_REQUEST];
    SpanOutput out(table, canvas.surface.address(0, 1));
    over.render(0, 1, 256, out);
    EXPECT_EQ(backdrop.calls, 1);
    EXPECT_EQ(table[0].length(), 256);
    EXPECT_FALSE(table[0].solid());
    EXPECT_EQ(table[0].data, canvas.surface.address(0, 1));
}

TEST(SurfaceDrawing, TransparentSourceCostsOneBackdropRenderPerStripOfTheTarget) {
    Canvas canvas(600, 3, 0xFF102030u);
    SolidRaster transparent(0);
    CountingRaster counted(transparent);
    // Draw through the surface: 3 rows of 3 strips; each forwards to the surface.
    class Watch : public Raster {
    public:
        explicit Watch(Surface& s) : s_(s) {}
        void calcBounds(IntRect& out) override { s_.calcBounds(out); }
        void render(int x, int y, int n, SpanOutput& out) override {
            ++calls;
            Span* first = out.tableEnd;
            s_.render(x, y, n, out);
            if (first->solid() || first->data != out.pixels + (first - out.table)) ++misplaced;
        }
        Surface& s_;
        int calls = 0;
        int misplaced = 0;
    } watch(canvas.surface);
    OverRaster root(watch, counted);
    const std::vector<Pixel> before = canvas.pixels;
    // Run the pull loop through fill() so that the root is ours.
    canvas.surface.fill(root, IntRect(0, 0, 600, 3));
    EXPECT_EQ(watch.calls, 9);
    EXPECT_EQ(watch.misplaced, 0);
    EXPECT_EQ(counted.calls, 9);
    EXPECT_EQ(canvas.pixels, before);
}

TEST(SurfaceDrawing, AlphaFECountsAsOpaqueAndDropsTheBackdrop) {
    Canvas canvas(8, 1, 0xFFFFFFFFu);
    SolidRaster nearlyOpaque(0xFE000000u);
    CountingRaster backdrop(canvas.surface);
    OverRaster over(backdrop, nearlyOpaque);
    std::vector<Span> spans;
    std::vector<Pixel> row = renderRow(over, 0, 0, 8, &spans);
    ASSERT_EQ(row.size(), 8u);
    EXPECT_EQ(backdrop.calls, 0);
    for (Pixel p : row) EXPECT_EQ(p, 0xFE000000u);
    ASSERT_EQ(spans.size(), 1u);
    EXPECT_TRUE(spans[0].opaque());
    // Without the shortcut the formula would have kept some white.
    EXPECT_NE(overPixel(0xFE000000u, 0xFFFFFFFFu), 0xFE000000u);
}

TEST(SurfaceDrawing, OpaqueLeadAndTailAreSettledWithoutTheBackdrop) {
    ScriptedRaster source;
    source.pieces = {{3, true, {0xFF0000FFu}, true}, {2, true, {0x80000080u}, false}, {3, true, {0xFF00FF00u}, true}};
    Canvas canvas(8, 1, 0xFFFFFFFFu);
    CountingRaster backdrop(canvas.surface);
    OverRaster over(backdrop, source);
    std::vector<Pixel> row = renderRow(over, 0, 0, 8);
    ASSERT_EQ(row.size(), 8u);
    EXPECT_EQ(backdrop.pixels, 2);  // only the columns between
    EXPECT_EQ(row[0], 0xFF0000FFu);
    EXPECT_EQ(row[3], overPixel(0x80000080u, 0xFFFFFFFFu));
    EXPECT_EQ(row[7], 0xFF00FF00u);
}

TEST(SurfaceDrawing, SplittingASolidSpanInScratchKeepsBothPartsValid) {
    // The backdrop is one solid span in the output area; the source cuts it
    // into a raw part (written pixel by pixel over the area) and a rest.
    ScriptedRaster source;
    source.pieces = {{2, false, {0x40000000u, 0x40000000u}, false}, {6, true, {0}, false}};
    SolidRaster backdrop(0xFF808080u);
    OverRaster over(backdrop, source);
    std::vector<Pixel> row = renderRow(over, 0, 0, 8);
    ASSERT_EQ(row.size(), 8u);
    const Pixel mixed = overPixel(0x40000000u, 0xFF808080u);
    EXPECT_EQ(row[0], mixed);
    EXPECT_EQ(row[1], mixed);
    for (int i = 2; i < 8; ++i) EXPECT_EQ(row[i], 0xFF808080u) << i;

    // The same inside a masked raster: mask raw then full.
    class TwoPartMask : public Mask {
    public:
        void calcBounds(IntRect& out) override { out = INFINITE_RECT; }
        void render(int, int, int n, MaskSpanOutput& out) override {
            Coverage* p = out.beginRaw();
            p[0] = 128;
            p[1] = 0;
            out.putRaw(2, p, false);
            out.putSolid(n - 2, 255, true);
        }
    } mask;
    MaskedRaster masked(backdrop, mask);
    row = renderRow(masked, 0, 0, 8);
    ASSERT_EQ(row.size(), 8u);
    EXPECT_EQ(row[0], scalePixel(0xFF808080u, 129));
    EXPECT_EQ(row[1], 0u);
    for (int i = 2; i < 8; ++i) EXPECT_EQ(row[i], 0xFF808080u) << i;
}

TEST(SurfaceDrawing, SplitSolidValueLyingOutsideTheScratchKeepsItsPointer) {
    static const Pixel shared = 0xFF00FF00u;
    BasicSpan<Pixel> table[8];
    Pixel area[8] = {};
    putSpanRecord(table, 8, Span::SOLID | Span::OPAQUE, &shared);
    splitSpan(table, area, 0, 3);
    EXPECT_EQ(table[0].length(), 3);
    EXPECT_EQ(table[3].length(), 5);
    EXPECT_EQ(table[3].data, &shared);
    EXPECT_TRUE(table[3].opaque());
    EXPECT_EQ(area[3], 0u);

    area[0] = 0xFF0000FFu;
    putSpanRecord(table, 8, Span::SOLID, area);
    splitSpan(table, area, 0, 3);
    EXPECT_EQ(table[3].data, area + 3);
    area[0] = 7;  // the first part's pixel is overwritten later
    EXPECT_EQ(*table[3].data, 0xFF0000FFu);
    EXPECT_EQ(table[7].length(), 5);  // the record is also in the last slot
}

TEST(SurfaceDrawing, ModesComposeAsTheirNamesSay) {
    Canvas canvas(4, 1, 0xFF404040u);
    SolidRaster grey(0xFF202020u);
    canvas.surface.draw(grey, ADD_MODE);
    EXPECT_EQ(canvas.at(0, 0), 0xFF606060u);
    SolidRaster half(0x80808080u);
    canvas.surface.draw(half, MULTIPLY_MODE);
    EXPECT_EQ(canvas.at(3, 0), multiplyPixel(0xFF606060u, 0x80808080u));
    SolidRaster red(0xFFFF0000u);
    canvas.surface.draw(red, NORMAL_MODE);
    EXPECT_EQ(canvas.at(2, 0), 0xFFFF0000u);
}

TEST(SurfaceDrawing, ModeTextIsCaseSensitiveAndUnknownMeansNormal) {
    EXPECT_EQ(drawModeFromText("add"), ADD_MODE);
    EXPECT_EQ(drawModeFromText("multiply"), MULTIPLY_MODE);
    EXPECT_EQ(drawModeFromText("normal"), NORMAL_MODE);
    EXPECT_EQ(drawModeFromText("subtract"), NORMAL_MODE);
    EXPECT_EQ(drawModeFromText("Add"), NORMAL_MODE);
    EXPECT_EQ(drawModeFromText(""), NORMAL_MODE);
}

TEST(SurfaceDrawing, TargetIsTheIntersectionOfSurfaceAndSourceBounds) {
    Canvas canvas(10, 10, 0xFF000000u);
    RectangleRaster box(0xFFFFFFFFu, IntRect(8, 8, 5, 5));
    canvas.surface.draw(box);
    EXPECT_EQ(canvas.at(9, 9), 0xFFFFFFFFu);
    EXPECT_EQ(canvas.at(7, 9), 0xFF000000u);
    // Multiply also draws only inside the source's bounds.
    RectangleRaster dark(0u, IntRect(0, 0, 2, 2));
    canvas.surface.draw(dark, MULTIPLY_MODE);
    EXPECT_EQ(canvas.at(1, 1), 0u);
    EXPECT_EQ(canvas.at(2, 2), 0xFF000000u);
}

TEST(SurfaceDrawing, PreAdjustedPointerSharesTheBlockCoordinates) {
    Canvas canvas(20, 20, 0);
    Surface clip = canvas.surface.clipped(IntRect(5, 6, 4, 3));
    EXPECT_EQ(clip.address(7, 7), canvas.surface.address(7, 7));
    SolidRaster white(0xFFFFFFFFu);
    clip.draw(white);
    EXPECT_EQ(canvas.at(5, 6), 0xFFFFFFFFu);
    EXPECT_EQ(canvas.at(8, 8), 0xFFFFFFFFu);
    EXPECT_EQ(canvas.at(9, 8), 0u);
    EXPECT_EQ(canvas.at(5, 9), 0u);
    // Rendering a surface: solid 0, raw, solid 0; outside rows one solid 0.
    std::vector<Span> spans;
    renderRow(clip, 0, 7, 20, &spans);
    ASSERT_EQ(spans.size(), 3u);
    EXPECT_EQ(spans[1].data, canvas.surface.address(5, 7));
    spans.clear();
    renderRow(clip, 0, 0, 20, &spans);
    ASSERT_EQ(spans.size(), 1u);
    EXPECT_TRUE(spans[0].solid());
}

TEST(SurfaceDrawing, FillReplacesWithoutComposition) {
    Canvas canvas(6, 2, 0xFFFFFFFFu);
    SolidRaster translucent(0x40000000u);
    canvas.surface.fill(translucent, IntRect(1, 0, 2, 1));
    EXPECT_EQ(canvas.at(1, 0), 0x40000000u);
    EXPECT_EQ(canvas.at(3, 0), 0xFFFFFFFFu);
}

TEST(MaskNodes, ProductAndSumFollowTheirFormulas) {
    SolidMask half(128);
    SolidMask quarter(64);
    ProductMask product(half, quarter);
    std::vector<Coverage> row = renderRow(product, 0, 0, 4);
    ASSERT_EQ(row.size(), 4u);
    EXPECT_EQ(row[0], (128 * 65) >> 8);
    SumMask sum(half, half);
    row = renderRow(sum, 0, 0, 4);
    ASSERT_EQ(row.size(), 4u);
    EXPECT_EQ(row[0], 255);
    SolidMask full(255);
    ProductMask neutral(full, quarter);
    std::vector<MaskSpan> spans;
    row = renderRow(neutral, 0, 0, 4, &spans);
    ASSERT_EQ(spans.size(), 1u);
    EXPECT_EQ(row[0], 64);
}

TEST(MaskNodes, EmptyMaskSkipsTheRaster) {
    SolidMask empty(0);
    SolidRaster red(0xFFFF0000u);
    CountingRaster counted(red);
    MaskedRaster masked(counted, empty);
    std::vector<Pixel> row = renderRow(masked, 0, 0, 16);
    ASSERT_EQ(row.size(), 16u);
    EXPECT_EQ(counted.calls, 0);
    EXPECT_EQ(row[5], 0u);
}

TEST(ClippedRasterBehaviour, OperandOnlyInsideTheRectangle) {
    SolidRaster red(0xFFFF0000u);
    ClippedRaster clipped(red, IntRect(2, 1, 3, 1));
    std::vector<Pixel> row = renderRow(clipped, 0, 1, 6);
    ASSERT_EQ(row.size(), 6u);
    EXPECT_EQ(row[1], 0u);
    EXPECT_EQ(row[2], 0xFFFF0000u);
    EXPECT_EQ(row[4], 0xFFFF0000u);
    EXPECT_EQ(row[5], 0u);
    row = renderRow(clipped, 0, 0, 6);
    EXPECT_EQ(row[3], 0u);
    IntRect b;
    clipped.calcBounds(b);
    EXPECT_EQ(b, IntRect(2, 1, 3, 1));
}

#include "pixels/PolygonMask.h"
#include "tests/support/AllocationCounter.h"

TEST(SurfaceDrawing, PullingATreeAllocatesNothing) {
    Canvas canvas(700, 300, 0xFF000000u);
    Polygon p;
    p.addCircle(350, 150, 140);
    PolygonMask mask(p, canvas.surface.bounds);  // its buffers are made here
    SolidRaster ink(0x80402010u);
    MaskedRaster masked(ink, mask);
    ProductMask faded(mask, mask);
    testsupport::AllocationCounter counter;
    canvas.surface.draw(masked);
    canvas.surface.draw(masked, ADD_MODE);
    canvas.surface.draw(ink, MULTIPLY_MODE);
    EXPECT_EQ(counter.count(), 0u);
    EXPECT_NE(canvas.at(350, 150), 0xFF000000u);
}

TEST(SurfaceDrawing, CopyFromAnOverlappingPartOfTheSameStripIsExact) {
    // Within one strip a raw span may point into the very pixels it lands on.
    Canvas canvas(200, 1, 0);
    for (int x = 0; x < 200; ++x) canvas.pixels[std::size_t(x)] = 0xFF000000u | Pixel(x);
    Surface source(canvas.pixels.data(), 200, IntRect(0, 0, 200, 1), true);
    OffsetRaster shifted(source, 3, 0);  // pixel x shows source x - 3
    canvas.surface.fill(shifted, IntRect(3, 0, 197, 1));
    for (int x = 3; x < 200; ++x) ASSERT_EQ(canvas.at(x, 0), 0xFF000000u | Pixel(x - 3)) << x;
}
