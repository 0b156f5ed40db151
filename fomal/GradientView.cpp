#include "fomal/GradientView.h"

#include "fomal/LayoutValues.h"
#include "fomal/RectangleView.h"
#include "pixels/Gradient.h"
#include "platform/Exceptions.h"

namespace Fomal {

GradientView::GradientView(const ViewBuild& build) : View(build) {
    const Object& k = build.keys;
    const RectF own{0, 0, rect().width, rect().height};
    start_ = tamed(readPoint(k.get("start"), PointF{0, 0}, &own));
    end_ = tamed(readPoint(k.get("end"), PointF{0, rect().height}, &own));
    for (const std::string& raw : parseArray(k.get("stops"))) {
        const Array stop = parseArray(raw);
        if (stop.size() < 2) continue;
        stops_.push_back({tamed(readNumber(stop[0], 0.0f)), readColor(stop[1])});
    }
    if (stops_.empty()) throw Exception("No stops defined for gradient");
    if (k.has("frame")) frame_ = readPen(k.get("frame"), 1.0);
    mode_ = OrlPixels::drawModeFromText(readString(k.get("mode")).c_str());
}

void GradientView::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    const float x = rect().left, y = rect().top;
    OrlPixels::LinearGradient paint(pixelRect(), x + start_.x, y + start_.y, x + end_.x, y + end_.y, stops_);
    surface.draw(paint, mode_);
    if (frame_) drawFrame(surface, rect(), *frame_, mode_);
}

}  // namespace Fomal
