// The scenes whose pixels are pinned by golden images.
#pragma once

#include <string>
#include <vector>

#include "pixels/Pixel.h"

namespace pixeltest {

struct Scene {
    std::string name;
    int width;
    int height;
    std::vector<OrlPixels::Pixel> pixels;
};

std::vector<std::string> sceneNames();
Scene renderScene(const std::string& name);

}  // namespace pixeltest
