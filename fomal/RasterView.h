// An image: `image` by name or { name, format }, `opacity` in percent
// (default 100), `mode` of composition. Drawn at the view's top left corner.
#pragma once

#include "fomal/View.h"
#include "pixels/Image.h"

namespace Fomal {

class RasterView : public View {
public:
    explicit RasterView(const ViewBuild& build);
    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;

private:
    OrlPixels::ImageRef image_;
    double opacity_ = 1.0;
    int mode_ = OrlPixels::NORMAL_MODE;
};

}  // namespace Fomal
