// Our own PNG reader over zlib's inflate, for builds without libpng (the
// Windows plug-in). It gives the same DecodedPng as the libpng reader: the
// same expansion to 8 bits, gamma tables, interlace handling and the same
// failures with the same texts. Linux builds compile it too, so that the
// tests hold the two readers to each other.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pixels/Png.h"

namespace OrlPixels {

DecodedPng decodePngWithZlib(const std::uint8_t* data, std::size_t size, double gamma = 0, bool premultiply = true);

DecodedPng decodePngMaskWithZlib(const std::uint8_t* data, std::size_t size, double gamma = 0);

}  // namespace OrlPixels
