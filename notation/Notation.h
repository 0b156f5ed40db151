// The object notation: `{ key: value }` text in which layouts, constants,
// action parameters, patches and MIDI configurations are written.
//
// Parsing is lazy. An object is a map from keys to raw value texts, and a raw
// value keeps its exact source form: a quoted string keeps its quotes and
// escapes, a nested object its braces. A value is interpreted only when a
// reader (NotationReaders.h) asks for it as a number, a colour, a string...
//
// Lexical rules: white space is the bytes 9, 10, 11, 13 and 32, `//` comments
// run to the line end and `/* */` comments nest. The text ends at a NUL, at
// the byte 26 (a DOS end-of-file mark) or at the closing brace.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace notation {

// An ordered map from key to raw value; keys are ordered by their bytes. A key
// stands once: a later occurrence in the text replaces the earlier one.
class Object {
public:
    using Map = std::map<std::string, std::string, std::less<>>;

    // The raw value of the key, or null when the key is absent.
    const std::string* find(std::string_view key) const;
    bool has(std::string_view key) const { return find(key) != nullptr; }
    // The raw value, or fallback when the key is absent.
    std::string get(std::string_view key, std::string_view fallback = {}) const;

    void set(std::string key, std::string raw);
    const Map& entries() const { return entries_; }
    std::size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }

private:
    Map entries_;
};

using Array = std::vector<std::string>;

// `{` is optional at the top. Each entry is a key, then `:` or `=` and a value
// (a key without either gets an empty value), then an optional `,` or `;`; a
// line end alone separates entries as well. Keys are either a quoted string
// (stored unescaped) or the bytes up to one of `,;=:}`, tab, vertical tab or a
// line end, with trailing blanks dropped.
Object parseObject(std::string_view text);

// An optional `{`, then values separated by `,`, `;` or line ends.
Array parseArray(std::string_view text);

}  // namespace notation
