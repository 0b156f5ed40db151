#include "Baker.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_SYNTHESIS_H
#include FT_TRUETYPE_TABLES_H
#include FT_TRUETYPE_TAGS_H

#include <algorithm>
#include <stdexcept>

#include "GposKerning.h"
#include "pixels/AngelCode.h"
#include "pixels/Png.h"
#include "platform/SystemCodePage.h"

namespace fontbake {

namespace {

constexpr int PAGE_WIDTH = 256;
constexpr int SPACING = 1;

// The code point of each byte of the system's 8-bit text; 0 where there is
// none, control bytes included.
unsigned codePoint(int byte) {
    if (byte < 32 || byte == 127) return 0;
    return platform::systemCodePoint(static_cast<unsigned char>(byte));
}

struct Glyph {
    int code = 0;
    unsigned index = 0;
    int width = 0;
    int height = 0;
    int left = 0;
    int top = 0;
    int advance = 0;
    std::vector<std::uint8_t> pixels;
    int x = 0;
    int y = 0;
};

class Face {
public:
    explicit Face(const std::string& file) {
        if (FT_Init_FreeType(&library_) != 0) throw std::runtime_error("FreeType does not start");
        if (FT_New_Face(library_, file.c_str(), 0, &face_) != 0) {
            FT_Done_FreeType(library_);
            throw std::runtime_error("cannot read the face " + file +
                                     " (tools/setup-debian.sh tools installs the font packages)");
        }
    }
    ~Face() {
        FT_Done_Face(face_);
        FT_Done_FreeType(library_);
    }
    FT_Face operator->() const { return face_; }
    FT_Face get() const { return face_; }

    std::vector<std::uint8_t> table(FT_ULong tag) const {
        FT_ULong length = 0;
        if (FT_Load_Sfnt_Table(face_, tag, 0, nullptr, &length) != 0 || length == 0) return {};
        std::vector<std::uint8_t> bytes(length);
        if (FT_Load_Sfnt_Table(face_, tag, 0, bytes.data(), &length) != 0) return {};
        return bytes;
    }

private:
    FT_Library library_ = nullptr;
    FT_Face face_ = nullptr;
};

int roundedPixels(FT_Pos v) { return int((v + 32) >> 6); }

Glyph render(const Face& face, int code, bool oblique) {
    Glyph g;
    g.code = code;
    g.index = FT_Get_Char_Index(face.get(), codePoint(code));
    if (g.index == 0) return g;
    if (FT_Load_Glyph(face.get(), g.index, FT_LOAD_TARGET_LIGHT) != 0) {
        g.index = 0;
        return g;
    }
    FT_GlyphSlot slot = face->glyph;
    if (oblique) FT_GlyphSlot_Oblique(slot);
    g.advance = roundedPixels(slot->advance.x);
    if (FT_Render_Glyph(slot, FT_RENDER_MODE_LIGHT) != 0) return g;
    const FT_Bitmap& b = slot->bitmap;
    if (b.pixel_mode != FT_PIXEL_MODE_GRAY) return g;
    g.width = int(b.width);
    g.height = int(b.rows);
    g.left = slot->bitmap_left;
    g.top = slot->bitmap_top;
    g.pixels.resize(std::size_t(g.width) * std::size_t(g.height));
    for (int y = 0; y < g.height; ++y)
        std::copy_n(b.buffer + std::ptrdiff_t(y) * b.pitch, g.width, g.pixels.begin() + std::ptrdiff_t(y) * g.width);
    return g;
}

// Shelves, tallest glyphs first; returns the height used.
int pack(std::vector<Glyph*> glyphs, int pageWidth) {
    std::stable_sort(glyphs.begin(), glyphs.end(), [](const Glyph* a, const Glyph* b) { return a->height > b->height; });
    int x = SPACING, y = SPACING, shelf = 0;
    for (Glyph* g : glyphs) {
        if (g->width == 0 || g->height == 0) continue;
        if (x + g->width + SPACING > pageWidth) {
            x = SPACING;
            y += shelf + SPACING;
            shelf = 0;
        }
        g->x = x;
        g->y = y;
        x += g->width + SPACING;
        shelf = std::max(shelf, g->height);
    }
    return y + shelf + SPACING;
}

}  // namespace

BakedFiles bake(const BakeRequest& request) {
    const Face face(request.faceFile);
    const int pixels = request.pixelSize * request.scale;
    if (FT_Set_Pixel_Sizes(face.get(), 0, FT_UInt(pixels)) != 0)
        throw std::runtime_error("the face " + request.faceFile + " has no size " + std::to_string(pixels));

    std::vector<Glyph> glyphs;
    for (int code = 32; code < 256; ++code) {
        Glyph g = render(face, code, request.oblique);
        if (g.index != 0) glyphs.push_back(std::move(g));
    }
    std::vector<Glyph*> order;
    for (Glyph& g : glyphs) order.push_back(&g);
    const int pageWidth = PAGE_WIDTH * request.scale;
    const int used = pack(order, pageWidth);
    int pageHeight = 16;
    while (pageHeight < used) pageHeight *= 2;

    std::vector<std::uint8_t> page(std::size_t(pageWidth) * std::size_t(pageHeight), 0);
    for (const Glyph& g : glyphs)
        for (int y = 0; y < g.height; ++y)
            std::copy_n(g.pixels.begin() + std::ptrdiff_t(y) * g.width, g.width,
                        page.begin() + std::ptrdiff_t(g.y + y) * pageWidth + g.x);

    const FT_Size_Metrics& m = face->size->metrics;
    OrlAngelCode::Description d;
    d.info.face = face->family_name ? face->family_name : "";
    d.info.size = pixels;
    d.info.bold = (face->style_flags & FT_STYLE_FLAG_BOLD) != 0;
    d.info.italic = request.oblique || (face->style_flags & FT_STYLE_FLAG_ITALIC) != 0;
    d.info.smooth = true;
    d.info.spacing[0] = d.info.spacing[1] = SPACING;
    d.common.base = roundedPixels(m.ascender);
    d.common.lineHeight = d.common.base + roundedPixels(-m.descender);
    d.common.scaleW = pageWidth;
    d.common.scaleH = pageHeight;
    d.pages[0] = request.name + "_0.png";
    for (const Glyph& g : glyphs) {
        OrlAngelCode::Char c;
        c.x = g.x;
        c.y = g.y;
        c.width = g.width;
        c.height = g.height;
        c.xoffset = g.left;
        c.yoffset = d.common.base - g.top;
        c.xadvance = g.advance;
        d.chars[g.code] = c;
    }

    // Kerning between the printable ASCII characters, from the positioning
    // table when the face has one, else from its kerning table.
    const GposKerning gpos(face.table(TTAG_GPOS));
    for (const Glyph& a : glyphs) {
        if (a.code > 126) continue;
        for (const Glyph& b : glyphs) {
            if (b.code > 126) continue;
            FT_Pos amount = 0;
            if (!gpos.empty()) {
                const int units = gpos.kerning(a.index, b.index);
                amount = FT_MulFix(units, m.x_scale);  // 26.6 pixels
            } else if (FT_HAS_KERNING(face.get())) {
                FT_Vector delta{0, 0};
                if (FT_Get_Kerning(face.get(), a.index, b.index, FT_KERNING_UNFITTED, &delta) == 0) amount = delta.x;
            }
            const int px = roundedPixels(amount);
            if (px != 0) d.kernings[{a.code, b.code}] = px;
        }
    }

    BakedFiles out;
    out.description = OrlAngelCode::write(d);
    out.page = OrlPixels::encodeGreyPng(page.data(), pageWidth, pageHeight, pageWidth);
    return out;
}

}  // namespace fontbake
