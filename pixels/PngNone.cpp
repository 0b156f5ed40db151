// Builds without libpng have no PNG decoder: reading fails with a message.
#ifndef TENDRANE_HAVE_LIBPNG

#include "pixels/Png.h"

namespace OrlPixels {

bool pngAvailable() { return false; }

DecodedPng decodePng(const std::uint8_t*, std::size_t, double, bool) {
    throw OrlPNG("Error reading PNG image : could not initialize");
}

DecodedPng decodePngMask(const std::uint8_t*, std::size_t, double) {
    throw OrlPNG("Error reading PNG image : could not initialize");
}

std::vector<std::uint8_t> encodePng(const Pixel*, int, int, int) { return {}; }

std::vector<std::uint8_t> encodeGreyPng(const Coverage*, int, int, int) { return {}; }

}  // namespace OrlPixels

#endif
