#include "platform/Resources.h"

namespace platform {

namespace {

char upper(char c) { return (c >= 'a' && c <= 'z') ? char(c - 'a' + 'A') : c; }

bool equalNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (upper(a[i]) != upper(b[i])) return false;
    return true;
}

}  // namespace

Resource ResourceTable::find(std::string_view type, std::string_view name) const {
    for (std::size_t i = 0; i < count_; ++i) {
        const ResourceEntry& e = entries_[i];
        if (e.data && equalNoCase(type, e.type) && equalNoCase(name, e.name))
            return Resource{e.data, e.size};
    }
    return {};
}

}  // namespace platform
