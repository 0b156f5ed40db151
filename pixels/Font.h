// A font draws a line of the system's 8-bit text. Fonts are long-lived and
// shared through FontRef, counted with an atomic count, like images.
//
// Text is drawn with the top of its line at y: a glyph's offsets count from
// there, and the baseline lies `ascent()` below it. `measure` sums the
// advances and kerning of the whole string, the last character's advance
// included (a trailing space widens the text); its height is the line height.
#pragma once

#include <atomic>
#include <string_view>
#include <utility>

#include "pixels/Pixel.h"
#include "pixels/Surface.h"

namespace OrlPixels {

struct TextSize {
    int width = 0;
    int height = 0;
};

class Font {
public:
    Font() = default;
    Font(const Font&) = delete;
    Font& operator=(const Font&) = delete;
    virtual ~Font() = default;

    virtual TextSize measure(std::string_view text) const = 0;
    // Draws in `color` (a premultiplied pixel word) by source over.
    virtual void draw(Surface& surface, std::string_view text, int x, int y, Pixel color) const = 0;
    virtual int ascent() const = 0;
    virtual int lineHeight() const = 0;

    void retain() const { count_.fetch_add(1, std::memory_order_relaxed); }
    void release() const {
        if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }

private:
    mutable std::atomic<int> count_{0};
};

// A counted handle to a font.
class FontRef {
public:
    FontRef() = default;
    explicit FontRef(const Font* font) : p_(font) {
        if (p_) p_->retain();
    }
    FontRef(const FontRef& o) : p_(o.p_) {
        if (p_) p_->retain();
    }
    FontRef(FontRef&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
    FontRef& operator=(FontRef o) {
        std::swap(p_, o.p_);
        return *this;
    }
    ~FontRef() {
        if (p_) p_->release();
    }
    const Font* get() const { return p_; }
    const Font* operator->() const { return p_; }
    const Font& operator*() const { return *p_; }
    explicit operator bool() const { return p_ != nullptr; }

private:
    const Font* p_ = nullptr;
};

// Draws a mask's rectangle `source` with its top left corner at (x, y), in
// one colour, by source over. Glyphs of every font go through here.
void drawMaskPart(Surface& surface, Mask& mask, const IntRect& source, int x, int y, Pixel color);

}  // namespace OrlPixels
