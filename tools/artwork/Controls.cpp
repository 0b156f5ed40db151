// Knobs, slider caps, the seed and the buttons with their icons.
#include <cmath>

#include "Images.h"
#include "Palette.h"

namespace artwork {

namespace {

constexpr double PI = 3.14159265358979323846;

// A glass dome: body gradient lit from the top left, a rim, a highlight.
void dome(Picture& p, double cx, double cy, double r, Pixel light, Pixel dark, double highlight) {
    p.fill(circle(cx + 1.0, cy + 1.5, r + 0.5), rgba(0, 0, 0, 0x60));
    p.radial(circle(cx, cy, r), cx - r * 0.45, cy - r * 0.5, r * 1.6, r * 1.6, {{0.0, light}, {1.0, dark}});
    p.stroke(circle(cx, cy, r - 0.5), pen(rgba(0, 0, 0, 0x80), 1.0));
    if (highlight > 0)
        p.radial(ellipse(cx - r * 0.3, cy - r * 0.42, r * 0.55, r * 0.36), cx - r * 0.3, cy - r * 0.48, r * 0.6,
                 r * 0.42, {{0.0, faded(rgba(0xFF, 0xFF, 0xFF), highlight)}, {1.0, 0}});
}

}  // namespace

Picture drawKnob(int scale, int size, Pixel body, Pixel shade) {
    // Drawn at twice the cap's size: the slider shows it at half.
    Picture p(size, size, scale);
    const double c = size / 2.0, r = size / 2.0 - 3;
    dome(p, c, c, r, body, shade, 0.85);
    // A pointer groove from the centre outwards, towards the top.
    Polygon mark;
    mark.addLine(c, c - r * 0.35, c, c - r * 0.82);
    p.stroke(mark, pen(faded(shade, 1.0), size / 14.0));
    return p;
}

Picture drawBottomSlider(int scale) {
    Picture p(56, 40, scale);
    p.fill(roundRect(5, 7, 48, 30, 15), rgba(0, 0, 0, 0x60));
    const Polygon body = roundRect(3, 4, 48, 30, 15);
    p.linear(body, 0, 4, 0, 34, {{0.0, PEARL}, {0.55, rgba(0xD8, 0xD8, 0xCE)}, {1.0, PEARL_SHADE}});
    p.stroke(body, pen(rgba(0, 0, 0, 0x80), 1.5));
    p.linear(roundRect(9, 7, 36, 11, 5.5), 0, 7, 0, 18, {{0.0, rgba(0xFF, 0xFF, 0xFF, 0xC0)}, {1.0, 0}});
    Polygon groove;
    groove.addLine(27, 11, 27, 27);
    p.stroke(groove, pen(rgba(0x60, 0x64, 0x5A), 3));
    return p;
}

Picture drawBottomSliderTrack(int scale) {
    Picture p(87, 5, scale);
    const Polygon track = roundRect(0.5, 0.5, 86, 4, 2);
    p.linear(track, 0, 0, 0, 5, {{0.0, rgba(0x02, 0x03, 0x02)}, {1.0, rgba(0x24, 0x2C, 0x20)}});
    p.linear(roundRect(1.5, 1.5, 84, 2, 1), 0, 0, 87, 0, {{0.0, faded(ACCENT_DEEP, 0.5)}, {1.0, faded(ACCENT, 0.8)}});
    return p;
}

Picture drawSeed(int scale, int size) {
    // A seed lying at a slant, its germ glowing green at the tip.
    Picture p(size, size, scale);
    const double c = size / 2.0, k = size / 25.0;
    Polygon body = ellipse(0, 0, 10 * k, 6.5 * k);
    const auto place = OrlPixels::AffineTransformation::rotation(-35 * PI / 180)
                           .then(OrlPixels::AffineTransformation::translation(c, c));
    Polygon shadow = body;
    shadow.transform(place.then(OrlPixels::AffineTransformation::translation(1 * k, 1.5 * k)));
    p.fill(shadow, rgba(0, 0, 0, 0x70));
    body.transform(place);
    p.radial(body, c - 3 * k, c - 4 * k, 13 * k, 13 * k,
             {{0.0, rgba(0xD8, 0xC0, 0x80)}, {0.5, rgba(0x9A, 0x72, 0x38)}, {1.0, rgba(0x4A, 0x32, 0x14)}});
    p.stroke(body, pen(rgba(0x2A, 0x1C, 0x0A, 0xC0), 0.8 * k));
    Polygon germ = ellipse(6 * k, 0, 3 * k, 2.2 * k);
    germ.transform(place);
    p.radial(germ, c + 5 * k, c - 4 * k, 5 * k, 5 * k, {{0.0, rgba(0xD0, 0xFF, 0x80)}, {1.0, ACCENT_DEEP}});
    Polygon shine = ellipse(-2 * k, -3 * k, 4 * k, 1.5 * k);
    shine.transform(place);
    p.fill(shine, rgba(0xFF, 0xFF, 0xF0, 0x60));
    return p;
}

Picture drawRoundButtonFilm(int scale, bool disabled) {
    std::vector<Picture> frames;
    for (int down = 0; down < 2; ++down) {
        Picture f(41, 41, scale);
        const double c = 20.5 + (down ? 0.5 : 0.0);
        if (disabled)
            dome(f, 20.5, 20.5, 16, rgba(0x3A, 0x40, 0x36), rgba(0x1C, 0x20, 0x1A), 0.15);
        else if (down)
            dome(f, c, c, 16, rgba(0x2E, 0x36, 0x2A), rgba(0x10, 0x13, 0x0E), 0.2);
        else
            dome(f, c, c, 16, rgba(0x5C, 0x68, 0x54), rgba(0x1A, 0x1F, 0x18), 0.45);
        frames.push_back(std::move(f));
    }
    return filmOf(frames);
}

Picture drawDNAButtonFilm(int scale) {
    // Frames: up, down, chosen, chosen and down.
    std::vector<Picture> frames;
    for (int state = 0; state < 4; ++state) {
        const bool down = state % 2 == 1, chosen = state >= 2;
        Picture f(41, 41, scale);
        const double c = 20.5 + (down ? 0.5 : 0.0);
        if (chosen) {
            f.radial(circle(c, c, 20), c, c, 20, 20, {{0.0, faded(ACCENT, 0.45)}, {1.0, 0}});
            dome(f, c, c, 16, rgba(0x6C, 0xA0, 0x3A), rgba(0x1C, 0x3A, 0x0C), down ? 0.2 : 0.45);
        } else {
            dome(f, c, c, 16, down ? rgba(0x2E, 0x36, 0x2A) : rgba(0x5C, 0x68, 0x54),
                 down ? rgba(0x10, 0x13, 0x0E) : rgba(0x1A, 0x1F, 0x18), down ? 0.2 : 0.45);
        }
        // A short double helix.
        const Pixel ink = chosen ? rgba(0xF0, 0xFF, 0xD8) : SYMBOL_LIGHT;
        Polygon a, b;
        for (int i = 0; i <= 24; ++i) {
            const double y = c - 10 + 20.0 * i / 24;
            const double x = 4.5 * std::sin(i / 24.0 * 2 * PI);
            if (i == 0) {
                a.moveTo(c + x, y);
                b.moveTo(c - x, y);
            } else {
                a.lineTo(c + x, y);
                b.lineTo(c - x, y);
            }
        }
        f.stroke(a, pen(ink, 1.6));
        f.stroke(b, pen(faded(ink, 0.7), 1.6));
        for (int i = 1; i < 6; ++i) {
            const double t = i / 6.0, y = c - 10 + 20 * t, x = 4.5 * std::sin(t * 2 * PI);
            Polygon rung;
            rung.addLine(c - x, y, c + x, y);
            f.stroke(rung, pen(faded(ink, 0.6), 1.0, OrlPixels::BUTT_CAPS));
        }
        frames.push_back(std::move(f));
    }
    return filmOf(frames);
}

Picture drawMenuIcon(int scale, bool disabled) {
    Picture p(41, 41, scale);
    const Pixel ink = disabled ? SYMBOL_DIM : SYMBOL_LIGHT;
    for (int i = -1; i <= 1; ++i) {
        Polygon line;
        line.addLine(13.5, 20.5 + 5 * i, 27.5, 20.5 + 5 * i);
        p.stroke(line, pen(ink, 2.2));
    }
    return p;
}

Picture drawUndoIcon(int scale, bool redo, bool disabled) {
    Picture p(41, 41, scale);
    const Pixel ink = disabled ? SYMBOL_DIM : SYMBOL_LIGHT;
    // A hooked arrow: a half turn ending in a head, pointing back (undo)
    // or forward (redo).
    Polygon hook = arc(20.5, 22, 7, -90, 180);
    Polygon tail;
    tail.addLine(20.5, 29, 15, 29);
    Polygon head = polyline({{17.5, 10.5}, {12.5, 15}, {17.5, 19.5}}, false);
    Polygon straight;
    straight.addLine(20.5, 15, 13, 15);
    auto mirror = [&](Polygon& path) {
        if (redo)
            path.transform(OrlPixels::AffineTransformation::scaling(-1, 1).then(
                OrlPixels::AffineTransformation::translation(41, 0)));
    };
    mirror(hook);
    mirror(tail);
    mirror(head);
    mirror(straight);
    p.stroke(hook, pen(ink, 2.2));
    p.stroke(tail, pen(ink, 2.2));
    p.stroke(straight, pen(ink, 2.2));
    p.stroke(head, pen(ink, 2.2));
    return p;
}

Picture drawArrow(int scale, bool right, bool disabled) {
    Picture p(35, 35, scale);
    // Centred in the button's click area of 20 x 25 at (5, 5) or (11, 5).
    const double cx = right ? 21 : 15, cy = 17.5;
    const double d = right ? 1 : -1;
    const Polygon head = polyline({{cx - 3 * d, cy - 6}, {cx + 4 * d, cy}, {cx - 3 * d, cy + 6}}, true);
    p.fill(head, disabled ? rgba(0x3A, 0x4A, 0x30, 0x70) : rgba(0x16, 0x22, 0x10, 0xE0));
    return p;
}

Picture drawDisplayButtonFilm(int scale, bool right) {
    // Up: nothing over the display; down: that end of the display pressed in.
    std::vector<Picture> frames;
    frames.emplace_back(35, 35, scale);
    Picture down(35, 35, scale);
    const Polygon area = right ? roundRect(9, 1, 25, 33, 7) : roundRect(1, 1, 25, 33, 7);
    down.linear(area, 0, 1, 0, 34, {{0.0, rgba(0, 0, 0, 0x60)}, {1.0, rgba(0, 0, 0, 0x28)}});
    frames.push_back(std::move(down));
    return filmOf(frames);
}

Picture drawCloseCross(int scale, bool white) {
    std::vector<Picture> frames;
    for (int down = 0; down < 2; ++down) {
        Picture f(16, 16, scale);
        const double c = 8 + (down ? 0.5 : 0.0);
        if (!white) {
            f.fill(circle(c, c, 7.5), down ? rgba(0x10, 0x14, 0x0E, 0xE0) : rgba(0x30, 0x38, 0x2C, 0xE0));
            f.stroke(circle(c, c, 7), pen(rgba(0x80, 0x8C, 0x74, 0xA0), 1.0));
        }
        const Pixel ink = white ? (down ? rgba(0xA0, 0xA0, 0xA0) : rgba(0xFF, 0xFF, 0xFF)) : SYMBOL_LIGHT;
        Polygon a, b;
        a.addLine(c - 3.5, c - 3.5, c + 3.5, c + 3.5);
        b.addLine(c + 3.5, c - 3.5, c - 3.5, c + 3.5);
        f.stroke(a, pen(ink, 1.8));
        f.stroke(b, pen(ink, 1.8));
        frames.push_back(std::move(f));
    }
    return filmOf(frames);
}

Picture drawNavFilm(int scale, int which, bool disabled) {
    // The tutorial's buttons sit on the light bubble.
    std::vector<Picture> frames;
    for (int down = 0; down < (disabled ? 1 : 2); ++down) {
        Picture f(33, 23, scale);
        const Polygon body = roundRect(1.5, 1.5, 30, 20, 6);
        if (!disabled) f.fill(roundRect(2.5, 3, 30, 20, 6), rgba(0, 0, 0, 0x30));
        f.linear(body, 0, 1, 0, 22,
                 down ? std::vector<GradientStop>{{0.0, rgba(0xB0, 0xB4, 0xA8)}, {1.0, rgba(0xD0, 0xD4, 0xC8)}}
                      : std::vector<GradientStop>{{0.0, rgba(0xFA, 0xFA, 0xF4)}, {1.0, rgba(0xCC, 0xD0, 0xC4)}});
        f.stroke(body, pen(disabled ? rgba(0, 0, 0, 0x30) : rgba(0, 0, 0, 0x70), 1.0));
        const Pixel ink = disabled ? rgba(0, 0, 0, 0x40) : SYMBOL_DARK;
        const double cx = 16.5 + (down ? 0.5 : 0.0), cy = 11.5 + (down ? 0.5 : 0.0);
        if (which == 2) {
            Polygon a, b;
            a.addLine(cx - 4, cy - 4, cx + 4, cy + 4);
            b.addLine(cx + 4, cy - 4, cx - 4, cy + 4);
            f.stroke(a, pen(ink, 2.0));
            f.stroke(b, pen(ink, 2.0));
        } else {
            const double d = which == 1 ? 1 : -1;
            f.fill(polyline({{cx - 3.5 * d, cy - 5.5}, {cx + 4.5 * d, cy}, {cx - 3.5 * d, cy + 5.5}}, true), ink);
        }
        frames.push_back(std::move(f));
    }
    return filmOf(frames);
}

Picture drawHelpButtonFilm(int scale) {
    std::vector<Picture> frames;
    for (int down = 0; down < 2; ++down) {
        Picture f(24, 24, scale);
        const double c = 12 + (down ? 0.5 : 0.0);
        dome(f, c, c, 10, down ? rgba(0x4A, 0x7A, 0x26) : rgba(0x7A, 0xB8, 0x40), rgba(0x1E, 0x3C, 0x0A),
             down ? 0.2 : 0.5);
        Polygon hook = arc(c, c - 2.2, 3.2, 180, 240);
        hook.lineTo(c, c + 2.2);
        f.stroke(hook, pen(rgba(0xF4, 0xFF, 0xE8), 1.8));
        f.fill(circle(c, c + 5.2, 1.2), rgba(0xF4, 0xFF, 0xE8));
        frames.push_back(std::move(f));
    }
    return filmOf(frames);
}

}  // namespace artwork
