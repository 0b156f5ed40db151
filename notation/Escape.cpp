#include "notation/Escape.h"

#include "platform/Exceptions.h"

namespace notation {

namespace {

bool needsDoubleQuotes(unsigned char c) { return c < 32 || c > 126 || c == '\''; }

int hexValue(unsigned char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Reads up to maxDigits hexadecimal digits; the value keeps its low bits.
unsigned readHex(std::string_view text, std::size_t& pos, int maxDigits) {
    unsigned value = 0;
    for (int n = 0; n < maxDigits && pos < text.size(); ++n) {
        int d = hexValue(static_cast<unsigned char>(text[pos]));
        if (d < 0) break;
        value = value * 16 + static_cast<unsigned>(d);
        ++pos;
    }
    return value;
}

}  // namespace

void appendEscapedByte(std::string& out, unsigned char c) {
    static const char* const hex = "0123456789abcdef";
    switch (c) {
    case '\\': out += "\\\\"; return;
    case '"': out += "\\\""; return;
    case 7: out += "\\a"; return;
    case 8: out += "\\b"; return;
    case 12: out += "\\f"; return;
    case 10: out += "\\n"; return;
    case 13: out += "\\r"; return;
    case 9: out += "\\t"; return;
    case 11: out += "\\v"; return;
    default: break;
    }
    if (c >= 32 && c <= 126) {
        out += static_cast<char>(c);
        return;
    }
    out += "\\x";
    out += hex[c >> 4];
    out += hex[c & 15];
}

std::string escape(std::string_view text) {
    bool plain = true;
    for (char ch : text)
        if (needsDoubleQuotes(static_cast<unsigned char>(ch))) {
            plain = false;
            break;
        }
    std::string out;
    if (plain) {
        out.reserve(text.size() + 2);
        out += '\'';
        out += text;
        out += '\'';
        return out;
    }
    out.reserve(text.size() + 8);
    out += '"';
    for (char ch : text) appendEscapedByte(out, static_cast<unsigned char>(ch));
    out += '"';
    return out;
}

std::string readStringLiteral(std::string_view text, std::size_t& pos) {
    if (pos >= text.size() || (text[pos] != '"' && text[pos] != '\''))
        throw Exception("Invalid string literal: " + escape(text.substr(pos < text.size() ? pos : text.size())));
    const char quote = text[pos++];
    std::string out;
    if (quote == '\'') {
        std::size_t end = text.find('\'', pos);
        if (end == std::string_view::npos) throw Exception("Unterminated string");
        out.assign(text.substr(pos, end - pos));
        pos = end + 1;
        return out;
    }
    while (true) {
        if (pos >= text.size()) throw Exception("Unterminated string");
        unsigned char c = static_cast<unsigned char>(text[pos++]);
        if (c == '"') return out;
        if (c != '\\') {
            out += static_cast<char>(c);
            continue;
        }
        if (pos >= text.size()) throw Exception("Unterminated string");
        unsigned char e = static_cast<unsigned char>(text[pos]);
        switch (e) {
        case '\\': out += '\\'; ++pos; continue;
        case '"': out += '"'; ++pos; continue;
        case '\'': out += '\''; ++pos; continue;
        case 'a': out += '\a'; ++pos; continue;
        case 'b': out += '\b'; ++pos; continue;
        case 'f': out += '\f'; ++pos; continue;
        case 'n': out += '\n'; ++pos; continue;
        case 'r': out += '\r'; ++pos; continue;
        case 't': out += '\t'; ++pos; continue;
        case 'v': out += '\v'; ++pos; continue;
        case 'x': ++pos; out += static_cast<char>(readHex(text, pos, 2) & 0xFF); continue;
        case 'u': ++pos; out += static_cast<char>(readHex(text, pos, 4) & 0xFF); continue;
        default: break;
        }
        if (e >= '0' && e <= '9') {
            unsigned value = 0;
            while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9')
                value = value * 10 + static_cast<unsigned>(text[pos++] - '0');
            out += static_cast<char>(value & 0xFF);
            continue;
        }
        // Any other byte after a backslash: a NUL, and the byte is read as
        // ordinary text on the next turn.
        out += '\0';
    }
}

std::string unescape(std::string_view text) {
    std::size_t pos = 0;
    return readStringLiteral(text, pos);
}

}  // namespace notation
