// The editor without a window: the 384 x 512 panel surface, the view tree
// on it and the region waiting to be redrawn. A window (or the headless
// panel of the command-line program) shows its pixels.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "fomal/EditorServices.h"
#include "fomal/View.h"
#include "pixels/Pixel.h"
#include "pixels/Surface.h"

namespace Fomal {

class EditorCore : public EditorServices {
public:
    static constexpr int WIDTH = 384;
    static constexpr int HEIGHT = 512;

    explicit EditorCore(SubstitutionContext& substitution);

    // Builds the view tree of a layout text over the whole panel; on failure
    // the exception travels on and the tree stays as it was.
    void openLayoutText(std::string_view text);
    // The same for a layout resource by name.
    void openLayout(std::string_view name);

    View* root() const { return root_.get(); }

    // Redraws what was invalidated since the last paint; returns that region.
    OrlPixels::IntRect paint();
    const std::vector<OrlPixels::Pixel>& pixels() const { return pixels_; }

    void invalidate(const OrlPixels::IntRect& region) override;
    SubstitutionContext& substitution() override { return substitution_; }

private:
    SubstitutionContext& substitution_;
    std::vector<OrlPixels::Pixel> pixels_;
    OrlPixels::Surface surface_;
    std::unique_ptr<View> root_;
    OrlPixels::IntRect dirty_;
};

}  // namespace Fomal
