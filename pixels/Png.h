// PNG decoding and encoding, from and to memory: through libpng, or where it
// is missing through our own reader over zlib (PngDecoder.h), which decodes
// alike and does not encode.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "pixels/Pixel.h"
#include "platform/Exceptions.h"

namespace OrlPixels {

// A failure of the PNG reader, with the reader's text.
class OrlPNG : public Exception {
public:
    explicit OrlPNG(std::string message) : Exception(std::move(message)) {}
};

struct DecodedPng {
    int width = 0;
    int height = 0;
    bool opaque = false;          // the file has no alpha (1 or 3 channels)
    std::vector<Pixel> pixels;    // 32-bit targets: A<<24|R<<16|G<<8|B, row after row
    std::vector<Coverage> values; // 8-bit targets: grey for grey files, else alpha
};

// True where this build has a PNG decoder.
bool pngAvailable();

// Decodes to 32-bit pixels. A gamma other than 0 corrects from the file's
// gamma (or 0.4545454545 when it has none). Premultiplied unless asked not to.
DecodedPng decodePng(const std::uint8_t* data, std::size_t size, double gamma = 0, bool premultiply = true);

// Decodes to one byte a pixel.
DecodedPng decodePngMask(const std::uint8_t* data, std::size_t size, double gamma = 0);

// Encodes premultiplied pixels as an 8-bit RGBA file (alpha divided out).
std::vector<std::uint8_t> encodePng(const Pixel* pixels, int width, int height, int stride);

// Encodes coverage bytes as an 8-bit grey file (glyph atlases: a gamma
// given when decoding then acts on the coverage).
std::vector<std::uint8_t> encodeGreyPng(const Coverage* values, int width, int height, int stride);

// The straight (not premultiplied) RGBA bytes that encodePng stores.
std::vector<std::uint8_t> straightRgba(const Pixel* pixels, int width, int height, int stride);

}  // namespace OrlPixels
