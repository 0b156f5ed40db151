// A small font made in the test: glyphs are filled boxes of known sizes on
// one atlas page, so where a glyph lands can be read off the pixels.
#pragma once

#include <string>
#include <vector>

#include "pixels/BitmapFont.h"
#include "pixels/Png.h"

namespace fonttest {

using namespace OrlPixels;

// 'A' a 4 x 6 box advancing 5, 'V' a 3 x 6 box advancing 4, ' ' no pixels
// advancing 3, 'g' a 2 x 3 box of half coverage advancing 3. Kerning A,V -2.
inline std::string description() {
    return "info face=\"Boxes\" size=8 bold=0 italic=0 charset=\"\" unicode=0 stretchH=100 smooth=1 aa=1 "
           "padding=0,0,0,0 spacing=1,1\n"
           "common lineHeight=9 base=7 scaleW=16 scaleH=8 pages=1 packed=0\n"
           "page id=0 file=\"boxes_0.png\"\n"
           "chars count=4\n"
           "char id=65 x=0 y=0 width=4 height=6 xoffset=0 yoffset=1 xadvance=5 page=0 chnl=15\n"
           "char id=86 x=5 y=0 width=3 height=6 xoffset=1 yoffset=1 xadvance=4 page=0 chnl=15\n"
           "char id=32 x=0 y=0 width=0 height=0 xoffset=0 yoffset=0 xadvance=3 page=0 chnl=15\n"
           "char id=103 x=9 y=0 width=2 height=3 xoffset=0 yoffset=4 xadvance=3 page=0 chnl=15\n"
           "kernings count=1\n"
           "kerning first=65 second=86 amount=-2\n";
}

// The page: grey values are the coverage.
inline std::string pagePng() {
    std::vector<Coverage> pixels(16 * 8, 0);
    auto box = [&](int x0, int w, int h, Coverage p) {
        for (int y = 0; y < h; ++y)
            for (int x = x0; x < x0 + w; ++x) pixels[std::size_t(y) * 16 + std::size_t(x)] = p;
    };
    box(0, 4, 6, 255);
    box(5, 3, 6, 255);
    box(9, 2, 3, 128);
    const std::vector<std::uint8_t> png = encodeGreyPng(pixels.data(), 16, 8, 16);
    return std::string(png.begin(), png.end());
}

inline FontRef boxes(double gamma = 0) {
    static const std::string page = pagePng();
    return bitmapFontFromData(description(), {{"boxes_0.png", page}}, gamma);
}

}  // namespace fonttest
