// Reading a pen from the values of an object-notation text. The reader does
// not know the notation itself: it asks a PenValues for the keys it needs,
// so the layout reader can hand over its own object (with its expression
// reader for numbers). PenText is a small stand-alone PenValues for a flat
// `{ key: value, ... }` text, used where no layout reader is at hand.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "pixels/Pen.h"

namespace OrlPixels {

class PenValues {
public:
    virtual ~PenValues() = default;
    virtual bool has(const char* key) const = 0;
    // The key's value as a number; throws on text that is no number.
    virtual double number(const char* key) const = 0;
    // The key's value as a colour word; `fallback` when it does not parse.
    virtual Pixel color(const char* key, Pixel fallback) const = 0;
    // The key's value as a word, unquoted.
    virtual std::string keyword(const char* key) const = 0;
};

// Keys in the order color, stroke, caps, joints, miterLimit (only with
// miter joints), quality, dash, gap, dashOffset. Absent keys keep their
// defaults; without `dash` there is no dashing. Invalid values throw
// FormatException with the key's message and the value.
Pen parsePen(const PenValues& values, double defaultStroke);

class PenText : public PenValues {
public:
    // Splits `{ key: value, ... }` (braces optional) into raw values.
    explicit PenText(std::string_view text);

    bool has(const char* key) const override;
    double number(const char* key) const override;
    Pixel color(const char* key, Pixel fallback) const override;
    std::string keyword(const char* key) const override;

    const std::vector<std::pair<std::string, std::string>>& entries() const { return entries_; }

private:
    const std::string* find(const char* key) const;
    std::vector<std::pair<std::string, std::string>> entries_;
};

// A pen from text, as PenText reads it.
Pen parsePen(std::string_view text, double defaultStroke);

}  // namespace OrlPixels
