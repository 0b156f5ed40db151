// Fuzz target: the PNG reader, in every image format, and drawing the result.
#include <cstddef>
#include <cstdint>
#include <exception>

#include "pixels/ImageLoader.h"
#include "pixels/Surface.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace OrlPixels;
    static const ImageFormat formats[] = {PLAIN_FORMAT, RLE_FORMAT, MASK_FORMAT, RLE_MASK_FORMAT};
    const ImageFormat format = formats[size % 4];
    try {
        ImageRef image = imageFromPng(data, size, format, size % 3 == 0 ? 2.2 : 0);
        if (image && image->width <= 512 && image->height <= 512) {
            static Pixel block[64 * 64];
            Surface surface(block, 64, IntRect(0, 0, 64, 64));
            image->draw(surface, -3, 5);
            image->drawPart(surface, IntRect(1, 1, 30, 20), 10, 10);
        }
    } catch (const std::exception&) {
        // Refusing bad data is the expected outcome.
    }
    return 0;
}
