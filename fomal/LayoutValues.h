// A layout object's keys read the way the graphics library asks for them:
// numbers as the notation's expressions, colours as colour words, strings
// unescaped. It serves the pen and font readers, and reads images by name.
#pragma once

#include <string>

#include "fomal/NotationNames.h"
#include "pixels/FontSpecification.h"
#include "pixels/Image.h"
#include "pixels/Pen.h"
#include "pixels/PenParser.h"

namespace Fomal {

class LayoutValues : public OrlPixels::PenValues, public OrlPixels::FontValues {
public:
    explicit LayoutValues(const Object& object) : object_(object) {}
    explicit LayoutValues(std::string_view raw) : owned_(parseObject(raw)), object_(owned_) {}

    bool has(const char* key) const override { return object_.has(key); }
    double number(const char* key) const override;
    OrlPixels::Pixel color(const char* key, OrlPixels::Pixel fallback) const override;
    std::string keyword(const char* key) const override;
    std::string text(const char* key) const override { return keyword(key); }
    bool boolean(const char* key) const override;

private:
    Object owned_;
    const Object& object_;
};

// A pen from a raw pen object (`{ color: ..., stroke: ... }`).
OrlPixels::Pen readPen(std::string_view raw, double defaultStroke);

// A font from a raw font object.
OrlPixels::FontSpecification readFont(std::string_view raw);

// An image named plainly (`"seed"`) or as `{ name: "BGOverlay", format: "rle" }`;
// failure: "Could not obtain image : " and the name.
OrlPixels::ImageRef readImage(std::string_view raw);
// The image of a key when the key is given, else none.
OrlPixels::ImageRef readImageIfGiven(const Object& keys, std::string_view key);

}  // namespace Fomal
