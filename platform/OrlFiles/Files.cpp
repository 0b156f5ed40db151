#include "platform/OrlFiles/Files.h"

namespace OrlFiles {

bool nameHasExtension(std::u16string_view name, std::u16string_view extension) {
    if (extension.empty())
        return true;
    if (name.size() < extension.size() + 1 || name[name.size() - extension.size() - 1] != u'.')
        return false;
    auto lower = [](char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; };
    const std::u16string_view tail = name.substr(name.size() - extension.size());
    for (std::size_t i = 0; i < tail.size(); ++i)
        if (lower(tail[i]) != lower(extension[i]))
            return false;
    return true;
}

}  // namespace OrlFiles
