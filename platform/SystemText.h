// The platform's own text drawing, for fonts that a layout names by face:
// a line of text becomes a block of coverage bytes, which the caller uses
// as a mask. Text is the system's 8-bit text (Windows-1252).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

struct SystemTextStyle {
    std::string face;  // a family name; empty for the default face
    double size = 8;   // in points, at 96 pixels an inch
    bool bold = false;
    bool italic = false;
    bool underline = false;
};

struct TextCoverage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> values;  // width * height, row after row
};

class SystemTextFace {
public:
    virtual ~SystemTextFace() = default;
    // The advance of the whole line, kerning included.
    virtual int measure(std::string_view text) const = 0;
    // The line drawn with the top of its line box at row 0 and its pen
    // starting at column 0; `width` and `height` cover the whole line box.
    virtual TextCoverage render(std::string_view text) const = 0;
    virtual int ascent() const = 0;
    virtual int lineHeight() const = 0;
};

// Opens the face of a style. A face that the platform cannot find falls
// back to the default face; failure to open even that throws Exception
// "Could not obtain font : " and the face's name.
std::unique_ptr<SystemTextFace> openSystemTextFace(const SystemTextStyle& style);

// The name the default face is known by in layouts.
inline constexpr const char* DEFAULT_SYSTEM_FACE = "MS Sans Serif";

}  // namespace platform
