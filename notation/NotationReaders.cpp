#include "notation/NotationReaders.h"

#include <charconv>
#include <climits>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "notation/LeadingNumbers.h"
#include "notation/Notation.h"
#include "platform/Exceptions.h"
#include "notation/Escape.h"

namespace notation {

namespace {

bool isSpace(char c) { return c == 9 || c == 10 || c == 11 || c == 13 || c == 32; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isSymbolByte(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '$';
}

// A decimal literal as a double.
double decimalValue(std::string_view literal) { return leadingDouble(literal).value; }

template <typename T>
struct Arithmetic;

template <>
struct Arithmetic<float> {
    static float literal(std::string_view text) {
        float value = 0.0f;
        auto result = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::general);
        if (result.ec == std::errc::result_out_of_range) {
            // Beyond the float range: infinity; below it: zero.
            const double wide = decimalValue(text);
            return wide > 3.4028234663852886e38 ? std::numeric_limits<float>::infinity() : static_cast<float>(wide);
        }
        return value;
    }
    static float fromSymbol(float v) { return v; }
    static float add(float a, float b) { return a + b; }
    static float sub(float a, float b) { return a - b; }
    static float mul(float a, float b) { return a * b; }
    static float div(float a, float b) { return a / b; }
    static float neg(float a) { return -a; }
};

template <>
struct Arithmetic<int> {
    static int saturate(double v) {
        if (std::isnan(v)) return 0;
        if (v >= 2147483647.0) return INT_MAX;
        if (v <= -2147483648.0) return INT_MIN;
        return static_cast<int>(v);
    }
    static int literal(std::string_view text) { return saturate(decimalValue(text)); }
    static int fromSymbol(float v) { return saturate(v); }
    // Wrapping arithmetic of 32-bit words.
    static int add(int a, int b) { return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b)); }
    static int sub(int a, int b) { return static_cast<int>(static_cast<unsigned>(a) - static_cast<unsigned>(b)); }
    static int mul(int a, int b) { return static_cast<int>(static_cast<unsigned>(a) * static_cast<unsigned>(b)); }
    static int div(int a, int b) {
        if (b == 0) return 0;
        if (a == INT_MIN && b == -1) return INT_MIN;
        return a / b;
    }
    static int neg(int a) { return static_cast<int>(0u - static_cast<unsigned>(a)); }
};

template <typename T>
class Evaluator {
public:
    Evaluator(std::string_view text, T dflt, std::span<const NumberSymbol> symbols)
        : text_(text), symbols_(symbols), dollar_(dflt), result_(dflt) {}

    T run() {
        evaluate(0);
        return result_;
    }

private:
    using A = Arithmetic<T>;

    void skipSpace() {
        while (pos_ < text_.size() && isSpace(text_[pos_])) ++pos_;
    }

    T lookup(std::string_view name) const {
        // Later entries win, so a caller can override a symbol.
        for (std::size_t i = symbols_.size(); i-- > 0;)
            if (symbols_[i].name == name) return A::fromSymbol(symbols_[i].value);
        if (name == "$") return dollar_;
        throw Exception("Undefined symbol: " + notation::escape(name));
    }

    void evaluate(int level) {
        skipSpace();
        if (pos_ >= text_.size()) {
            if (level == 0) return;
            throw Exception("Unexpected end of string");
        }
        const char c = text_[pos_];
        if (c == '(') {
            ++pos_;
            evaluate(0);
            if (pos_ >= text_.size() || text_[pos_] != ')') throw Exception("Expected ')'");
            ++pos_;
        } else if (c == '-') {
            ++pos_;
            evaluate(3);
            result_ = A::neg(result_);
        } else if (isDigit(c) || c == '.') {
            std::size_t n = decimalLiteralLength(text_, pos_);
            if (n == 0) throw Exception("Invalid number: " + notation::escape(text_));
            result_ = A::literal(text_.substr(pos_, n));
            pos_ += n;
        } else {
            std::size_t start = pos_;
            while (pos_ < text_.size() && isSymbolByte(text_[pos_])) ++pos_;
            result_ = lookup(text_.substr(start, pos_ - start));
        }
        while (true) {
            skipSpace();
            if (pos_ >= text_.size()) break;
            const char op = text_[pos_];
            if ((op == '+' || op == '-') && level == 0) {
                ++pos_;
                T left = result_;
                evaluate(1);
                result_ = op == '+' ? A::add(left, result_) : A::sub(left, result_);
            } else if ((op == '*' || op == '/') && level < 2) {
                ++pos_;
                T left = result_;
                evaluate(2);
                result_ = op == '*' ? A::mul(left, result_) : A::div(left, result_);
            } else {
                break;
            }
        }
        skipSpace();
    }

    std::string_view text_;
    std::span<const NumberSymbol> symbols_;
    T dollar_;
    T result_;
    std::size_t pos_ = 0;
};

std::vector<NumberSymbol> parentSymbols(const RectF& parent) {
    return {{"l", parent.left}, {"t", parent.top},      {"w", parent.width},
            {"h", parent.height}, {"r", parent.right()}, {"b", parent.bottom()}};
}

}  // namespace

float readNumber(std::string_view raw, float dflt, std::span<const NumberSymbol> symbols) {
    return Evaluator<float>(raw, dflt, symbols).run();
}

int readInt(std::string_view raw, int dflt, std::span<const NumberSymbol> symbols) {
    return Evaluator<int>(raw, dflt, symbols).run();
}

std::string readString(std::string_view raw) {
    if (!raw.empty() && (raw.front() == '"' || raw.front() == '\'')) return notation::unescape(raw);
    return std::string(raw);
}

bool readBool(std::string_view raw) {
    std::string text = readString(raw);
    if (text == "true") return true;
    if (text == "false") return false;
    throw Exception("Invalid boolean: " + notation::escape(text));
}

std::uint32_t readColor(std::string_view raw) {
    std::size_t p = 0;
    while (p < raw.size() && isSpace(raw[p])) ++p;
    bool negative = false;
    if (p < raw.size() && raw[p] == '-') {
        negative = true;
        ++p;
    }
    std::uint32_t value = 0;
    std::size_t digits = 0;
    if (p + 1 < raw.size() && raw[p] == '0' && (raw[p + 1] == 'x' || raw[p + 1] == 'X')) {
        p += 2;
        for (; p < raw.size(); ++p, ++digits) {
            char c = raw[p];
            unsigned d;
            if (isDigit(c))
                d = static_cast<unsigned>(c - '0');
            else if (c >= 'a' && c <= 'f')
                d = static_cast<unsigned>(c - 'a' + 10);
            else if (c >= 'A' && c <= 'F')
                d = static_cast<unsigned>(c - 'A' + 10);
            else
                break;
            value = value * 16 + d;
        }
    } else {
        for (; p < raw.size() && isDigit(raw[p]); ++p, ++digits) value = value * 10 + static_cast<unsigned>(raw[p] - '0');
    }
    if (digits == 0) throw Exception("Invalid number: " + notation::escape(raw));
    return negative ? 0u - value : value;
}

PointF readPoint(std::string_view raw, PointF dflt, const RectF* parent) {
    std::vector<NumberSymbol> symbols;
    if (parent) symbols = parentSymbols(*parent);
    Array parts = parseArray(raw);
    PointF p = dflt;
    if (parts.size() > 0) p.x = readNumber(parts[0], dflt.x, symbols);
    if (parts.size() > 1) p.y = readNumber(parts[1], dflt.y, symbols);
    return p;
}

RectF readRect(std::string_view raw, const RectF& parent) {
    std::vector<NumberSymbol> symbols = parentSymbols(parent);
    Array parts = parseArray(raw);
    RectF r = parent;
    float* fields[4] = {&r.left, &r.top, &r.width, &r.height};
    const float defaults[4] = {parent.left, parent.top, parent.width, parent.height};
    for (std::size_t i = 0; i < 4 && i < parts.size(); ++i) *fields[i] = readNumber(parts[i], defaults[i], symbols);
    return r;
}

}  // namespace notation
