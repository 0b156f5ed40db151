// The message catalogue (strings.txt): lines `"key" = "value"` with `//`
// comments, keys and values in the script language's string literals. A
// text with no entry stands for itself.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace Fomal {

class MessageCatalogue {
public:
    MessageCatalogue() = default;
    // Reads the text of a catalogue; a line that is no entry fails with
    // "Invalid catalogue entry: " and the escaped line, and nothing is kept.
    static MessageCatalogue parse(std::string_view text);
    // The product's own catalogue (the resource strings.txt), read once.
    static const MessageCatalogue& product();

    // The entry's value, or the text itself.
    std::string lookup(std::string_view text) const;
    std::size_t size() const { return entries_.size(); }

private:
    std::map<std::string, std::string, std::less<>> entries_;
};

}  // namespace Fomal
