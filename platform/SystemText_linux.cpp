// System text on Linux: FreeType draws, fontconfig finds a face that a
// layout names. The default face is opened by path from a font package that
// the project's set-up installs, so that every machine draws it alike.
#include "platform/SystemText.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <cctype>
#include <cmath>

#include "platform/Exceptions.h"
#include "platform/SystemCodePage.h"

namespace platform {

namespace {

// fonts-dejavu-core
constexpr const char* DEFAULT_FACE_FILES[4] = {
    "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
    "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf",
    "/usr/share/fonts/truetype/dejavu/DejaVuSans-Oblique.ttf",
    "/usr/share/fonts/truetype/dejavu/DejaVuSans-BoldOblique.ttf",
};

bool sameName(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

// The file of a named family in the wanted style, when fontconfig has that
// family; empty otherwise.
std::string findFaceFile(const SystemTextStyle& style) {
    if (style.face.empty() || sameName(style.face, DEFAULT_SYSTEM_FACE)) return {};
    if (!FcInit()) return {};
    FcPattern* pattern = FcPatternCreate();
    FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(style.face.c_str()));
    FcPatternAddInteger(pattern, FC_WEIGHT, style.bold ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
    FcPatternAddInteger(pattern, FC_SLANT, style.italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
    FcDefaultSubstitute(pattern);
    FcResult result = FcResultNoMatch;
    FcPattern* match = FcFontMatch(nullptr, pattern, &result);
    std::string file;
    if (match != nullptr) {
        FcChar8* family = nullptr;
        FcChar8* path = nullptr;
        if (FcPatternGetString(match, FC_FAMILY, 0, &family) == FcResultMatch &&
            FcPatternGetString(match, FC_FILE, 0, &path) == FcResultMatch &&
            sameName(reinterpret_cast<const char*>(family), style.face))
            file = reinterpret_cast<const char*>(path);
        FcPatternDestroy(match);
    }
    FcPatternDestroy(pattern);
    return file;
}

class FreeTypeFace : public SystemTextFace {
public:
    explicit FreeTypeFace(const SystemTextStyle& style) : underline_(style.underline) {
        std::string file = findFaceFile(style);
        if (file.empty()) file = DEFAULT_FACE_FILES[(style.bold ? 1 : 0) + (style.italic ? 2 : 0)];
        const std::string name = style.face.empty() ? DEFAULT_SYSTEM_FACE : style.face;
        if (FT_Init_FreeType(&library_) != 0) throw Exception("Could not obtain font : " + name);
        if (FT_New_Face(library_, file.c_str(), 0, &face_) != 0) {
            FT_Done_FreeType(library_);
            throw Exception("Could not obtain font : " + name);
        }
        // Sizes outside what a panel can show are held at its limits.
        const double points = style.size > 1.0 ? std::min(style.size, 500.0) : 1.0;
        const int pixels = std::max(1, int(std::floor(points * 96.0 / 72.0 + 0.5)));
        FT_Set_Pixel_Sizes(face_, 0, FT_UInt(pixels));
        const FT_Size_Metrics& m = face_->size->metrics;
        ascent_ = int((m.ascender + 63) / 64);
        lineHeight_ = ascent_ + int((-m.descender + 63) / 64);
        if (FT_IS_SCALABLE(face_)) {
            const double scale = double(m.y_scale) / 65536.0 / 64.0;
            underlineTop_ = ascent_ + std::max(1, int(std::floor(-face_->underline_position * scale + 0.5)));
            underlineThickness_ = std::max(1, int(std::floor(face_->underline_thickness * scale + 0.5)));
        } else {
            underlineTop_ = ascent_ + 1;
        }
    }

    ~FreeTypeFace() override {
        FT_Done_Face(face_);
        FT_Done_FreeType(library_);
    }

    int measure(std::string_view text) const override {
        int width = 0;
        walk(text, [&](int, FT_GlyphSlot) {}, &width);
        return width;
    }

    TextCoverage render(std::string_view text) const override {
        struct Placed {
            int left, top, width, height, pitch;
            std::vector<std::uint8_t> rows;
        };
        std::vector<Placed> placed;
        int advance = 0;
        walk(
            text,
            [&](int pen, FT_GlyphSlot slot) {
                if (FT_Render_Glyph(slot, FT_RENDER_MODE_NORMAL) != 0) return;
                const FT_Bitmap& b = slot->bitmap;
                if (b.pixel_mode != FT_PIXEL_MODE_GRAY || b.width == 0 || b.rows == 0) return;
                Placed p{pen + slot->bitmap_left, ascent_ - slot->bitmap_top, int(b.width), int(b.rows), 0, {}};
                p.rows.resize(std::size_t(p.width) * std::size_t(p.height));
                for (int y = 0; y < p.height; ++y)
                    std::copy_n(b.buffer + std::ptrdiff_t(y) * b.pitch, p.width, p.rows.begin() + y * p.width);
                placed.push_back(std::move(p));
            },
            &advance);
        TextCoverage out;
        out.width = advance;
        for (const Placed& p : placed) out.width = std::max(out.width, p.left + p.width);
        out.height = lineHeight_;
        out.values.assign(std::size_t(out.width) * std::size_t(out.height), 0);
        for (const Placed& p : placed)
            for (int y = 0; y < p.height; ++y) {
                const int ty = p.top + y;
                if (ty < 0 || ty >= out.height) continue;
                for (int x = 0; x < p.width; ++x) {
                    const int tx = p.left + x;
                    if (tx < 0 || tx >= out.width) continue;
                    std::uint8_t& v = out.values[std::size_t(ty) * std::size_t(out.width) + std::size_t(tx)];
                    v = std::max(v, p.rows[std::size_t(y) * std::size_t(p.width) + std::size_t(x)]);
                }
            }
        if (underline_)
            for (int y = underlineTop_; y < underlineTop_ + underlineThickness_ && y < out.height; ++y)
                std::fill_n(out.values.begin() + std::ptrdiff_t(y) * out.width, advance, std::uint8_t(255));
        return out;
    }

    int ascent() const override { return ascent_; }
    int lineHeight() const override { return lineHeight_; }

private:
    // Loads each glyph in turn and calls `each(pen, slot)`; `advance` gets
    // the line's whole advance.
    template <class Each>
    void walk(std::string_view text, Each each, int* advance) const {
        FT_Pos pen = 0;  // 26.6
        FT_UInt previous = 0;
        const bool kerning = FT_HAS_KERNING(face_);
        for (const char ch : text) {
            const unsigned code = systemCodePoint(static_cast<unsigned char>(ch));
            const FT_UInt index = code == 0 ? 0 : FT_Get_Char_Index(face_, code);
            if (kerning && previous != 0 && index != 0) {
                FT_Vector delta{0, 0};
                if (FT_Get_Kerning(face_, previous, index, FT_KERNING_DEFAULT, &delta) == 0) pen += delta.x;
            }
            if (FT_Load_Glyph(face_, index, FT_LOAD_DEFAULT) == 0) {
                each(int((pen + 32) >> 6), face_->glyph);
                pen += face_->glyph->advance.x;
            }
            previous = index;
        }
        *advance = int((pen + 32) >> 6);
    }

    FT_Library library_ = nullptr;
    FT_Face face_ = nullptr;
    bool underline_ = false;
    int ascent_ = 0;
    int lineHeight_ = 0;
    int underlineTop_ = 0;
    int underlineThickness_ = 1;
};

}  // namespace

std::unique_ptr<SystemTextFace> openSystemTextFace(const SystemTextStyle& style) {
    return std::make_unique<FreeTypeFace>(style);
}

}  // namespace platform
