#include "fomal/SliderView.h"

#include <algorithm>
#include <cmath>

#include "fomal/EditorHost.h"
#include "fomal/EditorServices.h"
#include "fomal/LayoutValues.h"
#include "fomal/PanelDrawing.h"
#include "pixels/MaskedRaster.h"
#include "pixels/PolygonMask.h"
#include "pixels/SolidRaster.h"
#include "pixels/Stroking.h"
#include "platform/Exceptions.h"

namespace Fomal {

namespace {

constexpr double DEGREES = 0.017453292519943295;

double number(const Object& keys, const char* key, double dflt) {
    return keys.has(key) ? double(tamed(readNumber(keys.get(key), float(dflt)))) : dflt;
}

void fillPolygon(OrlPixels::Surface& surface, OrlPixels::Polygon& shape, OrlPixels::Pixel color) {
    OrlPixels::PolygonMask mask(shape, surface.bounds);
    OrlPixels::SolidRaster ink(color);
    OrlPixels::MaskedRaster masked(ink, mask);
    surface.draw(masked);
}

}  // namespace

CapStyle parseCapStyle(std::string_view text) {
    if (text == "rectangle") return CapStyle::rectangle;
    if (text == "ellipse") return CapStyle::ellipse;
    throw Exception("Unknown capStyle: " + std::string(text));
}

SliderView::SliderView(const ViewBuild& build, bool arc) : View(build), arc_(arc) {
    const Object& k = build.keys;
    const RectF& r = rect();
    control_ = label();
    min_ = number(k, "min", 0);
    max_ = number(k, "max", 1);
    default_ = number(k, "default", min_ + (max_ - min_) / 2);
    if (k.has("snap")) snap_ = number(k, "snap", 0);
    snapArea_ = number(k, "snapArea", snapArea_);
    fineRatio_ = number(k, "fineRatio", fineRatio_);
    const RectF own{0, 0, r.width, r.height};
    slitStart_ = tamed(readPoint(k.get("slitStart"), PointF{0, r.height / 2}, &own));
    slitEnd_ = tamed(readPoint(k.get("slitEnd"), PointF{r.width, r.height / 2}, &own));
    slitStart_ = PointF{slitStart_.x + r.left, slitStart_.y + r.top};
    slitEnd_ = PointF{slitEnd_.x + r.left, slitEnd_.y + r.top};
    center_ = tamed(readPoint(k.get("center"), PointF{r.width / 2, r.height / 2}, &own));
    center_ = PointF{center_.x + r.left, center_.y + r.top};
    radius_ = number(k, "radius", std::min(r.width, r.height) / 2);
    startAngle_ = number(k, "startAngle", startAngle_);
    sweepAngle_ = number(k, "sweepAngle", sweepAngle_);
    slitThickness_ = number(k, "slitThickness", slitThickness_);
    if (k.has("slitColor")) slitColor_ = readColor(k.get("slitColor"));
    if (k.has("capStyle")) capStyle_ = parseCapStyle(readString(k.get("capStyle")));
    capWidth_ = number(k, "capWidth", capWidth_);
    capHeight_ = number(k, "capHeight", capHeight_);
    capScale_ = number(k, "capScale", capScale_);
    if (k.has("capColor")) capColor_ = readColor(k.get("capColor"));
    capImage_ = readImageIfGiven(k, "capImage");
    snapImage_ = readImageIfGiven(k, "snapImage");
}

double SliderView::value() const {
    EditorHost& host = editor().host();
    return host.hasControl(control_) ? host.controlValue(control_) : default_;
}

std::string SliderView::valueText() const { return editor().host().controlText(control_); }

double SliderView::fractionOf(double v) const {
    if (max_ == min_) return 0;
    return std::clamp((v - min_) / (max_ - min_), 0.0, 1.0);
}

double SliderView::valueOf(double fraction) const { return min_ + (max_ - min_) * std::clamp(fraction, 0.0, 1.0); }

PointF SliderView::capCentre(double v) const {
    const double f = fractionOf(v);
    if (arc_) {
        const double a = (startAngle_ + sweepAngle_ * f) * DEGREES;
        return PointF{float(center_.x + radius_ * std::cos(a)), float(center_.y + radius_ * std::sin(a))};
    }
    return PointF{float(slitStart_.x + (slitEnd_.x - slitStart_.x) * f),
                  float(slitStart_.y + (slitEnd_.y - slitStart_.y) * f)};
}

OrlPixels::IntRect SliderView::capBounds(double v) const {
    const PointF c = capCentre(v);
    double w = capWidth_, h = capHeight_;
    for (const OrlPixels::ImageRef* image : {&capImage_, &snapImage_})
        if (*image) {
            w = std::max(w, (*image)->width * capScale_);
            h = std::max(h, (*image)->height * capScale_);
        }
    return OrlPixels::IntRect(int(std::floor(c.x - w / 2)) - 1, int(std::floor(c.y - h / 2)) - 1, int(std::ceil(w)) + 3,
                              int(std::ceil(h)) + 3);
}

bool SliderView::hitsAt(int x, int y) const {
    // The cap takes the mouse; a straight slider's slit does too.
    const PointF c = capCentre(value());
    if (std::abs(x + 0.5 - c.x) <= capWidth_ / 2 && std::abs(y + 0.5 - c.y) <= capHeight_ / 2) return true;
    if (arc_) return false;
    const double f = fractionAt(x, y);
    if (f < 0 || f > 1) return false;
    const double px = slitStart_.x + (slitEnd_.x - slitStart_.x) * f, py = slitStart_.y + (slitEnd_.y - slitStart_.y) * f;
    return std::hypot(x + 0.5 - px, y + 0.5 - py) <= std::max(slitThickness_, capHeight_) / 2;
}

double SliderView::fractionAt(int x, int y) const {
    const double dx = slitEnd_.x - slitStart_.x, dy = slitEnd_.y - slitStart_.y;
    const double length2 = dx * dx + dy * dy;
    if (length2 == 0) return 0;
    return ((x + 0.5 - slitStart_.x) * dx + (y + 0.5 - slitStart_.y) * dy) / length2;
}

double SliderView::angleAt(int x, int y) const { return std::atan2(y + 0.5 - center_.y, x + 0.5 - center_.x) / DEGREES; }

void SliderView::setValue(double v) {
    if (v == value()) return;
    editor().host().changeControl(control_, v);
    refreshState();
}

bool SliderView::mouseDown(const MouseEvent& e) {
    EditorHost& host = editor().host();
    if (e.resetModifier()) {
        host.beginEdit(control_);
        setValue(default_);
        host.endEdit(control_);
        return false;
    }
    host.beginEdit(control_);
    dragging_ = true;
    dragFraction_ = fractionOf(value());
    const PointF c = capCentre(value());
    const bool onCap = std::abs(e.x + 0.5 - c.x) <= capWidth_ / 2 && std::abs(e.y + 0.5 - c.y) <= capHeight_ / 2;
    if (arc_) {
        lastAngle_ = angleAt(e.x, e.y);
    } else {
        lastFraction_ = fractionAt(e.x, e.y);
        // A press on the slit beside the cap brings the cap there.
        if (!onCap) {
            dragFraction_ = std::clamp(lastFraction_, 0.0, 1.0);
            setValue(valueOf(dragFraction_));
        }
    }
    return true;
}

void SliderView::mouseMove(const MouseEvent& e) {
    if (!dragging_) return;
    double moved;
    if (arc_) {
        const double angle = angleAt(e.x, e.y);
        double turn = angle - lastAngle_;
        turn -= 360.0 * std::floor(turn / 360.0 + 0.5);  // the short way round
        lastAngle_ = angle;
        moved = sweepAngle_ != 0 ? turn / sweepAngle_ : 0;
    } else {
        const double f = fractionAt(e.x, e.y);
        moved = f - lastFraction_;
        lastFraction_ = f;
    }
    if (e.shift()) moved *= fineRatio_ / 100;
    dragFraction_ = std::clamp(dragFraction_ + moved, 0.0, 1.0);
    double v = valueOf(dragFraction_);
    if (snap_) {
        const PointF here = capCentre(v), there = capCentre(*snap_);
        if (std::hypot(here.x - there.x, here.y - there.y) <= snapArea_) v = *snap_;
    }
    setValue(v);
}

void SliderView::mouseUp(const MouseEvent&) {
    if (!dragging_) return;
    dragging_ = false;
    editor().host().endEdit(control_);
}

void SliderView::refreshState() {
    const double v = value();
    if (v == shown_) return;
    // Only the cap moves: where it stood and where it stands.
    editor().invalidate(capBounds(shown_));
    editor().invalidate(capBounds(v));
    shown_ = v;
}

void SliderView::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    const double v = value();
    shown_ = v;
    if ((slitColor_ >> 24) != 0 && slitThickness_ > 0) {
        OrlPixels::Polygon slit;
        if (arc_) {
            slit.addArc(center_.x, center_.y, radius_, radius_, startAngle_ * DEGREES, sweepAngle_ * DEGREES);
        } else {
            slit.moveTo(slitStart_.x, slitStart_.y);
            slit.lineTo(slitEnd_.x, slitEnd_.y);
        }
        OrlPixels::Pen pen;
        pen.stroke = slitThickness_;
        pen.color = slitColor_;
        pen.caps = OrlPixels::ROUND_CAPS;
        OrlPixels::applyPen(slit, pen);
        fillPolygon(surface, slit, slitColor_);
    }
    const PointF c = capCentre(v);
    const bool snapped = snap_ && v == *snap_;
    const OrlPixels::ImageRef& image = snapped && snapImage_ ? snapImage_ : capImage_;
    if ((capColor_ >> 24) != 0) {
        OrlPixels::Polygon cap;
        if (capStyle_ == CapStyle::ellipse)
            cap.addEllipse(c.x, c.y, capWidth_ / 2, capHeight_ / 2);
        else
            cap.addRectangle(c.x - capWidth_ / 2, c.y - capHeight_ / 2, capWidth_, capHeight_);
        fillPolygon(surface, cap, capColor_);
    }
    if (image) drawImageCentred(surface, *image, c.x, c.y, capScale_);
}

}  // namespace Fomal
