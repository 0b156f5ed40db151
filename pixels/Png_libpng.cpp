#include <png.h>

#include <csetjmp>
#include <cstdlib>
#include <cstring>

#include "pixels/Png.h"

namespace OrlPixels {

namespace {

struct MemoryReader {
    const std::uint8_t* data;
    std::size_t size;
    std::size_t at;
};

void readFromMemory(png_structp png, png_bytep out, png_size_t count) {
    MemoryReader* r = static_cast<MemoryReader*>(png_get_io_ptr(png));
    if (count > r->size - r->at) png_error(png, "read beyond the end");
    std::memcpy(out, r->data + r->at, count);
    r->at += count;
}

void silentWarning(png_structp, png_const_charp) {}

// Errors end the read through the jump buffer, without printing.
void silentError(png_structp png, png_const_charp) { png_longjmp(png, 1); }

enum Outcome { DECODED, INIT_FAILED, INVALID, UNSUPPORTED };

// Plain C state only: longjmp skips destructors.
struct RawImage {
    png_uint_32 width;
    png_uint_32 height;
    int colorType;
    bool hasAlpha;
    unsigned char* pixels;  // malloc'd, width * height * 4
};

Outcome readRaw(const std::uint8_t* data, std::size_t size, double gamma, RawImage* image) {
    image->pixels = nullptr;
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, silentError, silentWarning);
    if (png == nullptr) return INIT_FAILED;
    png_infop info = png_create_info_struct(png);
    if (info == nullptr) {
        png_destroy_read_struct(&png, nullptr, nullptr);
        return INIT_FAILED;
    }
    MemoryReader reader = {data, size, 0};
    png_bytep* volatile rows = nullptr;
    volatile Outcome failure = INVALID;
    if (setjmp(png_jmpbuf(png))) {
        std::free(rows);
        std::free(image->pixels);
        image->pixels = nullptr;
        png_destroy_read_struct(&png, &info, nullptr);
        return failure;
    }
    png_set_read_fn(png, &reader, readFromMemory);
    // The decoded size is checked by us below; no file may claim more.
    png_set_user_limits(png, 16384, 16384);
    png_read_info(png, info);

    const png_uint_32 width = png_get_image_width(png, info);
    const png_uint_32 height = png_get_image_height(png, info);
    const int colorType = png_get_color_type(png, info);
    const int depth = png_get_bit_depth(png, info);
    if (std::uint64_t(width) * height > (std::uint64_t(1) << 24)) png_error(png, "image too large");
    if (colorType != PNG_COLOR_TYPE_GRAY && colorType != PNG_COLOR_TYPE_RGB && colorType != PNG_COLOR_TYPE_PALETTE &&
        colorType != PNG_COLOR_TYPE_GRAY_ALPHA && colorType != PNG_COLOR_TYPE_RGB_ALPHA) {
        failure = UNSUPPORTED;
        png_error(png, "unsupported");
    }
    bool hasAlpha = (colorType & PNG_COLOR_MASK_ALPHA) != 0;

    // 1. Depths below 8 expand, 16 strips to 8.
    if (colorType == PNG_COLOR_TYPE_PALETTE) png_set_palette_to_rgb(png);
    if (colorType == PNG_COLOR_TYPE_GRAY && depth < 8) png_set_expand_gray_1_2_4_to_8(png);
    if (depth == 16) png_set_strip_16(png);
    if (png_get_valid(png, info, PNG_INFO_tRNS)) {
        png_set_tRNS_to_alpha(png);
        hasAlpha = true;
    }
    // 2. B, G, R, A in memory: the word A<<24|R<<16|G<<8|B on a little-endian machine.
    if (colorType == PNG_COLOR_TYPE_GRAY || colorType == PNG_COLOR_TYPE_GRAY_ALPHA) png_set_gray_to_rgb(png);
    png_set_bgr(png);
    if (!hasAlpha) png_set_filler(png, 0xFF, PNG_FILLER_AFTER);
    // 3. Gamma.
    if (gamma != 0) {
        double fileGamma = 0;
        if (!png_get_gAMA(png, info, &fileGamma)) fileGamma = 0.4545454545;
        png_set_gamma(png, gamma, fileGamma);
    }
    // 4. Rows.
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    if (png_get_rowbytes(png, info) != std::size_t(width) * 4) png_error(png, "unexpected row size");

    image->pixels = static_cast<unsigned char*>(std::malloc(std::size_t(width) * height * 4));
    rows = static_cast<png_bytep*>(std::malloc(sizeof(png_bytep) * height));
    if (image->pixels == nullptr || rows == nullptr) png_error(png, "out of memory");
    for (png_uint_32 y = 0; y < height; ++y) rows[y] = image->pixels + std::size_t(y) * width * 4;
    png_read_image(png, rows);
    png_read_end(png, nullptr);

    std::free(rows);
    png_destroy_read_struct(&png, &info, nullptr);
    image->width = width;
    image->height = height;
    image->colorType = colorType;
    image->hasAlpha = hasAlpha;
    return DECODED;
}

RawImage readOrThrow(const std::uint8_t* data, std::size_t size, double gamma) {
    RawImage raw;
    switch (readRaw(data, size, gamma, &raw)) {
        case DECODED:
            return raw;
        case INIT_FAILED:
            throw OrlPNG("Error reading PNG image : could not initialize");
        case UNSUPPORTED:
            throw OrlPNG("Error reading PNG image : unsupported pixel model");
        default:
            throw OrlPNG("Error reading PNG image : invalid format");
    }
}

struct FreeOnExit {
    unsigned char* p;
    ~FreeOnExit() { std::free(p); }
};

}  // namespace

bool pngAvailable() { return true; }

DecodedPng decodePng(const std::uint8_t* data, std::size_t size, double gamma, bool premultiply) {
    RawImage raw = readOrThrow(data, size, gamma);
    FreeOnExit guard{raw.pixels};
    DecodedPng out;
    out.width = int(raw.width);
    out.height = int(raw.height);
    out.opaque = !raw.hasAlpha;
    const std::size_t count = std::size_t(raw.width) * raw.height;
    out.pixels.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned char* b = raw.pixels + i * 4;
        out.pixels[i] = Pixel(b[0]) | Pixel(b[1]) << 8 | Pixel(b[2]) << 16 | Pixel(b[3]) << 24;
    }
    // 5. Premultiplication: blue and red together, then green; alpha stays.
    if (premultiply && raw.hasAlpha) {
        for (Pixel& p : out.pixels) {
            const std::uint32_t a = p >> 24;
            const std::uint32_t f = a != 0 ? a + 1 : 0;
            p = (a << 24) | ((((p & 0x00FF00FFu) * f) >> 8) & 0x00FF00FFu) | ((((p & 0x0000FF00u) * f) >> 8) & 0x0000FF00u);
        }
    }
    return out;
}

DecodedPng decodePngMask(const std::uint8_t* data, std::size_t size, double gamma) {
    RawImage raw = readOrThrow(data, size, gamma);
    FreeOnExit guard{raw.pixels};
    DecodedPng out;
    out.width = int(raw.width);
    out.height = int(raw.height);
    out.opaque = !raw.hasAlpha;
    const std::size_t count = std::size_t(raw.width) * raw.height;
    out.values.resize(count);
    const bool greyOnly = raw.colorType == PNG_COLOR_TYPE_GRAY && !raw.hasAlpha;
    for (std::size_t i = 0; i < count; ++i) out.values[i] = greyOnly ? raw.pixels[i * 4] : raw.pixels[i * 4 + 3];
    return out;
}

namespace {

void writeToVector(png_structp png, png_bytep data, png_size_t count) {
    auto* out = static_cast<std::vector<std::uint8_t>*>(png_get_io_ptr(png));
    out->insert(out->end(), data, data + count);
}

void flushNothing(png_structp) {}

// Writes rows of 8-bit samples: 4 channels as RGBA, 1 as grey.
bool writeRaw(const std::uint8_t* rows, int channels, int width, int height, std::vector<std::uint8_t>* out) {
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, silentError, silentWarning);
    if (png == nullptr) return false;
    png_infop info = png_create_info_struct(png);
    if (info == nullptr) {
        png_destroy_write_struct(&png, nullptr);
        return false;
    }
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return false;
    }
    png_set_write_fn(png, out, writeToVector, flushNothing);
    png_set_IHDR(png, info, png_uint_32(width), png_uint_32(height), 8,
                 channels == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (int y = 0; y < height; ++y)
        png_write_row(png, const_cast<png_bytep>(rows + std::size_t(y) * std::size_t(width) * std::size_t(channels)));
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return true;
}

}  // namespace

std::vector<std::uint8_t> encodePng(const Pixel* pixels, int width, int height, int stride) {
    std::vector<std::uint8_t> out;
    if (width <= 0 || height <= 0) return out;
    const std::vector<std::uint8_t> rgba = straightRgba(pixels, width, height, stride);
    if (!writeRaw(rgba.data(), 4, width, height, &out)) out.clear();
    return out;
}

std::vector<std::uint8_t> encodeGreyPng(const Coverage* values, int width, int height, int stride) {
    std::vector<std::uint8_t> out;
    if (width <= 0 || height <= 0) return out;
    std::vector<std::uint8_t> rows(std::size_t(width) * std::size_t(height));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            rows[std::size_t(y) * std::size_t(width) + std::size_t(x)] =
                values[std::size_t(y) * std::size_t(stride) + std::size_t(x)];
    if (!writeRaw(rows.data(), 1, width, height, &out)) out.clear();
    return out;
}

}  // namespace OrlPixels
