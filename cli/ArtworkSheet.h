// One picture of all the panel's artwork: every image with all its film
// frames side by side, each labelled with its name, and a line of every
// font's characters.
#pragma once

#include <string>
#include <vector>

#include "pixels/Pixel.h"

namespace cli {

struct SheetEntry {
    std::string name;
    int width = 0;   // of one frame
    int height = 0;
    int frames = 1;
};

struct ArtworkSheet {
    int width = 0;
    int height = 0;
    std::vector<OrlPixels::Pixel> pixels;
    std::vector<SheetEntry> images;      // in the order shown
    std::vector<std::string> fonts;
};

// Throws the loaders' exceptions when a resource is missing.
ArtworkSheet drawArtworkSheet();

}  // namespace cli
