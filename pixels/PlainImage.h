// Width times height premultiplied pixels, stride equal to the width.
#pragma once

#include <vector>

#include "pixels/BlockGenerator.h"
#include "pixels/Image.h"
#include "pixels/PixelBlock.h"

namespace OrlPixels {

class PlainImage : public Image {
public:
    PlainImage(int width, int height, bool opaque, std::vector<Pixel> pixels)
        : Image(width, height, opaque), pixels_(std::move(pixels)),
          raster_(pixels_.data(), width, IntRect(0, 0, width, height), opaque) {}

    Raster* asRaster() override { return &raster_; }
    const std::vector<Pixel>& pixels() const { return pixels_; }
    PixelBlock block() const {
        PixelBlock b;
        b.pixels = pixels_.data();
        b.stride = width;
        b.width = width;
        b.height = height;
        b.opaque = opaque;
        return b;
    }

private:
    std::vector<Pixel> pixels_;
    PixelBlockRaster raster_;
};

}  // namespace OrlPixels
