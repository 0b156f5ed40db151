// Width times height coverage bytes.
#pragma once

#include <vector>

#include "pixels/BlockGenerator.h"
#include "pixels/Image.h"

namespace OrlPixels {

class PlainMaskImage : public Image {
public:
    PlainMaskImage(int width, int height, std::vector<Coverage> values)
        : Image(width, height, false), values_(std::move(values)),
          mask_(values_.data(), width, IntRect(0, 0, width, height), false) {}

    Mask* asMask() override { return &mask_; }
    const std::vector<Coverage>& values() const { return values_; }

private:
    std::vector<Coverage> values_;
    MaskBlock mask_;
};

}  // namespace OrlPixels
