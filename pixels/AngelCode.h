// The text form of a glyph description: one tag a line ("info", "common",
// "page", "char", "kerning"), each followed by key=value pairs, a value
// either bare or in double quotes. Lines of other tags ("chars",
// "kernings") are skipped. The reader builds all or nothing: any failure
// throws OrlAngelCode::Exception with its message and no description.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "platform/Exceptions.h"

namespace OrlAngelCode {

class Exception : public ::Exception {
public:
    using ::Exception::Exception;
};

struct Info {
    std::string face;
    int size = 0;
    bool bold = false;
    bool italic = false;
    std::string charset;
    bool unicode = false;
    int stretchH = 100;
    bool smooth = false;
    int aa = 1;
    int padding[4] = {0, 0, 0, 0};  // up, right, down, left
    int spacing[2] = {0, 0};        // horizontal, vertical
};

struct Common {
    int lineHeight = 0;
    int base = 0;  // from the top of a line to the baseline
    int scaleW = 0;
    int scaleH = 0;
    bool packed = false;
};

struct Char {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    int xoffset = 0;
    int yoffset = 0;
    int xadvance = 0;
    int page = 0;
    int channel = 15;
};

struct Description {
    Info info;
    Common common;
    std::map<int, std::string> pages;             // id -> file
    std::map<int, Char> chars;                    // code -> glyph
    std::map<std::pair<int, int>, int> kernings;  // (first, second) -> amount
};

// Keys each tag requires: common lineHeight, base, scaleW, scaleH; page id,
// file; char id, x, y, width, height, xoffset, yoffset, xadvance; kerning
// first, second, amount. A required key that is absent or whose value is no
// number gives "Missing '<key>' value in AngelCode Font File".
Description parse(std::string_view text);

// The text form of a description, as parse() reads it back.
std::string write(const Description& description);

}  // namespace OrlAngelCode
