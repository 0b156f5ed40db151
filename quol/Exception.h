// The one failure of the script language: a text, and the places in the
// script sources where it passed on its way out.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Exceptions.h"
#include "quol/Value.h"

namespace Quol {

struct SourcePosition {
    Value source;          // the text that was being read
    std::size_t offset;    // byte index of the fault in it
};

class Exception : public ::Exception {
public:
    explicit Exception(const Value& text) : ::Exception(text.str()), text_(text) {}
    explicit Exception(std::string_view text) : Exception(Value(text)) {}
    explicit Exception(const char* text) : Exception(Value(text)) {}

    const Value& text() const { return text_; }

    // Innermost first: the place of the fault, then every call site the
    // failure unwound through.
    const std::vector<SourcePosition>& positions() const { return positions_; }
    void addPosition(const Value& source, std::size_t offset) { positions_.push_back({source, offset}); }

private:
    Value text_;
    std::vector<SourcePosition> positions_;
};

// Throw an Exception with a fixed text, or with a fixed text followed by the
// escaped value.
[[noreturn]] void fail(const char* text);
[[noreturn]] void fail(const char* text, std::string_view value);

// The fault lines of a failure report, one per position:
// "%s%.*s <!> %.20s\n" with "..." when more than 20 bytes stand before the
// fault, up to 20 bytes of the source before it, and up to 20 bytes after.
std::string faultLines(const Exception& e);

// The whole report of a script failure as the command line shows it: the
// text, a line end, then the fault lines.
std::string failureReport(const Exception& e);

}  // namespace Quol
