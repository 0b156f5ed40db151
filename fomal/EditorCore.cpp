#include "fomal/EditorCore.h"

#include "fomal/LayoutView.h"

namespace Fomal {

EditorCore::EditorCore(SubstitutionContext& substitution)
    : substitution_(substitution),
      pixels_(std::size_t(WIDTH) * HEIGHT, 0xFF000000u),
      surface_(pixels_.data(), WIDTH, OrlPixels::IntRect(0, 0, WIDTH, HEIGHT), true) {}

void EditorCore::openLayoutText(std::string_view text) {
    std::unique_ptr<View> tree = buildLayout(text, RectF{0, 0, float(WIDTH), float(HEIGHT)}, *this);
    root_ = std::move(tree);
    invalidate(surface_.bounds);
}

void EditorCore::openLayout(std::string_view name) { openLayoutText(layoutText(name)); }

void EditorCore::invalidate(const OrlPixels::IntRect& region) {
    const OrlPixels::IntRect r = intersection(region, surface_.bounds);
    if (r.isEmpty()) return;
    dirty_ = dirty_.isEmpty() ? r : unionOf(dirty_, r);
}

OrlPixels::IntRect EditorCore::paint() {
    const OrlPixels::IntRect region = dirty_;
    dirty_ = OrlPixels::IntRect();
    if (region.isEmpty()) return region;
    // The panel is opaque: what no view covers is black.
    for (std::int64_t y = region.top; y < region.bottom(); ++y)
        std::fill_n(pixels_.begin() + std::ptrdiff_t(y * WIDTH + region.left), region.width, 0xFF000000u);
    if (root_) root_->drawTree(surface_, region);
    return region;
}

}  // namespace Fomal
