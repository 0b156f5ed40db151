// A marker drawn over the panel to point something out, as a hand with a
// pen would: layout type `ring`. It paints a section of the ellipse around
// `center` (in the view's terms) with radii `size` { x, y }, turned by
// `rotation` degrees, with `pen`; the section begins at `start` degrees
// (clockwise from the right, y growing downwards) and runs `sweep`
// degrees (360 by default). The stroke is laid down over `time` seconds
// at `updateFreq` frames a second, quickly at first and slowing towards
// its end. `random` (0 to 1) lets the hand waver: the radius swells and
// shrinks along the way, by up to a tenth at 1. `outlineWidth` pixels of
// darker ink edge the stroke, the pen's colour mixed `outlineMix` percent
// towards black. `quality` sets how finely the curve is followed, and
// `gamma` shapes the edges' coverage (1 draws them as they fall).
#pragma once

#include <cstdint>
#include <vector>

#include "fomal/View.h"
#include "pixels/Pen.h"
#include "pixels/Polygon.h"

namespace views {

class MarkerView : public Fomal::View {
public:
    // The shape of the stroke's progress in time (the animation curve's c).
    static constexpr double PROGRESS_CURVE = 0.7;
    // How far the radius wavers at `random` 1, as a part of it.
    static constexpr double WAVER = 0.1;

    explicit MarkerView(const Fomal::ViewBuild& build);

    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    void idle(std::int64_t now) override;

    // 0 when the view opened, 1 when the stroke is complete.
    double progress() const { return progress_; }
    // The degrees drawn so far.
    double drawnSweep() const { return sweep_ * progress_; }
    // The centre line drawn now, in panel coordinates.
    OrlPixels::Polygon centreLine() const;
    const OrlPixels::Pen& pen() const { return pen_; }

private:
    void paint(OrlPixels::Surface& surface, OrlPixels::Polygon line, const OrlPixels::Pen& pen) const;

    double gamma_ = 1.0;
    Fomal::PointF center_{0, 0};  // panel coordinates
    Fomal::PointF size_{10, 10};
    double rotation_ = 0;  // degrees
    double random_ = 0;
    OrlPixels::Pen pen_;
    double quality_ = 1.0;
    double updateFreq_ = 30;
    double start_ = 0;    // degrees
    double sweep_ = 360;  // degrees
    double outlineMix_ = 0;    // percent
    double outlineWidth_ = 0;  // pixels
    double time_ = 1.0;        // seconds
    // The waver: amplitudes and phases of three slow waves along the way.
    double waveAmplitude_[3] = {};
    double wavePhase_[3] = {};
    std::uint8_t coverage_[256] = {};

    std::int64_t opened_ = 0;
    double progress_ = 0;
};

}  // namespace views
