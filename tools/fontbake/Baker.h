// Bakes one face at one size into a glyph description and one atlas page:
// the characters of the system's 8-bit text that the face has, each glyph
// rendered by FreeType with light hinting, packed on shelves into a page
// 256 pixels wide (times the scale) and as high as a power of two needs.
// The page is a grey PNG whose values are the coverage.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace fontbake {

struct BakeRequest {
    std::string name;      // the font's resource name; the page is name + "_0.png"
    std::string faceFile;  // path of the face
    int pixelSize = 14;
    bool oblique = false;  // slant a upright face
    int scale = 1;         // pixel density: 2 bakes the same font for a panel at twice the density
};

struct BakedFiles {
    std::string description;         // the .fnt text
    std::vector<std::uint8_t> page;  // the PNG
};

// Throws std::runtime_error with a message when the face cannot be read.
BakedFiles bake(const BakeRequest& request);

}  // namespace fontbake
