// Builds without libpng but with zlib (the Windows plug-in) decode with our
// own reader. They write no PNG files: encoding gives nothing.
#if !defined(TENDRANE_HAVE_LIBPNG) && defined(TENDRANE_HAVE_ZLIB)

#include "pixels/Png.h"
#include "pixels/PngDecoder.h"

namespace OrlPixels {

bool pngAvailable() { return true; }

DecodedPng decodePng(const std::uint8_t* data, std::size_t size, double gamma, bool premultiply) {
    return decodePngWithZlib(data, size, gamma, premultiply);
}

DecodedPng decodePngMask(const std::uint8_t* data, std::size_t size, double gamma) {
    return decodePngMaskWithZlib(data, size, gamma);
}

std::vector<std::uint8_t> encodePng(const Pixel*, int, int, int) { return {}; }

std::vector<std::uint8_t> encodeGreyPng(const Coverage*, int, int, int) { return {}; }

}  // namespace OrlPixels

#endif
