// Images from the resources: a PNG of the given name, decoded and stored in
// the form a layout's format specifier asks for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "pixels/Image.h"

namespace OrlPixels {

enum ImageFormat { PLAIN_FORMAT, RLE_FORMAT, MASK_FORMAT, RLE_MASK_FORMAT };

// "" plain, "rle", "mask", "rlemask"; anything else throws
// "Unknown image format specification: " and the text.
ImageFormat parseImageFormat(const std::string& specifier);

// Builds the image of a format from PNG bytes (throws OrlPNG).
ImageRef imageFromPng(const std::uint8_t* data, std::size_t size, ImageFormat format, double gamma = 0);

// Looks the PNG up among the product's resources by its name in upper case
// and decodes it. Failure: "Could not load image resource " and the name,
// with ":" and the decoder's reason when it gave one.
ImageRef loadImage(const std::string& name, ImageFormat format, double gamma = 0);

// The same from a file path; ".png" is appended to the path.
ImageRef loadImageFile(const std::string& path, ImageFormat format, double gamma = 0);

}  // namespace OrlPixels
