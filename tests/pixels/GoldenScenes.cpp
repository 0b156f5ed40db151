#include "tests/pixels/GoldenScenes.h"

#include <cmath>

#include "pixels/ClippedRaster.h"
#include "pixels/ColorTable.h"
#include "pixels/LinearRampMask.h"
#include "pixels/LookupRaster.h"
#include "pixels/MaskedRaster.h"
#include "pixels/PolygonMask.h"
#include "pixels/RadialRampMask.h"
#include "pixels/SolidRaster.h"
#include "pixels/Stroking.h"
#include "pixels/Surface.h"
#include "pixels/TransformedRaster.h"

namespace pixeltest {

using namespace OrlPixels;

namespace {

struct Board {
    int width, height;
    std::vector<Pixel> pixels;
    Surface surface;
    Board(int w, int h, Pixel background) : width(w), height(h), pixels(std::size_t(w) * h, background) {
        surface = Surface(pixels.data(), w, IntRect(0, 0, w, h), true);
    }
    void fillPolygon(const Polygon& p, Pixel color, const FillRule& rule = nonZeroFillRule) {
        PolygonMask mask(p, surface.bounds, rule);
        SolidRaster ink(color);
        MaskedRaster masked(ink, mask);
        surface.draw(masked);
    }
    void strokePolygon(Polygon p, const Pen& pen) {
        applyPen(p, pen);
        fillPolygon(p, pen.color);
    }
    Scene scene(const std::string& name) { return Scene{name, width, height, pixels}; }
};

Polygon star(double cx, double cy, double outer, double inner, int points, double turn) {
    Polygon p;
    for (int i = 0; i < 2 * points; ++i) {
        const double r = i % 2 == 0 ? outer : inner;
        const double a = turn + i * 3.141592653589793 / points;
        if (i == 0)
            p.moveTo(cx + r * std::sin(a), cy - r * std::cos(a));
        else
            p.lineTo(cx + r * std::sin(a), cy - r * std::cos(a));
    }
    p.close(0);
    return p;
}

Scene stars() {
    Board b(256, 160, 0xFF101820u);
    b.fillPolygon(star(70, 80, 66, 26, 5, 0), 0xFFF0C020u);
    // A pentagram drawn as one self-crossing contour: filled centre under
    // the non-zero rule, hollow under even-odd.
    Polygon crossing;
    for (int i = 0; i <= 5; ++i) {
        const double a = i * 4 * 3.141592653589793 / 5;
        if (i == 0)
            crossing.moveTo(190 + 50 * std::sin(a), 55 - 50 * std::cos(a));
        else
            crossing.lineTo(190 + 50 * std::sin(a), 55 - 50 * std::cos(a));
    }
    b.fillPolygon(crossing, 0xC040A0F0u, evenOddFillRule);
    b.fillPolygon(star(190, 128, 30.3, 12.7, 7, 0.3), 0x80802030u);
    return b.scene("stars");
}

Scene rings() {
    Board b(200, 200, 0xFFFFFFFFu);
    Polygon ring;
    ring.addCircle(100, 100, 80);
    ring.addCircle(100, 100, 55);  // same direction: non-zero keeps it filled
    b.fillPolygon(ring, 0xFF3060C0u);
    Polygon hole;
    hole.addCircle(100, 100, 45.5);
    Pen pen;
    pen.color = 0xFFC03020u;
    pen.stroke = 9;
    b.strokePolygon(hole, pen);
    Polygon small;
    small.addEllipse(100, 100, 20.25, 12.75, 0.5);
    b.fillPolygon(small, 0x80008000u);
    return b.scene("rings");
}

Scene dashedArcs() {
    Board b(220, 160, 0xFF202020u);
    Pen pen;
    pen.color = 0xFFE0E0E0u;
    pen.stroke = 3;
    pen.caps = ROUND_CAPS;
    pen.dash = 12;
    pen.gap = 6;
    Polygon arc;
    arc.addArc(80, 80, 60, 60, -2.5, 4.0);
    b.strokePolygon(arc, pen);
    Pen closed = pen;
    closed.color = 0xFF40C0FFu;
    closed.caps = BUTT_CAPS;
    closed.dash = 20;
    closed.gap = 8;
    closed.dashOffset = 30;
    Polygon circle;
    circle.addCircle(80, 80, 40);
    b.strokePolygon(circle, closed);
    Pen zig;
    zig.color = 0xFFFFB020u;
    zig.stroke = 6;
    zig.joints = MITER_JOINTS;
    zig.caps = SQUARE_CAPS;
    Polygon line;
    line.moveTo(160, 20);
    line.lineTo(200, 40);
    line.lineTo(160, 60);
    line.lineTo(205, 130);
    line.lineTo(170, 145);
    b.strokePolygon(line, zig);
    return b.scene("dashedArcs");
}

Scene gradients() {
    Board b(200, 120, 0xFF000000u);
    const ColorTable table = buildGradientTable(
        {{0.0, 0xFFFF0000u}, {0.4, 0xFFFFFF00u}, {0.4, 0xFF00A0FFu}, {1.0, 0x80000080u}});
    LinearRampMask ramp(10, 10, 190, 50);
    LookupRaster lookup(ramp, &table);
    ClippedRaster linear(lookup, IntRect(10, 10, 180, 45));
    b.surface.draw(linear);
    const ColorTable glowTable = buildGradientTable({{0.0, 0u}, {1.0, 0xFFFFFFFFu}});
    RadialRampMask radial(60.5, 90, 40, 25);
    LookupRaster glow(radial, &glowTable);
    b.surface.draw(glow);
    RadialRampMask plain(150, 88, 30, 30);
    SolidRaster green(0xFF30FF60u);
    MaskedRaster masked(green, plain);
    b.surface.draw(masked, ADD_MODE);
    return b.scene("gradients");
}

Scene transformedImages() {
    // A small checker image with a translucent corner.
    std::vector<Pixel> img(16 * 12);
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 16; ++x)
            img[std::size_t(y) * 16 + x] = ((x / 4 + y / 4) % 2 == 0) ? 0xFFE04040u : 0xFF4040E0u;
    img[0] = 0x80404000u;
    PixelBlock block;
    block.pixels = img.data();
    block.stride = 16;
    block.width = 16;
    block.height = 12;
    Board b(240, 160, 0xFF303030u);
    TransformedRaster whole(block, AffineTransformation::translation(4, 4), false);
    b.surface.draw(whole);
    TransformedRaster scaled(block, AffineTransformation::scaling(3.5, 2.25).then(AffineTransformation::translation(30.25, 6.5)),
                             false);
    b.surface.draw(scaled);
    TransformedRaster rotated(
        block,
        AffineTransformation::scaling(4, 4).then(AffineTransformation::rotation(0.5)).then(
            AffineTransformation::translation(150, 20)),
        false);
    b.surface.draw(rotated);
    TransformedRaster tiled(block, AffineTransformation::scaling(1.5, 1.5).then(AffineTransformation::translation(-7.3, 3.1)),
                            true);
    ClippedRaster band(tiled, IntRect(0, 110, 240, 44));
    b.surface.draw(band);
    return b.scene("transformedImages");
}

}  // namespace

std::vector<std::string> sceneNames() { return {"stars", "rings", "dashedArcs", "gradients", "transformedImages"}; }

Scene renderScene(const std::string& name) {
    if (name == "stars") return stars();
    if (name == "rings") return rings();
    if (name == "dashedArcs") return dashedArcs();
    if (name == "gradients") return gradients();
    if (name == "transformedImages") return transformedImages();
    return Scene{name, 0, 0, {}};
}

}  // namespace pixeltest
