// A filled rectangle: `fill` colour, `frame` pen along its edge, `mode` of
// composition ("add", "multiply", else normal).
#pragma once

#include <optional>

#include "fomal/View.h"
#include "pixels/Pen.h"

namespace Fomal {

class RectangleView : public View {
public:
    explicit RectangleView(const ViewBuild& build);
    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;

private:
    OrlPixels::Pixel fill_ = 0;
    std::optional<OrlPixels::Pen> frame_;
    int mode_ = OrlPixels::NORMAL_MODE;
};

// Strokes a pen along the inside of a rectangle (shared by the views with frames).
void drawFrame(OrlPixels::Surface& surface, const RectF& rect, const OrlPixels::Pen& pen, int mode);

}  // namespace Fomal
