// The value controls: a straight slider along its slit, and an arc slider
// along a circle's arc. The value is the control of `label`, between `min`
// and `max`; dragging the cap moves it (with shift, by `fineRatio` percent
// of the movement), a click with control resets it to `default`, and near
// `snap` (within `snapArea` pixels) it snaps there and shows `snapImage`.
// A whole drag is one step of the undo history; the hint shows the value
// (^X) as it changes.
#pragma once

#include <optional>
#include <string>

#include "fomal/View.h"
#include "pixels/Image.h"

namespace Fomal {

enum class CapStyle { rectangle, ellipse };

// "rectangle" or "ellipse"; else "Unknown capStyle: " and the text.
CapStyle parseCapStyle(std::string_view text);

class SliderView : public View {
public:
    SliderView(const ViewBuild& build, bool arc);

    bool takesMouse() const override { return true; }
    bool hitsAt(int x, int y) const override;
    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    bool mouseDown(const MouseEvent& e) override;
    void mouseMove(const MouseEvent& e) override;
    void mouseUp(const MouseEvent& e) override;
    void refreshState() override;
    std::string valueText() const override;

    double value() const;
    // The centre of the cap for a value, in panel coordinates.
    PointF capCentre(double value) const;

private:
    double fractionOf(double value) const;
    double valueOf(double fraction) const;
    // Where along the slider a panel point lies, as a fraction (not held
    // within 0 to 1), and, for arcs, as an angle.
    double fractionAt(int x, int y) const;
    double angleAt(int x, int y) const;
    OrlPixels::IntRect capBounds(double value) const;
    void setValue(double value);

    bool arc_;
    std::string control_;
    double min_ = 0, max_ = 1, default_ = 0.5;
    std::optional<double> snap_;
    double snapArea_ = 5;
    double fineRatio_ = 100;
    // Straight: the slit's ends; arc: the centre, radius and angles, in
    // degrees clockwise from the right on the panel.
    PointF slitStart_, slitEnd_;
    PointF center_;
    double radius_ = 0, startAngle_ = 0, sweepAngle_ = 90;
    double slitThickness_ = 4;
    OrlPixels::Pixel slitColor_ = 0;
    CapStyle capStyle_ = CapStyle::rectangle;
    double capWidth_ = 10, capHeight_ = 10, capScale_ = 1;
    OrlPixels::Pixel capColor_ = 0;
    OrlPixels::ImageRef capImage_, snapImage_;

    bool dragging_ = false;
    double dragFraction_ = 0;  // where the drag stands, before snapping
    double lastFraction_ = 0;  // straight: the mouse's last fraction
    double lastAngle_ = 0;     // arc: the mouse's last angle
    double shown_ = 0;         // the value last drawn
};

class StraightSliderView : public SliderView {
public:
    explicit StraightSliderView(const ViewBuild& build) : SliderView(build, false) {}
};

class ArcSliderView : public SliderView {
public:
    explicit ArcSliderView(const ViewBuild& build) : SliderView(build, true) {}
};

}  // namespace Fomal
