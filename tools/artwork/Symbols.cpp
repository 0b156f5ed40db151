// The tutorial's icons, packed as the font "spsymbols": characters 1 to 8
// and '?': the Windows control, alt and shift key caps, a small and a full
// command sign, option, control, shift, and the help button. Each glyph
// fills the whole line (20 high, baseline at 15); the page is grey
// coverage like every atlas, so the bubble's style colours the icons.
#include "Symbols.h"

#include <cmath>

#include "Palette.h"
#include "pixels/AngelCode.h"
#include "pixels/BitmapFont.h"
#include "pixels/Png.h"
#include "pixels/Stroking.h"

namespace artwork {

namespace {

constexpr int LINE = 20, BASE = 15;
const Pixel INK = rgba(0xFF, 0xFF, 0xFF);

Picture keyCap(int scale, const char* name) {
    const OrlPixels::FontRef f = OrlPixels::loadBitmapFont("futura14", 1.8);
    const int textWidth = f->measure(name).width;
    const int w = textWidth + 10;
    Picture p(w, LINE, scale);
    p.stroke(roundRect(0.75, 1.75, w - 1.5, 16.5, 3.5), pen(INK, 1.3));
    p.text("futura14", 1.8, name, 5, 3, INK);
    return p;
}

Picture command(int scale, double size) {
    const int w = int(std::ceil(size)) + 3;
    Picture p(w, LINE, scale);
    const double x0 = 1.5 + size * 0.28, x1 = 1.5 + size * 0.72;
    const double y0 = BASE - size + size * 0.28, y1 = BASE - size + size * 0.72;
    const double r = size * 0.17, width = size > 10 ? 1.4 : 1.1;
    Polygon square = polyline({{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}}, true);
    p.stroke(square, pen(INK, width));
    for (auto [cx, cy] : {std::pair{x0 - r, y0 - r}, {x1 + r, y0 - r}, {x1 + r, y1 + r}, {x0 - r, y1 + r}})
        p.stroke(circle(cx, cy, r), pen(INK, width));
    return p;
}

Picture option(int scale) {
    Picture p(15, LINE, scale);
    p.stroke(polyline({{1, 5}, {5, 5}, {10, BASE}, {14, BASE}}, false), pen(INK, 1.5, OrlPixels::BUTT_CAPS));
    p.stroke(polyline({{9, 5}, {14, 5}}, false), pen(INK, 1.5, OrlPixels::BUTT_CAPS));
    return p;
}

Picture control(int scale) {
    Picture p(13, LINE, scale);
    p.stroke(polyline({{2, 10}, {6.5, 5}, {11, 10}}, false), pen(INK, 1.5));
    return p;
}

Picture shift(int scale) {
    Picture p(14, LINE, scale);
    p.stroke(polyline({{7, 3}, {12.5, 9}, {9.5, 9}, {9.5, BASE - 0.5}, {4.5, BASE - 0.5}, {4.5, 9}, {1.5, 9}}, true),
             pen(INK, 1.3, OrlPixels::ROUND_CAPS, OrlPixels::MITER_JOINTS));
    return p;
}

Picture helpButton(int scale) {
    Picture p(16, LINE, scale);
    const double c = 8, cy = 9.5;
    p.fill(circle(c, cy, 7), INK);
    Polygon hook = arc(c, cy - 2, 2.6, 180, 240);
    hook.lineTo(c, cy + 1.8);
    OrlPixels::Pen cutPen = pen(INK, 1.7);
    OrlPixels::applyPen(hook, cutPen);
    p.cut(hook);
    p.cut(circle(c, cy + 4.3, 1.1));
    return p;
}

}  // namespace

BakedSymbols drawSymbols(int scale) {
    std::vector<std::pair<int, Picture>> glyphs;
    glyphs.emplace_back('1', keyCap(scale, "Ctrl"));
    glyphs.emplace_back('2', keyCap(scale, "Alt"));
    glyphs.emplace_back('3', keyCap(scale, "Shift"));
    glyphs.emplace_back('4', command(scale, 9));
    glyphs.emplace_back('5', command(scale, 12));
    glyphs.emplace_back('6', option(scale));
    glyphs.emplace_back('7', control(scale));
    glyphs.emplace_back('8', shift(scale));
    glyphs.emplace_back('?', helpButton(scale));

    const int pageWidth = 256 * scale, pageHeight = 32 * scale;
    std::vector<OrlPixels::Coverage> page(std::size_t(pageWidth) * std::size_t(pageHeight), 0);
    OrlAngelCode::Description d;
    d.info.face = "spsymbols";
    d.info.size = LINE * scale;
    d.info.smooth = true;
    d.info.spacing[0] = d.info.spacing[1] = 1;
    d.common.lineHeight = LINE * scale;
    d.common.base = BASE * scale;
    d.common.scaleW = pageWidth;
    d.common.scaleH = pageHeight;
    d.pages[0] = "spsymbols_0.png";
    int x = 1;
    for (const auto& [code, picture] : glyphs) {
        for (int yy = 0; yy < picture.height(); ++yy)
            for (int xx = 0; xx < picture.width(); ++xx)
                page[std::size_t(yy + 1) * std::size_t(pageWidth) + std::size_t(x + xx)] =
                    OrlPixels::Coverage(picture.pixels()[std::size_t(yy) * std::size_t(picture.width()) +
                                                         std::size_t(xx)] >> 24);
        OrlAngelCode::Char c;
        c.x = x;
        c.y = 1;
        c.width = picture.width();
        c.height = picture.height();
        c.xadvance = picture.width() + 2 * scale;
        d.chars[code] = c;
        x += picture.width() + 1;
    }
    BakedSymbols out;
    out.description = OrlAngelCode::write(d);
    out.page = OrlPixels::encodeGreyPng(page.data(), pageWidth, pageHeight, pageWidth);
    return out;
}

}  // namespace artwork
