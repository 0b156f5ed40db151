// A linear gradient between two points of the view (`start`, `end`, in the
// view's own terms) through `stops` of { position, colour }; "No stops
// defined for gradient" without them. `frame` and `mode` as for rectangles.
#pragma once

#include <optional>
#include <vector>

#include "fomal/View.h"
#include "pixels/ColorTable.h"
#include "pixels/Pen.h"

namespace Fomal {

class GradientView : public View {
public:
    explicit GradientView(const ViewBuild& build);
    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;

private:
    PointF start_;
    PointF end_;
    std::vector<OrlPixels::GradientStop> stops_;
    std::optional<OrlPixels::Pen> frame_;
    int mode_ = OrlPixels::NORMAL_MODE;
};

}  // namespace Fomal
