// A block of elements in memory as a Raster or Mask: raw spans that point
// straight into the block, solid 0 around it. Like Surface, the pointer is
// pre-adjusted so that element (x, y) stands at data + y * stride + x.
#pragma once

#include <cstddef>

#include "pixels/Raster.h"
#include "pixels/RowCut.h"

namespace OrlPixels {

template <class T>
class BasicBlock : public GeneratorOf<T>::Type {
public:
    BasicBlock() = default;
    BasicBlock(const T* topLeft, int stride, const IntRect& bounds, bool opaque)
        : data_(topLeft - (std::ptrdiff_t(bounds.top) * stride + bounds.left)),
          stride_(stride),
          bounds_(bounds),
          opaque_(opaque) {}

    void calcBounds(IntRect& out) override { out = bounds_; }
    void render(int x, int y, int length, BasicSpanOutput<T>& out) override {
        if (length <= 0) return;
        if (bounds_.isEmpty() || y < bounds_.top || y >= bounds_.bottom()) {
            out.putSolid(length, 0, false);
            return;
        }
        const RowCut c = RowCut::of(bounds_, x, length);
        if (c.before > 0) out.putSolid(c.before, 0, false);
        if (c.inside > 0) out.putRaw(c.inside, data_ + (std::ptrdiff_t(y) * stride_ + x + c.before), opaque_);
        if (c.after > 0) out.putSolid(c.after, 0, false);
    }

private:
    const T* data_ = nullptr;
    int stride_ = 0;
    IntRect bounds_;
    bool opaque_ = false;
};

typedef BasicBlock<Pixel> PixelBlockRaster;
typedef BasicBlock<Coverage> MaskBlock;

}  // namespace OrlPixels
