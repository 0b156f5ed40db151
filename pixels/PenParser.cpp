#include "pixels/PenParser.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "notation/LeadingNumbers.h"
#include "platform/Exceptions.h"

namespace OrlPixels {

namespace {

std::string numberText(double v) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.16g", v);
    return buffer;
}

[[noreturn]] void invalidNumber(const char* what, double v) { throw FormatException(what + numberText(v)); }

}  // namespace

Pen parsePen(const PenValues& values, double defaultStroke) {
    Pen pen;
    pen.stroke = defaultStroke;
    if (values.has("color")) pen.color = values.color("color", pen.color);
    if (values.has("stroke")) {
        pen.stroke = values.number("stroke");
        if (!(pen.stroke >= 0)) invalidNumber("Invalid stroke: ", pen.stroke);
    }
    if (values.has("caps")) {
        const std::string caps = values.keyword("caps");
        if (caps == "butt")
            pen.caps = BUTT_CAPS;
        else if (caps == "round")
            pen.caps = ROUND_CAPS;
        else if (caps == "square")
            pen.caps = SQUARE_CAPS;
        else
            throw FormatException("Invalid caps: " + caps);
    }
    if (values.has("joints")) {
        const std::string joints = values.keyword("joints");
        if (joints == "bevel")
            pen.joints = BEVEL_JOINTS;
        else if (joints == "curve")
            pen.joints = CURVE_JOINTS;
        else if (joints == "miter")
            pen.joints = MITER_JOINTS;
        else
            throw FormatException("Invalid joints: " + joints);
    }
    if (pen.joints == MITER_JOINTS && values.has("miterLimit")) pen.miterLimit = values.number("miterLimit");
    if (values.has("quality")) {
        pen.quality = values.number("quality");
        if (!(pen.quality > 0)) invalidNumber("Invalid quality: ", pen.quality);
    }
    if (!values.has("dash")) {
        pen.dash = pen.gap = pen.dashOffset = 0;
        return pen;
    }
    pen.dash = values.number("dash");
    if (!(pen.dash > 0)) invalidNumber("Invalid dash: ", pen.dash);
    pen.gap = pen.dash;
    if (values.has("gap")) {
        pen.gap = values.number("gap");
        if (!(pen.gap >= 0)) invalidNumber("Invalid gap: ", pen.gap);
    }
    if (values.has("dashOffset")) {
        pen.dashOffset = values.number("dashOffset");
        if (!(pen.dashOffset >= 0 && pen.dashOffset < pen.dash + pen.gap))
            invalidNumber("Invalid dashOffset: ", pen.dashOffset);
    }
    return pen;
}

// ---------------------------------------------------------------------------

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v'; }

class Cursor {
public:
    explicit Cursor(std::string_view t) : t_(t) {}
    bool atEnd() const { return i_ >= t_.size() || t_[i_] == '\0' || t_[i_] == 26; }
    char peek() const { return atEnd() ? '\0' : t_[i_]; }
    void advance() { ++i_; }
    std::size_t position() const { return i_; }
    std::string_view slice(std::size_t from) const { return t_.substr(from, i_ - from); }

    void skipBlanks() {
        for (;;) {
            if (atEnd()) return;
            const char c = t_[i_];
            if (isBlank(c)) {
                ++i_;
            } else if (c == '/' && i_ + 1 < t_.size() && t_[i_ + 1] == '/') {
                while (!atEnd() && t_[i_] != '\n') ++i_;
            } else if (c == '/' && i_ + 1 < t_.size() && t_[i_ + 1] == '*') {
                skipBlockComment();
            } else {
                return;
            }
        }
    }

    void skipBlockComment() {
        int depth = 0;
        while (!atEnd()) {
            if (t_[i_] == '/' && i_ + 1 < t_.size() && t_[i_ + 1] == '*') {
                ++depth;
                i_ += 2;
            } else if (t_[i_] == '*' && i_ + 1 < t_.size() && t_[i_ + 1] == '/') {
                i_ += 2;
                if (--depth == 0) return;
            } else {
                ++i_;
            }
        }
    }

    void skipQuoted(char quote) {
        ++i_;
        while (!atEnd() && t_[i_] != quote) {
            if (quote == '"' && t_[i_] == '\\' && i_ + 1 < t_.size()) ++i_;
            ++i_;
        }
        if (!atEnd()) ++i_;
    }

private:
    std::string_view t_;
    std::size_t i_ = 0;
};

std::string trimRight(std::string_view s) {
    std::size_t e = s.size();
    while (e > 0 && (s[e - 1] == ' ' || s[e - 1] == '\t')) --e;
    return std::string(s.substr(0, e));
}

std::string readValue(Cursor& c) {
    const std::size_t from = c.position();
    const char first = c.peek();
    if (first == '{') {
        int depth = 0;
        while (!c.atEnd()) {
            const char ch = c.peek();
            if (ch == '"' || ch == '\'') {
                c.skipQuoted(ch);
                continue;
            }
            c.advance();
            if (ch == '{') ++depth;
            if (ch == '}' && --depth == 0) break;
        }
        return std::string(c.slice(from));
    }
    if (first == '"' || first == '\'') {
        c.skipQuoted(first);
        return std::string(c.slice(from));
    }
    while (!c.atEnd()) {
        const char ch = c.peek();
        if (ch == ',' || ch == ';' || ch == '}' || ch == '\n' || ch == '\r') break;
        c.advance();
    }
    return trimRight(c.slice(from));
}

std::string unquote(const std::string& raw) {
    if (raw.size() >= 2 && (raw.front() == '"' || raw.front() == '\'') && raw.back() == raw.front()) {
        std::string out;
        for (std::size_t i = 1; i + 1 < raw.size(); ++i) {
            if (raw.front() == '"' && raw[i] == '\\' && i + 2 < raw.size()) ++i;
            out += raw[i];
        }
        return out;
    }
    return raw;
}

}  // namespace

PenText::PenText(std::string_view text) {
    Cursor c(text);
    c.skipBlanks();
    if (c.peek() == '{') c.advance();
    for (;;) {
        c.skipBlanks();
        if (c.atEnd() || c.peek() == '}') break;
        const std::size_t from = c.position();
        std::string key;
        if (c.peek() == '"' || c.peek() == '\'') {
            c.skipQuoted(c.peek());
            key = unquote(std::string(c.slice(from)));
        } else {
            while (!c.atEnd()) {
                const char ch = c.peek();
                if (ch == ',' || ch == ';' || ch == '=' || ch == ':' || ch == '}' || ch == '\t' || ch == '\v' ||
                    ch == '\n' || ch == '\r')
                    break;
                c.advance();
            }
            key = trimRight(c.slice(from));
        }
        std::string value;
        if (c.peek() == ':' || c.peek() == '=') {
            c.advance();
            c.skipBlanks();
            value = readValue(c);
        }
        c.skipBlanks();
        if (c.peek() == ',' || c.peek() == ';') c.advance();
        else if (c.position() == from) c.advance();  // a stray byte: step over it
        bool replaced = false;
        for (auto& entry : entries_) {
            if (entry.first == key) {
                entry.second = value;
                replaced = true;
            }
        }
        if (!replaced) entries_.emplace_back(key, value);
    }
}

const std::string* PenText::find(const char* key) const {
    for (const auto& entry : entries_)
        if (entry.first == key) return &entry.second;
    return nullptr;
}

bool PenText::has(const char* key) const { return find(key) != nullptr; }

double PenText::number(const char* key) const {
    const std::string* raw = find(key);
    if (raw == nullptr || raw->empty()) return 0;
    const LeadingNumber n = leadingDouble(*raw);
    if (n.length == 0) throw FormatException("Invalid number: " + *raw);
    return n.value;
}

Pixel PenText::color(const char* key, Pixel fallback) const {
    const std::string* raw = find(key);
    if (raw == nullptr || raw->empty()) return fallback;
    const std::optional<std::uint32_t> v = leadingUnsignedLong(*raw);
    return v ? Pixel(*v) : fallback;
}

std::string PenText::keyword(const char* key) const {
    const std::string* raw = find(key);
    return raw == nullptr ? std::string() : unquote(*raw);
}

Pen parsePen(std::string_view text, double defaultStroke) { return parsePen(PenText(text), defaultStroke); }

}  // namespace OrlPixels
