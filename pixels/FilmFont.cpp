#include "pixels/FilmFont.h"

namespace OrlPixels {

FilmFont::FilmFont(ImageRef film, std::string charset, int ascent, int advance) : ascent_(ascent), advance_(advance) {
    for (int& f : frames_) f = -1;
    int index = 0;
    for (const char ch : charset) {
        const unsigned char c = static_cast<unsigned char>(ch);
        if (frames_[c] < 0) frames_[c] = index;
        ++index;
    }
    cut(std::move(film), index);
}

FilmFont::FilmFont(ImageRef film, int first, int count, int ascent, int advance) : ascent_(ascent), advance_(advance) {
    for (int& f : frames_) f = -1;
    if (count < 0) count = 0;
    for (int i = 0; i < count; ++i) {
        const int c = first + i;
        if (c >= 0 && c < 256) frames_[c] = i;
    }
    cut(std::move(film), count);
}

void FilmFont::cut(ImageRef film, int count) {
    film_ = std::move(film);
    count_ = count;
    if (!film_ || count <= 0) return;
    vertical_ = film_->height > film_->width;
    frameWidth_ = vertical_ ? film_->width : film_->width / count;
    frameHeight_ = vertical_ ? film_->height / count : film_->height;
}

TextSize FilmFont::measure(std::string_view text) const { return {int(text.size()) * advance_, frameHeight_}; }

void FilmFont::draw(Surface& surface, std::string_view text, int x, int y, Pixel color) const {
    if (!film_) return;
    Mask* mask = film_->asMask();
    Raster* raster = mask == nullptr ? film_->asRaster() : nullptr;
    int pen = x;
    for (const char ch : text) {
        const int frame = frames_[static_cast<unsigned char>(ch)];
        if (frame >= 0 && frame < count_) {
            const IntRect source = vertical_ ? IntRect(0, frame * frameHeight_, frameWidth_, frameHeight_)
                                             : IntRect(frame * frameWidth_, 0, frameWidth_, frameHeight_);
            if (mask != nullptr) {
                drawMaskPart(surface, *mask, source, pen, y, color);
            } else if (raster != nullptr) {
                film_->drawPart(surface, source, pen, y);
            }
        }
        pen += advance_;
    }
}

}  // namespace OrlPixels
