// The panel itself: its background with the bulb and every control's
// socket, the patch display and its lights, and the about page's words.
#include <cmath>

#include "Images.h"
#include "Palette.h"
#include "pixels/BitmapFont.h"
#include "pixels/Stroking.h"

namespace artwork {

namespace {

constexpr double PI = 3.14159265358979323846;

// The bulb and key ring share a centre; the arc sliders turn about theirs.
constexpr double BULB_X = 192, BULB_Y = 263;
constexpr double ARC_X = 191.5, ARC_Y = 263.5, ARC_RADIUS = 168.5;
constexpr double RING_INNER = 117, RING_OUTER = 142;

struct ArcSocket {
    double start, sweep;
};
constexpr ArcSocket ARCS[] = {{181.5, 87}, {286, 58}, {88.5, -87}, {165, -60}};

// A socket cut into the panel along a path: shade on the top left rim,
// light on the bottom right, the floor dark.
void socket(Picture& p, const Polygon& floor, const Polygon& rimPath, double rimWidth) {
    (void)rimWidth;
    Polygon light = rimPath, shade = rimPath;
    light.transform(OrlPixels::AffineTransformation::translation(1.0, 1.0));
    shade.transform(OrlPixels::AffineTransformation::translation(-1.0, -1.0));
    p.fill(light, RIM_LIGHT);
    p.fill(shade, RIM_SHADE);
    p.fill(floor, SOCKET);
}

// A stroked path as a filled outline (for sockets along arcs).
Polygon outline(Polygon path, double width) {
    OrlPixels::Pen pn = pen(0, width);
    OrlPixels::applyPen(path, pn);
    return path;
}

void veins(Picture& p) {
    // Thin roots that leave the bulb and wander out to the panel's edges.
    for (int k = 0; k < 22; ++k) {
        double a = (k * 360.0 / 22 + 9 * std::sin(k * 1.7)) * PI / 180;
        double r = 150 + 6 * std::sin(k * 2.3);
        Polygon path;
        path.moveTo(BULB_X + r * std::cos(a), BULB_Y + r * std::sin(a));
        const double curl = 0.004 * std::sin(k * 0.9 + 0.4);
        for (int step = 0; step < 60; ++step) {
            r += 4;
            a += curl + 0.01 * std::sin(step * 0.21 + k);
            path.lineTo(BULB_X + r * std::cos(a), BULB_Y + r * std::sin(a));
        }
        const double width = 0.8 + 0.6 * (0.5 + 0.5 * std::sin(k * 3.1));
        p.stroke(path, pen(VEIN, width));
    }
}

void label(Picture& p, const char* text, double centreX, double y) {
    const OrlPixels::FontRef f = OrlPixels::loadBitmapFont("futura14_lt", 2.7);
    const double width = f->measure(text).width;
    p.text("futura14_lt", 2.7, text, std::floor(centreX - width / 2 + 0.5), y, rgba(0x9A, 0xA4, 0x8C));
}

}  // namespace

Picture drawBGOverlay(int scale) {
    Picture p(384, 512, scale);
    p.linear(rect(0, 0, 384, 512), 0, 0, 0, 512, {{0.0, PANEL_TOP}, {1.0, PANEL_BOTTOM}});
    veins(p);
    // Corners fall into shadow.
    p.radial(rect(0, 0, 384, 512), BULB_X, BULB_Y, 330, 360, {{0.0, 0}, {0.6, 0}, {1.0, rgba(0, 0, 0, 0x70)}});

    // The bezel around the key ring, lit from the top left.
    p.linear(ring(BULB_X, BULB_Y, RING_OUTER, RING_OUTER + 9), BULB_X - 150, BULB_Y - 150, BULB_X + 150,
             BULB_Y + 150, {{0.0, rgba(0x9C, 0xA8, 0x88)}, {0.5, rgba(0x3A, 0x42, 0x34)}, {1.0, rgba(0x12, 0x15, 0x10)}});
    // The key ring's groove with the twelve keys marked.
    p.radial(ring(BULB_X, BULB_Y, RING_INNER, RING_OUTER), BULB_X, BULB_Y, RING_OUTER, RING_OUTER,
             {{0.0, rgba(0x1C, 0x22, 0x19)}, {0.8, rgba(0x10, 0x13, 0x0E)}, {1.0, rgba(0x06, 0x07, 0x05)}});
    for (int k = 0; k < 12; ++k) {
        const double a = (k * 30.0 + 105.0) * PI / 180;
        Polygon tick;
        tick.addLine(BULB_X + (RING_INNER + 3) * std::cos(a), BULB_Y + (RING_INNER + 3) * std::sin(a),
                     BULB_X + (RING_OUTER - 3) * std::cos(a), BULB_Y + (RING_OUTER - 3) * std::sin(a));
        p.stroke(tick, pen(rgba(0x4A, 0x56, 0x40), 1.2));
        const double c = (k * 30.0 + 90.0) * PI / 180;
        p.fill(circle(BULB_X + 129.5 * std::cos(c), BULB_Y + 129.5 * std::sin(c), 1.6), rgba(0x3E, 0x4A, 0x34));
    }

    // The bulb: open, so that the plant shows through, with glass over it.
    p.cut(circle(BULB_X, BULB_Y, RING_INNER));
    p.radial(circle(BULB_X, BULB_Y, RING_INNER), BULB_X, BULB_Y, RING_INNER, RING_INNER,
             {{0.0, 0}, {0.85, 0}, {1.0, rgba(0, 0, 0, 0x90)}});
    p.radial(ellipse(BULB_X - 40, BULB_Y - 56, 58, 34), BULB_X - 46, BULB_Y - 64, 62, 38,
             {{0.0, rgba(0xFF, 0xFF, 0xFF, 0x1C)}, {1.0, 0}});

    // Arc slider grooves.
    for (const ArcSocket& a : ARCS) {
        const Polygon path = arc(ARC_X, ARC_Y, ARC_RADIUS, a.start, a.sweep);
        socket(p, outline(path, 13), outline(path, 16), 16);
    }
    // Bottom slider sockets.
    for (double x0 : {20.0, 137.0, 253.0}) {
        socket(p, roundRect(x0 + 6, 452, 104, 19, 9.5), roundRect(x0 + 5, 451, 106, 21, 10.5), 0);
    }
    // Round button sockets and the display's bed.
    for (double cx : {24.5, 65.5, 105.5, 145.5}) socket(p, circle(cx, 49.5, 18), circle(cx, 49.5, 19.5), 0);
    socket(p, roundRect(164, 31, 214, 39, 9), roundRect(163, 30, 216, 41, 10), 0);

    // Names.
    p.text("futura16b_lt", 2.7, "Tendrane", 10, 7, ACCENT);
    label(p, "Tuning", 42, 96);
    label(p, "Atonality", 340, 96);
    label(p, "Effect", 40, 418);
    label(p, "Release", 343, 418);
    label(p, "Wheel Scaling", 78, 478);
    label(p, "Velocity", 195, 478);
    label(p, "Volume", 311, 478);
    return p;
}

Picture drawDisplay(int scale) {
    Picture p(210, 35, scale);
    const Polygon face = roundRect(0.5, 0.5, 209, 34, 8);
    p.linear(face, 0, 0, 0, 35, {{0.0, rgba(0x86, 0xA2, 0x66)}, {1.0, rgba(0x5A, 0x74, 0x44)}});
    // Shade under the rim at the top, gloss over the upper half.
    p.linear(face, 0, 0, 0, 9, {{0.0, rgba(0, 0, 0, 0x70)}, {1.0, 0}});
    p.linear(roundRect(4, 2, 202, 14, 6), 0, 2, 0, 16, {{0.0, rgba(0xFF, 0xFF, 0xFF, 0x30)}, {1.0, 0}});
    // Where the arrows sit.
    for (double x : {35.5, 174.5}) {
        Polygon line;
        line.addLine(x, 7, x, 28);
        p.stroke(line, pen(rgba(0x2E, 0x3C, 0x24, 0x80), 1.0, OrlPixels::BUTT_CAPS));
    }
    p.stroke(face, pen(rgba(0x10, 0x14, 0x0E), 1.0));
    return p;
}

Picture drawDisplayLights(int scale) {
    // Drawn by adding: where it is black it changes nothing.
    Picture p(215, 95, scale);
    p.radial(rect(0, 0, 215, 95), 105, 45, 118, 50,
             {{0.0, rgba(0x30, 0x58, 0x10)}, {0.6, rgba(0x16, 0x2C, 0x06)}, {1.0, rgba(0, 0, 0)}});
    p.linear(roundRect(1, 29, 208, 33, 8), 0, 29, 0, 62, {{0.0, rgba(0x40, 0x4C, 0x20)}, {1.0, rgba(0x20, 0x2A, 0x0C)}});
    return p;
}

Picture drawAboutBoxOverlay(int scale) {
    Picture p(360, 420, scale);
    const Pixel soft = rgba(0xB4, 0xBC, 0xA8);
    p.text("futura18", 2.7, "Tendrane", 196, 28, ACCENT);
    p.text("futura14_lt", 2.7, "a synthesizer grown", 196, 52, soft);
    p.text("futura14_lt", 2.7, "from a seed", 196, 68, soft);
    Polygon rule;
    rule.addLine(196, 92, 342, 92);
    p.stroke(rule, pen(rgba(0x5A, 0x66, 0x4C), 1.0, OrlPixels::BUTT_CAPS));
    // Each line fits between the rule's ends (196 to 342).
    const char* lines[] = {"Twelve branches, one for", "each note of the octave.", "Drag them to grow the",
                           "sound, plant one to start", "anew.", "", "Type: League Spartan and",
                           "Open Sans, under their", "own free licences."};
    double y = 104;
    for (const char* line : lines) {
        p.text("futura14_lt", 2.7, line, 196, y, soft);
        y += 17;
    }
    const OrlPixels::FontRef f = OrlPixels::loadBitmapFont("futura14", 2.7);
    const char* link = "tendrane on the web";
    const double width = f->measure(link).width;
    p.text("futura14", 2.7, link, 342 - width, 392, ACCENT);
    Polygon underline;
    underline.addLine(342 - width, 406.5, 342, 406.5);
    p.stroke(underline, pen(faded(ACCENT, 0.7), 1.0, OrlPixels::BUTT_CAPS));
    return p;
}

}  // namespace artwork
