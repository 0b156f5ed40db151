#include "fomal/MessageCatalogue.h"

#include "platform/Exceptions.h"
#include "platform/Resources.h"
#include "notation/Escape.h"

namespace Fomal {

namespace {

void skipBlanks(std::string_view line, std::size_t& i) {
    while (i < line.size() && (line[i] == ' ' || line[i] == '\t' || line[i] == '\r')) ++i;
}

bool atComment(std::string_view line, std::size_t i) {
    return i + 1 < line.size() && line[i] == '/' && line[i + 1] == '/';
}

[[noreturn]] void invalid(std::string_view line) {
    throw FormatException("Invalid catalogue entry: " + notation::escape(line));
}

std::string literal(std::string_view line, std::size_t& i) {
    if (i >= line.size() || (line[i] != '"' && line[i] != '\'')) invalid(line);
    try {
        return notation::readStringLiteral(line, i);
    } catch (const Exception&) {
        invalid(line);
    }
}

}  // namespace

MessageCatalogue MessageCatalogue::parse(std::string_view text) {
    MessageCatalogue c;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        const std::string_view line = text.substr(start, end - start);
        start = end + 1;
        std::size_t i = 0;
        skipBlanks(line, i);
        if (i == line.size() || atComment(line, i)) {
            if (end == text.size()) break;
            continue;
        }
        std::string key = literal(line, i);
        skipBlanks(line, i);
        if (i >= line.size() || line[i] != '=') invalid(line);
        ++i;
        skipBlanks(line, i);
        std::string value = literal(line, i);
        skipBlanks(line, i);
        if (i < line.size() && line[i] == ';') ++i;
        skipBlanks(line, i);
        if (i < line.size() && !atComment(line, i)) invalid(line);
        c.entries_[std::move(key)] = std::move(value);
        if (end == text.size()) break;
    }
    return c;
}

const MessageCatalogue& MessageCatalogue::product() {
    static const MessageCatalogue catalogue = [] {
        const platform::Resource r = platform::productResources().find("TXT", "strings");
        return r ? parse(r.text()) : MessageCatalogue();
    }();
    return catalogue;
}

std::string MessageCatalogue::lookup(std::string_view text) const {
    const auto it = entries_.find(text);
    return it == entries_.end() ? std::string(text) : it->second;
}

}  // namespace Fomal
