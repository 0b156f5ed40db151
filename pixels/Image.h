// A long-lived bitmap, shared through ImageRef with an atomic reference
// count. An image is drawn with its top left corner at a point, whole or in
// part, by source over; an 8-bit image is drawn in its colour.
#pragma once

#include <atomic>
#include <utility>

#include "pixels/Raster.h"
#include "pixels/Surface.h"

namespace OrlPixels {

class Image {
public:
    Image(int width, int height, bool opaque) : width(width), height(height), opaque(opaque) {}
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;
    virtual ~Image() = default;

    // The image's own rectangle, at the origin.
    virtual void calcBounds(IntRect& out) { out = IntRect(0, 0, width, height); }
    virtual void draw(Surface& surface, int x, int y);
    virtual void drawPart(Surface& surface, IntRect source, int x, int y);
    // The image at the origin as a Raster (32-bit images) or a Mask (8-bit
    // images); the other one is null.
    virtual Raster* asRaster() { return nullptr; }
    virtual Mask* asMask() { return nullptr; }

    int width;
    int height;
    bool opaque;       // the PNG had no alpha
    Pixel color = 0xFF000000u;  // the colour an 8-bit image is drawn in

    void retain() const { count_.fetch_add(1, std::memory_order_relaxed); }
    void release() const {
        if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }

private:
    mutable std::atomic<int> count_{0};
};

// A counted handle to an image.
class ImageRef {
public:
    ImageRef() = default;
    explicit ImageRef(Image* image) : p_(image) {
        if (p_) p_->retain();
    }
    ImageRef(const ImageRef& o) : p_(o.p_) {
        if (p_) p_->retain();
    }
    ImageRef(ImageRef&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
    ImageRef& operator=(ImageRef o) {
        std::swap(p_, o.p_);
        return *this;
    }
    ~ImageRef() {
        if (p_) p_->release();
    }
    Image* get() const { return p_; }
    Image* operator->() const { return p_; }
    Image& operator*() const { return *p_; }
    explicit operator bool() const { return p_ != nullptr; }

private:
    Image* p_ = nullptr;
};

}  // namespace OrlPixels
