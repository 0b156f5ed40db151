#include "patch/ProgramTextEscape.h"

#include "platform/Exceptions.h"
#include "notation/Escape.h"

namespace {

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

uint32_t readHex(std::string_view text, std::size_t& pos, int maxDigits) {
    uint32_t value = 0;
    for (int n = 0; n < maxDigits && pos < text.size(); ++n) {
        int d = hexValue(text[pos]);
        if (d < 0) break;
        value = value * 16 + static_cast<uint32_t>(d);
        ++pos;
    }
    return value;
}

}  // namespace

std::string escapeWide(std::u16string_view text) {
    bool plain = true;
    for (char16_t c : text)
        if (c < 32 || c > 126 || c == u'\'') {
            plain = false;
            break;
        }
    std::string out;
    if (plain) {
        out += '\'';
        for (char16_t c : text) out += static_cast<char>(c);
        out += '\'';
        return out;
    }
    static const char* const hex = "0123456789abcdef";
    out += '"';
    for (char16_t c : text) {
        if (c <= 0xFF) {
            notation::appendEscapedByte(out, static_cast<unsigned char>(c));
        } else {
            out += "\\u";
            out += hex[(c >> 12) & 15];
            out += hex[(c >> 8) & 15];
            out += hex[(c >> 4) & 15];
            out += hex[c & 15];
        }
    }
    out += '"';
    return out;
}

std::u16string widen(std::string_view bytes) {
    std::u16string out;
    out.reserve(bytes.size());
    for (char c : bytes) out += static_cast<char16_t>(static_cast<unsigned char>(c));
    return out;
}

std::string narrowForDisplay(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (char16_t c : text) out += c <= 0xFF ? static_cast<char>(c) : '?';
    return out;
}

std::u16string unescapeWide(std::string_view raw) {
    if (raw.empty() || (raw.front() != '"' && raw.front() != '\'')) return widen(raw);
    if (raw.front() == '\'') {
        std::size_t end = raw.find('\'', 1);
        if (end == std::string_view::npos) throw Exception("Unterminated string");
        return widen(raw.substr(1, end - 1));
    }
    std::u16string out;
    std::size_t pos = 1;
    while (true) {
        if (pos >= raw.size()) throw Exception("Unterminated string");
        char c = raw[pos++];
        if (c == '"') return out;
        if (c != '\\') {
            out += static_cast<char16_t>(static_cast<unsigned char>(c));
            continue;
        }
        if (pos >= raw.size()) throw Exception("Unterminated string");
        char e = raw[pos];
        switch (e) {
        case '\\': out += u'\\'; ++pos; continue;
        case '"': out += u'"'; ++pos; continue;
        case '\'': out += u'\''; ++pos; continue;
        case 'a': out += u'\a'; ++pos; continue;
        case 'b': out += u'\b'; ++pos; continue;
        case 'f': out += u'\f'; ++pos; continue;
        case 'n': out += u'\n'; ++pos; continue;
        case 'r': out += u'\r'; ++pos; continue;
        case 't': out += u'\t'; ++pos; continue;
        case 'v': out += u'\v'; ++pos; continue;
        case 'x': ++pos; out += static_cast<char16_t>(readHex(raw, pos, 2)); continue;
        case 'u': ++pos; out += static_cast<char16_t>(readHex(raw, pos, 4)); continue;
        case 'l': ++pos; out += static_cast<char16_t>(readHex(raw, pos, 8) & 0xFFFF); continue;
        default: break;
        }
        if (e >= '0' && e <= '9') {
            uint32_t value = 0;
            while (pos < raw.size() && raw[pos] >= '0' && raw[pos] <= '9')
                value = value * 10 + static_cast<uint32_t>(raw[pos++] - '0');
            out += static_cast<char16_t>(value & 0xFFFF);
            continue;
        }
        out += u'\0';
    }
}
