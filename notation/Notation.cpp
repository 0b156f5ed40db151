#include "notation/Notation.h"

#include "platform/Exceptions.h"
#include "notation/Escape.h"

namespace notation {

const std::string* Object::find(std::string_view key) const {
    auto it = entries_.find(key);
    return it == entries_.end() ? nullptr : &it->second;
}

std::string Object::get(std::string_view key, std::string_view fallback) const {
    const std::string* raw = find(key);
    return raw ? *raw : std::string(fallback);
}

void Object::set(std::string key, std::string raw) { entries_[std::move(key)] = std::move(raw); }

namespace {

bool isSpace(char c) { return c == 9 || c == 10 || c == 11 || c == 13 || c == 32; }
bool isLineEnd(char c) { return c == 10 || c == 13; }

// A cursor over one notation text, cut at its first NUL or byte 26.
class Scanner {
public:
    explicit Scanner(std::string_view text) : text_(text) {
        for (std::size_t i = 0; i < text_.size(); ++i)
            if (text_[i] == 0 || text_[i] == 26) {
                text_ = text_.substr(0, i);
                break;
            }
    }

    bool atEnd() const { return pos_ >= text_.size(); }
    char peek() const { return atEnd() ? '\0' : text_[pos_]; }
    void advance() { ++pos_; }

    bool startsComment() const {
        return pos_ + 1 < text_.size() && text_[pos_] == '/' && (text_[pos_ + 1] == '/' || text_[pos_ + 1] == '*');
    }

    // White space and comments of both kinds.
    void skipSpace() {
        while (!atEnd()) {
            char c = text_[pos_];
            if (isSpace(c))
                ++pos_;
            else if (startsComment())
                skipComment();
            else
                break;
        }
    }

    // Blanks, tabs and vertical tabs only: a line end still separates entries.
    void skipBlanks() {
        while (!atEnd() && (text_[pos_] == ' ' || text_[pos_] == '\t' || text_[pos_] == '\v')) ++pos_;
    }

    // The cursor stands on "//" or "/*".
    void skipComment() {
        if (text_[pos_ + 1] == '/') {
            pos_ += 2;
            while (!atEnd() && !isLineEnd(text_[pos_])) ++pos_;
            return;
        }
        pos_ += 2;
        int depth = 1;
        while (!atEnd() && depth > 0) {
            if (text_[pos_] == '/' && pos_ + 1 < text_.size() && text_[pos_ + 1] == '*') {
                ++depth;
                pos_ += 2;
            } else if (text_[pos_] == '*' && pos_ + 1 < text_.size() && text_[pos_ + 1] == '/') {
                --depth;
                pos_ += 2;
            } else {
                ++pos_;
            }
        }
    }

    // The cursor stands on a quote; steps over the quoted string. An
    // unterminated quote runs to the end of the text.
    void skipQuoted() {
        const char quote = text_[pos_++];
        while (!atEnd()) {
            char c = text_[pos_++];
            if (c == quote) return;
            if (quote == '"' && c == '\\' && !atEnd()) ++pos_;
        }
    }

    std::string_view slice(std::size_t from) const { return text_.substr(from, pos_ - from); }
    std::size_t position() const { return pos_; }

    std::string readValue() {
        const std::size_t start = pos_;
        if (atEnd()) return {};
        const char first = text_[pos_];
        if (first == '{') {
            ++pos_;
            int depth = 1;
            while (!atEnd() && depth > 0) {
                char c = text_[pos_];
                if (c == '"' || c == '\'')
                    skipQuoted();
                else if (startsComment())
                    skipComment();
                else {
                    if (c == '{') ++depth;
                    if (c == '}') --depth;
                    ++pos_;
                }
            }
            return std::string(slice(start));
        }
        if (first == '"' || first == '\'') {
            skipQuoted();
            return std::string(slice(start));
        }
        // A bare value: up to `,` `;` `}`, a line end or a comment, with
        // trailing blanks and tabs dropped.
        while (!atEnd()) {
            char c = text_[pos_];
            if (c == ',' || c == ';' || c == '}' || isLineEnd(c) || startsComment()) break;
            ++pos_;
        }
        std::size_t end = pos_;
        while (end > start && (text_[end - 1] == ' ' || text_[end - 1] == '\t')) --end;
        return std::string(text_.substr(start, end - start));
    }

    std::string readKey() {
        const std::size_t start = pos_;
        if (!atEnd() && (text_[pos_] == '"' || text_[pos_] == '\'')) {
            skipQuoted();
            std::string_view raw = slice(start);
            try {
                return notation::unescape(raw);
            } catch (const Exception&) {
                // An unterminated quote runs to the end of the text.
                return std::string(raw.substr(1));
            }
        }
        while (!atEnd()) {
            char c = text_[pos_];
            if (c == ',' || c == ';' || c == '=' || c == ':' || c == '}' || c == '\t' || c == '\v' || isLineEnd(c))
                break;
            ++pos_;
        }
        std::size_t end = pos_;
        while (end > start && text_[end - 1] == ' ') --end;
        return std::string(text_.substr(start, end - start));
    }

    // Drops one `,` or `;` if it stands here.
    void dropSeparator() {
        if (!atEnd() && (text_[pos_] == ',' || text_[pos_] == ';')) ++pos_;
    }

private:
    std::string_view text_;
    std::size_t pos_ = 0;
};

}  // namespace

Object parseObject(std::string_view text) {
    Scanner s(text);
    Object object;
    s.skipSpace();
    if (s.peek() == '{') s.advance();
    while (true) {
        s.skipSpace();
        if (s.atEnd() || s.peek() == '}') break;
        const std::size_t before = s.position();
        std::string key = s.readKey();
        s.skipBlanks();
        std::string value;
        bool hasValue = false;
        if (s.peek() == ':' || s.peek() == '=') {
            s.advance();
            s.skipSpace();
            value = s.readValue();
            hasValue = true;
        }
        s.skipSpace();
        s.dropSeparator();
        if (s.position() == before) s.advance();  // never stands still
        // A stray separator makes no entry; a key without a value does.
        if (hasValue || !key.empty()) object.set(std::move(key), std::move(value));
    }
    return object;
}

Array parseArray(std::string_view text) {
    Scanner s(text);
    Array array;
    s.skipSpace();
    if (s.peek() == '{') s.advance();
    while (true) {
        s.skipSpace();
        if (s.atEnd() || s.peek() == '}') break;
        const std::size_t before = s.position();
        array.push_back(s.readValue());
        s.skipSpace();
        s.dropSeparator();
        if (s.position() == before) s.advance();
    }
    return array;
}

}  // namespace notation
