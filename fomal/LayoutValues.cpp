#include "fomal/LayoutValues.h"

#include "fomal/NotationNames.h"
#include "pixels/ImageLoader.h"
#include "platform/Exceptions.h"

namespace Fomal {

double LayoutValues::number(const char* key) const { return readNumber(object_.get(key), 0.0f); }

OrlPixels::Pixel LayoutValues::color(const char* key, OrlPixels::Pixel fallback) const {
    const std::string* raw = object_.find(key);
    if (raw == nullptr || raw->empty()) return fallback;
    return readColor(*raw);
}

std::string LayoutValues::keyword(const char* key) const { return readString(object_.get(key)); }

bool LayoutValues::boolean(const char* key) const { return readBool(object_.get(key)); }

OrlPixels::Pen readPen(std::string_view raw, double defaultStroke) {
    return OrlPixels::parsePen(LayoutValues(raw), defaultStroke);
}

OrlPixels::FontSpecification readFont(std::string_view raw) {
    return OrlPixels::readFontSpecification(LayoutValues(raw));
}

OrlPixels::ImageRef readImageIfGiven(const Object& keys, std::string_view key) {
    return keys.has(key) ? readImage(keys.get(key)) : OrlPixels::ImageRef();
}

OrlPixels::ImageRef readImage(std::string_view raw) {
    std::string name;
    std::string format;
    if (!raw.empty() && raw.front() == '{') {
        const Object o = parseObject(raw);
        name = readString(o.get("name"));
        format = readString(o.get("format"));
    } else {
        name = readString(raw);
    }
    const OrlPixels::ImageFormat f = OrlPixels::parseImageFormat(format);
    try {
        return OrlPixels::loadImage(name, f);
    } catch (const Exception&) {
        throw Exception("Could not obtain image : " + name);
    }
}

}  // namespace Fomal
