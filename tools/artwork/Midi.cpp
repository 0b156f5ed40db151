// The controller overlay: the label plates of the controller numbers and
// the small characters the numbers are written in.
#include <cmath>

#include "Images.h"
#include "Palette.h"

namespace artwork {

namespace {

using Stroke = std::vector<std::pair<double, double>>;

struct Glyph {
    char c;
    std::vector<Stroke> strokes;  // on a grid 4 wide, 8 high, baseline at 8
};

const std::vector<Glyph>& glyphs() {
    static const std::vector<Glyph> table = {
        {'0', {{{0, 1}, {1, 0}, {3, 0}, {4, 1}, {4, 7}, {3, 8}, {1, 8}, {0, 7}, {0, 1}}}},
        {'1', {{{1, 1.5}, {2.5, 0}, {2.5, 8}}}},
        {'2', {{{0, 1}, {1, 0}, {3, 0}, {4, 1}, {4, 3}, {0, 8}, {4, 8}}}},
        {'3', {{{0, 0}, {4, 0}, {2, 3.5}, {3, 3.5}, {4, 4.5}, {4, 7}, {3, 8}, {1, 8}, {0, 7}}}},
        {'4', {{{3, 8}, {3, 0}, {0, 5.5}, {4, 5.5}}}},
        {'5', {{{4, 0}, {0.5, 0}, {0, 3.5}, {3, 3.5}, {4, 4.5}, {4, 7}, {3, 8}, {0, 8}}}},
        {'6', {{{3.5, 0}, {1, 0}, {0, 1.5}, {0, 7}, {1, 8}, {3, 8}, {4, 7}, {4, 4.5}, {3, 3.5}, {0, 3.5}}}},
        {'7', {{{0, 0}, {4, 0}, {1.5, 8}}}},
        {'8',
         {{{1, 0}, {3, 0}, {4, 1}, {4, 2.5}, {3, 3.7}, {1, 3.7}, {0, 2.5}, {0, 1}, {1, 0}},
          {{1, 3.7}, {3, 3.7}, {4, 5}, {4, 7}, {3, 8}, {1, 8}, {0, 7}, {0, 5}, {1, 3.7}}}},
        {'9', {{{0.5, 8}, {3, 8}, {4, 6.5}, {4, 1}, {3, 0}, {1, 0}, {0, 1}, {0, 3.5}, {1, 4.5}, {4, 4.5}}}},
        {'a', {{{0.5, 3}, {3, 3}, {4, 4}, {4, 8}}, {{4, 5.5}, {1, 5.5}, {0, 6.5}, {0, 7.2}, {1, 8}, {4, 8}}}},
        {'b', {{{0, 0}, {0, 8}, {3, 8}, {4, 7}, {4, 4}, {3, 3}, {0, 3}}}},
        {'c', {{{4, 3}, {1, 3}, {0, 4}, {0, 7}, {1, 8}, {4, 8}}}},
        {'d', {{{4, 0}, {4, 8}, {1, 8}, {0, 7}, {0, 4}, {1, 3}, {4, 3}}}},
        {'e', {{{0, 5.5}, {4, 5.5}, {4, 4}, {3, 3}, {1, 3}, {0, 4}, {0, 7}, {1, 8}, {4, 8}}}},
        {'f', {{{4, 0}, {2.5, 0}, {1.5, 1}, {1.5, 8}}, {{0, 3}, {3.5, 3}}}},
        {'g', {{{4, 3}, {4, 9}, {3, 9.8}, {0.5, 9.8}}, {{4, 3}, {1, 3}, {0, 4}, {0, 6}, {1, 7}, {4, 7}}}},
        {'#', {{{1, 1}, {1, 7.5}}, {{3, 1}, {3, 7.5}}, {{0, 3}, {4, 3}}, {{0, 5.5}, {4, 5.5}}}},
        {'-', {{{0.5, 4.5}, {3.5, 4.5}}}},
        {'?', {{{0, 1}, {1, 0}, {3, 0}, {4, 1}, {4, 2.5}, {2, 4.5}, {2, 6}}}},
    };
    return table;
}

}  // namespace

Picture drawMIDILabelCharacters(int scale) {
    // One frame of 6 x 12 a character, across; white, so that the font's
    // colour tints them. The baseline lies 10 pixels down.
    const std::vector<Glyph>& g = glyphs();
    Picture p(6 * int(g.size()), 12, scale);
    for (std::size_t i = 0; i < g.size(); ++i) {
        const double x0 = 6.0 * double(i) + 1.0, y0 = 2.0;
        for (const Stroke& s : g[i].strokes) {
            Polygon path;
            bool first = true;
            for (const auto& [x, y] : s) {
                if (first) path.moveTo(x0 + x, y0 + y);
                else path.lineTo(x0 + x, y0 + y);
                first = false;
            }
            p.stroke(path, pen(rgba(0xFF, 0xFF, 0xFF), 1.1));
        }
        if (g[i].c == '?') p.fill(circle(x0 + 2, y0 + 7.9, 0.75), rgba(0xFF, 0xFF, 0xFF));
    }
    return p;
}

Picture drawCCBackgrounds(int scale, const char* label, int width) {
    // Frames: the plate at rest, and lit while it listens for a controller.
    std::vector<Picture> frames;
    for (int lit = 0; lit < 2; ++lit) {
        Picture f(width, 18, scale);
        const double numberLeft = label != nullptr ? width - 38.0 : 0.0;
        if (label != nullptr) {
            const Polygon name = roundRect(0.5, 0.5, width - 1.0, 17, 5);
            f.fill(name, rgba(0x14, 0x18, 0x12, 0xE0));
            f.stroke(name, pen(faded(ACCENT, 0.6), 1.0));
            f.text("futura14", 2.7, label, 6, 1, SYMBOL_LIGHT);
        }
        const Polygon plate = label != nullptr ? roundRect(numberLeft + 1.5, 1.5, 35, 15, 4) : roundRect(0.5, 1.5, 34, 15, 4);
        f.linear(plate, 0, 1, 0, 17,
                 lit ? std::vector<GradientStop>{{0.0, rgba(0xD4, 0xFF, 0x90)}, {1.0, rgba(0x8C, 0xE0, 0x2C)}}
                     : std::vector<GradientStop>{{0.0, rgba(0xEC, 0xEE, 0xE2)}, {1.0, rgba(0xB8, 0xBE, 0xAC)}});
        f.stroke(plate, pen(rgba(0x10, 0x14, 0x0E), 1.0));
        frames.push_back(std::move(f));
    }
    return filmOf(frames);
}

}  // namespace artwork
