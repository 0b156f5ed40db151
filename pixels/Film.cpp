#include "pixels/Film.h"

#include <algorithm>

namespace OrlPixels {

Film::Film(ImageRef image, int frameWidth, int frameHeight)
    : image_(std::move(image)), frameWidth_(std::max(frameWidth, 1)), frameHeight_(std::max(frameHeight, 1)) {
    if (!image_) return;
    vertical_ = image_->height >= 2 * frameHeight_ || image_->width < 2 * frameWidth_;
    const int length = vertical_ ? image_->height / frameHeight_ : image_->width / frameWidth_;
    count_ = std::max(length, 1);
}

IntRect Film::frame(int index) const {
    index = std::clamp(index, 0, std::max(count_ - 1, 0));
    if (vertical_) return IntRect(0, index * frameHeight_, frameWidth_, frameHeight_);
    return IntRect(index * frameWidth_, 0, frameWidth_, frameHeight_);
}

void Film::drawFrame(Surface& surface, int index, int x, int y) const {
    if (!image_) return;
    image_->drawPart(surface, frame(index), x, y);
}

}  // namespace OrlPixels
