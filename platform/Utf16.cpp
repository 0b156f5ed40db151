#include "platform/Utf16.h"

#include <cstdint>

namespace platform {

namespace {

void appendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

// Converts; an unpaired surrogate becomes U+FFFD when lossy, else fails.
std::optional<std::string> convert16(std::u16string_view in, bool lossy) {
    std::string out;
    out.reserve(in.size());
    for (std::size_t i = 0; i < in.size(); ++i) {
        char32_t c = in[i];
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < in.size() && in[i + 1] >= 0xDC00 && in[i + 1] <= 0xDFFF) {
            c = 0x10000 + ((c - 0xD800) << 10) + (in[i + 1] - 0xDC00);
            ++i;
        } else if (c >= 0xD800 && c <= 0xDFFF) {
            if (!lossy)
                return std::nullopt;
            c = 0xFFFD;
        }
        appendUtf8(out, c);
    }
    return out;
}

}  // namespace

std::optional<std::u16string> utf8ToUtf16(std::string_view in) {
    std::u16string out;
    out.reserve(in.size());
    std::size_t i = 0;
    while (i < in.size()) {
        const auto b0 = static_cast<std::uint8_t>(in[i]);
        char32_t c;
        std::size_t extra;
        char32_t minimum;
        if (b0 < 0x80) {
            c = b0; extra = 0; minimum = 0;
        } else if ((b0 & 0xE0) == 0xC0) {
            c = b0 & 0x1F; extra = 1; minimum = 0x80;
        } else if ((b0 & 0xF0) == 0xE0) {
            c = b0 & 0x0F; extra = 2; minimum = 0x800;
        } else if ((b0 & 0xF8) == 0xF0) {
            c = b0 & 0x07; extra = 3; minimum = 0x10000;
        } else {
            return std::nullopt;
        }
        if (i + extra >= in.size())
            return std::nullopt;  // a sequence cut short by the end
        for (std::size_t k = 1; k <= extra; ++k) {
            const auto b = static_cast<std::uint8_t>(in[i + k]);
            if ((b & 0xC0) != 0x80)
                return std::nullopt;
            c = (c << 6) | (b & 0x3F);
        }
        if (c < minimum || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
            return std::nullopt;
        if (c >= 0x10000) {
            c -= 0x10000;
            out += static_cast<char16_t>(0xD800 + (c >> 10));
            out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
        } else {
            out += static_cast<char16_t>(c);
        }
        i += extra + 1;
    }
    return out;
}

std::optional<std::string> utf16ToUtf8(std::u16string_view utf16) {
    return convert16(utf16, false);
}

std::string utf16ToUtf8Lossy(std::u16string_view utf16) {
    return *convert16(utf16, true);
}

}  // namespace platform
