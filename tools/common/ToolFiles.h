// Whole files in and out, for the tools that make the committed resources.
#pragma once

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace tools {

// The file's bytes; `found` tells whether it could be opened.
inline std::string readFile(const std::string& path, bool& found) {
    std::ifstream in(path, std::ios::binary);
    found = bool(in);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void writeFile(const std::string& path, const void* data, std::size_t size) {
    std::ofstream out(path, std::ios::binary);
    out.write(static_cast<const char*>(data), std::streamsize(size));
    if (!out) throw std::runtime_error("cannot write " + path + " (does the folder exist?)");
}

}  // namespace tools
