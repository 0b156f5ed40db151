#include "fomal/FileDialog.h"

#include <cctype>

namespace Fomal {

std::string filterTitle(const FileFilter& filter) {
    std::string title = filter.name + " (";
    for (std::size_t i = 0; i < filter.patterns.size(); ++i) title += (i > 0 ? "; " : "") + filter.patterns[i];
    return title + ")";
}

FileFilter allFilesFilter() { return FileFilter{"All Files", {"*.*"}}; }

bool matchesPattern(std::string_view name, std::string_view pattern) {
    if (pattern == "*" || pattern == "*.*") return true;
    if (pattern.size() < 2 || pattern.substr(0, 2) != "*.") return name == pattern;
    const std::string_view extension = pattern.substr(1);  // ".tdrn"
    if (name.size() <= extension.size()) return false;
    const std::string_view tail = name.substr(name.size() - extension.size());
    for (std::size_t i = 0; i < tail.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(tail[i])) != std::tolower(static_cast<unsigned char>(extension[i])))
            return false;
    return true;
}

}  // namespace Fomal
