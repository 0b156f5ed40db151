#include "pixels/FontSpecification.h"

#include <cmath>

#include "pixels/BitmapFont.h"
#include "pixels/FilmFont.h"
#include "pixels/ImageLoader.h"
#include "pixels/SystemFont.h"
#include "platform/Exceptions.h"

namespace OrlPixels {

namespace {

// Numbers far beyond any glyph are held within reach (NaN counts as 0).
int roundedInt(double v) {
    if (!(v > -32767.0)) return v < 0 ? -32767 : 0;
    if (v > 32767.0) return 32767;
    return int(std::floor(v + 0.5));
}

// A film named plainly or as `{ name: ... }`.
std::string filmName(const std::string& text) {
    if (!text.empty() && text.front() == '{') return PenText(text).keyword("name");
    return text;
}

FontRef readFilmFont(const FontValues& values) {
    const std::string name = filmName(values.text("film"));
    const double gamma = values.has("gamma") ? values.number("gamma") : 0.0;
    ImageRef film;
    try {
        film = loadImage(name, RLE_MASK_FORMAT, gamma);
    } catch (const Exception&) {
        throw Exception("Could not obtain image : " + name);
    }
    const int ascent = values.has("ascent") ? roundedInt(values.number("ascent")) : 0;
    const int advance = values.has("advance") ? roundedInt(values.number("advance")) : 0;
    if (values.has("charset")) return FontRef(new FilmFont(film, values.text("charset"), ascent, advance));
    const int first = values.has("first") ? roundedInt(values.number("first")) : 0;
    const int chars = values.has("chars") ? roundedInt(values.number("chars")) : 0;
    return FontRef(new FilmFont(film, first, chars, ascent, advance));
}

}  // namespace

FontSpecification readFontSpecification(const FontValues& values) {
    FontSpecification spec;
    spec.color = values.color("color", 0xFF000000u);
    if (values.has("film")) {
        spec.font = readFilmFont(values);
    } else if (values.has("fnt")) {
        const double gamma = values.has("gamma") ? values.number("gamma") : 0.0;
        spec.font = loadBitmapFont(values.text("fnt"), gamma);
    } else {
        platform::SystemTextStyle style;
        style.face = values.has("face") ? values.text("face") : std::string();
        if (values.has("size")) style.size = values.number("size");
        if (values.has("bold")) style.bold = values.boolean("bold");
        if (values.has("italic")) style.italic = values.boolean("italic");
        if (values.has("underline")) style.underline = values.boolean("underline");
        spec.font = FontRef(new SystemFont(style));
    }
    return spec;
}

bool FontText::boolean(const char* key) const {
    const std::string v = pen_.keyword(key);
    if (v == "true" || v == "1") return true;
    if (v == "false" || v == "0" || v.empty()) return false;
    throw FormatException("Invalid boolean: " + v);
}

}  // namespace OrlPixels
