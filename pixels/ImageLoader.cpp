#include "pixels/ImageLoader.h"

#include <cctype>
#include <fstream>
#include <iterator>
#include <vector>

#include "pixels/Png.h"
#include "pixels/PlainImage.h"
#include "pixels/PlainMaskImage.h"
#include "pixels/RunLengthImage.h"
#include "platform/Exceptions.h"
#include "platform/Resources.h"

namespace OrlPixels {

ImageFormat parseImageFormat(const std::string& specifier) {
    if (specifier.empty()) return PLAIN_FORMAT;
    if (specifier == "rle") return RLE_FORMAT;
    if (specifier == "mask") return MASK_FORMAT;
    if (specifier == "rlemask") return RLE_MASK_FORMAT;
    throw FormatException("Unknown image format specification: " + specifier);
}

ImageRef imageFromPng(const std::uint8_t* data, std::size_t size, ImageFormat format, double gamma) {
    if (format == MASK_FORMAT || format == RLE_MASK_FORMAT) {
        DecodedPng d = decodePngMask(data, size, gamma);
        ImageRef plain(new PlainMaskImage(d.width, d.height, std::move(d.values)));
        if (format == MASK_FORMAT) return plain;
        return ImageRef(new RleMask(*plain->asMask()));
    }
    DecodedPng d = decodePng(data, size, gamma, true);
    ImageRef plain(new PlainImage(d.width, d.height, d.opaque, std::move(d.pixels)));
    if (format == PLAIN_FORMAT) return plain;
    return ImageRef(new RleRaster(*plain->asRaster(), d.opaque));
}

namespace {

[[noreturn]] void couldNotLoad(const std::string& name, const char* reason) {
    std::string message = "Could not load image resource " + name;
    if (reason != nullptr && *reason != 0) message += std::string(":") + reason;
    throw Exception(message);
}

ImageRef decodeOrExplain(const std::string& name, const std::uint8_t* data, std::size_t size, ImageFormat format,
                         double gamma) {
    try {
        return imageFromPng(data, size, format, gamma);
    } catch (const OrlPNG& e) {
        couldNotLoad(name, e.what());
    }
}

}  // namespace

ImageRef loadImage(const std::string& name, ImageFormat format, double gamma) {
    std::string upper = name;
    for (char& c : upper) c = char(std::toupper(static_cast<unsigned char>(c)));
    const platform::Resource r = platform::productResources().find("PNG", upper);
    if (!r) couldNotLoad(name, nullptr);
    return decodeOrExplain(name, r.data, r.size, format, gamma);
}

ImageRef loadImageFile(const std::string& path, ImageFormat format, double gamma) {
    std::ifstream in(path + ".png", std::ios::binary);
    if (!in) couldNotLoad(path, nullptr);
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return decodeOrExplain(path, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), format, gamma);
}

}  // namespace OrlPixels
