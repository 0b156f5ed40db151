// Jingle Balls: a toy that lives in the bulb while the patch carries its
// special name. One ball for each colour of `ballColors` (or the single
// `ballColor`) flies inside the circle of `bulbRadius` around the view's
// centre, falls by the gravity of the control "JugglerGravity" and is
// kicked back in at the rim by the control "JugglerBumperForce" (both 0
// to 1; where the program keeps no such control they stand at a half).
// A ball is drawn as a disc of `ballRadius` shaded by a radial ramp whose
// centre is moved by `gradientOffset`: at that centre the ball shows its
// colour, towards its rim the colour darkens by `gradientAmount`. Under
// it lies its soft shadow, `shadowScale` times the ball's size, moved by
// `shadowOffset`. The balls move at `updateFreq` steps a second.
#pragma once

#include <vector>

#include "fomal/View.h"
#include "pixels/Pixel.h"

namespace views {

class JugglerView : public Fomal::View {
public:
    // Pixels a second squared at full gravity, and pixels a second that
    // the rim adds at full bumper force.
    static constexpr double MAX_GRAVITY = 900.0;
    static constexpr double MAX_BUMP = 420.0;
    // What a bounce keeps of the speed towards the rim.
    static constexpr double RESTITUTION = 0.5;
    // No ball flies faster, in pixels a second.
    static constexpr double MAX_SPEED = 1400.0;

    struct Ball {
        double x = 0, y = 0;    // centre, relative to the view's centre
        double vx = 0, vy = 0;  // pixels a second
        OrlPixels::Pixel color = 0;
    };

    explicit JugglerView(const Fomal::ViewBuild& build);

    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    void idle(std::int64_t now) override;

    const std::vector<Ball>& balls() const { return balls_; }
    double bulbRadius() const { return bulbRadius_; }
    double ballRadius() const { return ballRadius_; }
    // One step of the flight, `seconds` long.
    void step(double seconds);

private:
    double control(const char* label) const;
    void drawBall(OrlPixels::Surface& surface, const Ball& b, double cx, double cy) const;

    double updateFreq_ = 30;
    double bulbRadius_ = 117;
    double ballRadius_ = 10;
    double gradientAmount_ = 0.5;
    Fomal::PointF gradientOffset_{-2, -3};
    double shadowScale_ = 2.0;
    Fomal::PointF shadowOffset_{2, 3};
    std::vector<Ball> balls_;
    std::int64_t last_ = 0;
};

}  // namespace views
