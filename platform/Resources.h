// Resources embedded into the binary at build time: scripts, layouts, text
// tables, factory patches, fonts and images, found by (type, name).
#pragma once

#include <cstddef>
#include <string_view>

namespace platform {

struct ResourceEntry {
    const char* type;            // "QUOL", "FOMAL", "TXT", "TDRN", "FNT" or "PNG"
    const char* name;            // file name without its extension
    const unsigned char* data;   // followed by one zero byte not counted in size
    std::size_t size;
};

struct Resource {
    const unsigned char* data = nullptr;
    std::size_t size = 0;

    explicit operator bool() const { return data != nullptr; }
    std::string_view text() const { return {reinterpret_cast<const char*>(data), size}; }
};

class ResourceTable {
public:
    constexpr ResourceTable(const ResourceEntry* entries, std::size_t count)
        : entries_(entries), count_(count) {}

    // Types and names compare without regard to case. A missing resource
    // gives an empty Resource.
    Resource find(std::string_view type, std::string_view name) const;

    std::size_t size() const { return count_; }
    const ResourceEntry& operator[](std::size_t i) const { return entries_[i]; }

private:
    const ResourceEntry* entries_;
    std::size_t count_;
};

// The product's own resources (the files under resources/).
const ResourceTable& productResources();

}  // namespace platform
