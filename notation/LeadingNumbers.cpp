#include "notation/LeadingNumbers.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace {

bool isCSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}
char lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool startsWithNoCase(std::string_view text, std::size_t pos, std::string_view word) {
    if (text.size() - pos < word.size()) return false;
    for (std::size_t i = 0; i < word.size(); ++i)
        if (lower(text[pos + i]) != word[i]) return false;
    return true;
}

double fromChars(std::string_view digits, std::chars_format format) {
    double value = 0.0;
    auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value, format);
    if (result.ec == std::errc::result_out_of_range) {
        // Overflow gives infinity, underflow zero, as strtod does.
        std::size_t e = digits.find_first_of(format == std::chars_format::hex ? "pP" : "eE");
        bool negativeExponent = e != std::string_view::npos && e + 1 < digits.size() && digits[e + 1] == '-';
        return negativeExponent ? 0.0 : std::numeric_limits<double>::infinity();
    }
    return value;
}

// Length of digits [. digits] [exponent-letter [sign] digits] at pos; zero
// when the mantissa has no digit.
std::size_t mantissaAndExponent(std::string_view text, std::size_t pos, bool hex) {
    std::size_t p = pos;
    std::size_t digits = 0;
    auto isMantissaDigit = [hex](char c) { return hex ? hexDigit(c) >= 0 : isDigit(c); };
    while (p < text.size() && isMantissaDigit(text[p])) ++p, ++digits;
    if (p < text.size() && text[p] == '.') {
        ++p;
        while (p < text.size() && isMantissaDigit(text[p])) ++p, ++digits;
    }
    if (digits == 0) return 0;
    char e1 = hex ? 'p' : 'e';
    if (p < text.size() && lower(text[p]) == e1) {
        std::size_t q = p + 1;
        if (q < text.size() && (text[q] == '+' || text[q] == '-')) ++q;
        if (q < text.size() && isDigit(text[q])) {
            while (q < text.size() && isDigit(text[q])) ++q;
            p = q;
        }
    }
    return p - pos;
}

struct IntegerPrefix {
    bool negative = false;
    bool any = false;
    bool overflow = false;  // beyond 32 bits
    uint32_t magnitude = 0;
};

IntegerPrefix integerPrefix(std::string_view text) {
    IntegerPrefix r;
    std::size_t p = 0;
    while (p < text.size() && isCSpace(text[p])) ++p;
    if (p < text.size() && (text[p] == '+' || text[p] == '-')) r.negative = text[p++] == '-';
    unsigned base = 10;
    if (p < text.size() && text[p] == '0') {
        if (p + 2 < text.size() && lower(text[p + 1]) == 'x' && hexDigit(text[p + 2]) >= 0) {
            base = 16;
            p += 2;
        } else {
            base = 8;
        }
    }
    uint64_t value = 0;
    for (; p < text.size(); ++p) {
        int d = hexDigit(text[p]);
        if (d < 0 || static_cast<unsigned>(d) >= base) break;
        r.any = true;
        value = value * base + static_cast<unsigned>(d);
        if (value > 0xFFFFFFFFull) {
            r.overflow = true;
            value = 0xFFFFFFFFull;
        }
    }
    r.magnitude = static_cast<uint32_t>(value);
    return r;
}

}  // namespace

std::size_t decimalLiteralLength(std::string_view text, std::size_t pos) { return mantissaAndExponent(text, pos, false); }

LeadingNumber leadingDouble(std::string_view text) {
    std::size_t p = 0;
    while (p < text.size() && isCSpace(text[p])) ++p;
    bool negative = false;
    if (p < text.size() && (text[p] == '+' || text[p] == '-')) negative = text[p++] == '-';
    LeadingNumber r;
    double value = 0.0;
    if (startsWithNoCase(text, p, "infinity")) {
        value = std::numeric_limits<double>::infinity();
        p += 8;
    } else if (startsWithNoCase(text, p, "inf")) {
        value = std::numeric_limits<double>::infinity();
        p += 3;
    } else if (startsWithNoCase(text, p, "nan")) {
        value = std::numeric_limits<double>::quiet_NaN();
        p += 3;
        if (p < text.size() && text[p] == '(') {
            std::size_t q = p + 1;
            while (q < text.size() && (isDigit(text[q]) || text[q] == '_' || (lower(text[q]) >= 'a' && lower(text[q]) <= 'z')))
                ++q;
            if (q < text.size() && text[q] == ')') p = q + 1;
        }
    } else if (p + 1 < text.size() && text[p] == '0' && lower(text[p + 1]) == 'x' &&
               mantissaAndExponent(text, p + 2, true) > 0) {
        std::size_t n = mantissaAndExponent(text, p + 2, true);
        value = fromChars(text.substr(p + 2, n), std::chars_format::hex);
        p += 2 + n;
    } else {
        std::size_t n = mantissaAndExponent(text, p, false);
        if (n == 0) return r;
        value = fromChars(text.substr(p, n), std::chars_format::general);
        p += n;
    }
    r.value = negative ? -value : value;
    r.length = p;
    return r;
}

std::optional<int32_t> leadingLong(std::string_view text) {
    IntegerPrefix r = integerPrefix(text);
    if (!r.any) return std::nullopt;
    if (r.negative) {
        if (r.overflow || r.magnitude > 0x80000000u) return std::numeric_limits<int32_t>::min();
        return static_cast<int32_t>(0u - r.magnitude);
    }
    if (r.overflow || r.magnitude > 0x7FFFFFFFu) return std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(r.magnitude);
}

std::optional<uint32_t> leadingUnsignedLong(std::string_view text) {
    IntegerPrefix r = integerPrefix(text);
    if (!r.any) return std::nullopt;
    if (r.overflow) return 0xFFFFFFFFu;
    return r.negative ? 0u - r.magnitude : r.magnitude;
}
