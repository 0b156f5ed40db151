// Reading a font from the keys of a layout's font object. Like the pen
// reader, it does not know the notation: it asks a FontValues for the keys,
// so the layout reader hands over its own object. The key that is present
// chooses the kind, tested in this order:
//   film (with charset, or first and chars; ascent, advance, gamma, color)
//   fnt (gamma, color)
//   otherwise a system font (face, size, bold, italic, underline, color).
#pragma once

#include <string>
#include <string_view>

#include "pixels/Font.h"
#include "pixels/PenParser.h"

namespace OrlPixels {

class FontValues {
public:
    virtual ~FontValues() = default;
    virtual bool has(const char* key) const = 0;
    // The key's value as a number; throws on text that is no number.
    virtual double number(const char* key) const = 0;
    // The key's value as a colour word; `fallback` when absent.
    virtual Pixel color(const char* key, Pixel fallback) const = 0;
    // The key's value as text, unquoted.
    virtual std::string text(const char* key) const = 0;
    // The key's value as a boolean ("true"/"false"); throws on other text.
    virtual bool boolean(const char* key) const = 0;
};

// A font and the colour it is drawn in.
struct FontSpecification {
    FontRef font;
    Pixel color = 0xFF000000u;
};

// Missing font resources fail with "Could not obtain font : " and the name;
// missing images of film fonts with "Could not obtain image : " and the name.
FontSpecification readFontSpecification(const FontValues& values);

// A small stand-alone FontValues over a flat `{ key: value, ... }` text,
// for tests and tools where no layout reader is at hand.
class FontText : public FontValues {
public:
    explicit FontText(std::string_view text) : pen_(text) {}
    bool has(const char* key) const override { return pen_.has(key); }
    double number(const char* key) const override { return pen_.number(key); }
    Pixel color(const char* key, Pixel fallback) const override { return pen_.color(key, fallback); }
    std::string text(const char* key) const override { return pen_.keyword(key); }
    bool boolean(const char* key) const override;

private:
    PenText pen_;
};

}  // namespace OrlPixels
