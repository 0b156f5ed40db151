#include "quol/Exception.h"

#include <cstring>

#include "notation/Escape.h"

namespace Quol {

void fail(const char* text) { throw Exception(text); }

void fail(const char* text, std::string_view value) {
    std::string message(text);
    message += notation::escape(value);
    throw Exception(std::string_view(message));
}

namespace {

// What "%.*s" prints of a text: up to max bytes, stopping at a NUL.
std::string_view printable(const char* p, std::size_t max) {
    std::size_t n = 0;
    while (n < max && p[n] != '\0') ++n;
    return {p, n};
}

}  // namespace

std::string faultLines(const Exception& e) {
    std::string out;
    for (const SourcePosition& position : e.positions()) {
        const Value& source = position.source;
        const std::size_t offset = position.offset < source.size() ? position.offset : source.size();
        const std::size_t before = offset < 20 ? offset : 20;
        if (offset > 20) out += "...";
        out += printable(source.data() + offset - before, before);
        out += " <!> ";
        std::size_t after = source.size() - offset;
        out += printable(source.data() + offset, after < 20 ? after : 20);
        out += '\n';
    }
    return out;
}

std::string failureReport(const Exception& e) {
    std::string out = e.text().str();
    out += '\n';
    out += faultLines(e);
    return out;
}

}  // namespace Quol
