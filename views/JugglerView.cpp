#include "views/JugglerView.h"

#include <algorithm>
#include <cmath>

#include "fomal/EditorHost.h"
#include "fomal/EditorServices.h"
#include "fomal/LayoutValues.h"
#include "pixels/MaskedRaster.h"
#include "pixels/PolygonMask.h"
#include "pixels/ProductMask.h"
#include "pixels/RadialRampMask.h"
#include "pixels/SolidRaster.h"
#include "platform/Exceptions.h"

namespace views {

namespace {

constexpr double PI = 3.14159265358979323846;
// The longest step of the flight: slower timers take several.
constexpr double LONGEST_STEP = 1.0 / 120.0;
// The shadow's darkness where it is deepest.
constexpr OrlPixels::Pixel SHADOW = 0x90000000u;

double number(const Fomal::Object& keys, std::string_view key, double fallback) {
    return Fomal::tamed(Fomal::readNumber(keys.get(key), float(fallback)));
}

// The colour with its red, green and blue scaled by f (0 to 1) and its
// alpha kept: the same paint in less light.
OrlPixels::Pixel shaded(OrlPixels::Pixel c, double f) {
    const auto channel = [&](int shift) {
        return OrlPixels::Pixel(std::clamp(double((c >> shift) & 0xFFu) * f, 0.0, 255.0)) << shift;
    };
    return (c & 0xFF000000u) | channel(16) | channel(8) | channel(0);
}

}  // namespace

JugglerView::JugglerView(const Fomal::ViewBuild& build) : View(build) {
    const Fomal::Object& k = build.keys;
    updateFreq_ = number(k, "updateFreq", updateFreq_);
    bulbRadius_ = std::max(0.0, number(k, "bulbRadius", bulbRadius_));
    ballRadius_ = std::max(0.0, number(k, "ballRadius", ballRadius_));
    std::vector<OrlPixels::Pixel> colors;
    if (k.has("ballColors"))
        for (const std::string& raw : Fomal::parseArray(k.get("ballColors"))) colors.push_back(Fomal::readColor(raw));
    if (k.has("ballColor")) colors.push_back(Fomal::readColor(k.get("ballColor")));
    if (colors.empty()) throw Exception("Must specify at least one ball color");
    gradientAmount_ = std::clamp(number(k, "gradientAmount", gradientAmount_), 0.0, 1.0);
    gradientOffset_ = Fomal::tamed(Fomal::readPoint(k.get("gradientOffset"), gradientOffset_));
    shadowScale_ = std::max(0.0, number(k, "shadowScale", shadowScale_));
    shadowOffset_ = Fomal::tamed(Fomal::readPoint(k.get("shadowOffset"), shadowOffset_));

    // The balls start on a circle half way out, one after another around
    // it, each thrown along it.
    const double n = double(colors.size());
    const double out = std::max(0.0, bulbRadius_ - ballRadius_) * 0.5;
    for (std::size_t i = 0; i < colors.size(); ++i) {
        const double a = -PI / 2 + 2 * PI * double(i) / n;
        Ball b;
        b.x = out * std::cos(a);
        b.y = out * std::sin(a);
        b.vx = -std::sin(a) * 160.0;
        b.vy = std::cos(a) * 160.0 - 120.0;
        b.color = colors[i];
        balls_.push_back(b);
    }
    last_ = editor().now();
    askForTicks(updateFreq_);
}

double JugglerView::control(const char* label) const {
    const Fomal::EditorHost& host = editor().host();
    return host.hasControl(label) ? std::clamp(host.controlValue(label), 0.0, 1.0) : 0.5;
}

void JugglerView::step(double seconds) {
    const double gravity = MAX_GRAVITY * control("JugglerGravity");
    const double bump = MAX_BUMP * control("JugglerBumperForce");
    const double room = std::max(0.0, bulbRadius_ - ballRadius_);
    while (seconds > 0) {
        const double dt = std::min(seconds, LONGEST_STEP);
        seconds -= dt;
        for (Ball& b : balls_) {
            b.vy += gravity * dt;
            b.x += b.vx * dt;
            b.y += b.vy * dt;
            const double d = std::hypot(b.x, b.y);
            if (d > room) {
                // At the rim: back inside, the outward speed turned round
                // and lessened, and the bumper's kick inwards.
                const double nx = d > 0 ? b.x / d : 0.0, ny = d > 0 ? b.y / d : 1.0;
                b.x = nx * room;
                b.y = ny * room;
                const double outward = b.vx * nx + b.vy * ny;
                if (outward > 0) {
                    b.vx -= (1 + RESTITUTION) * outward * nx + bump * nx;
                    b.vy -= (1 + RESTITUTION) * outward * ny + bump * ny;
                }
            }
        }
        // Balls that meet bounce off each other, as equals.
        for (std::size_t i = 0; i < balls_.size(); ++i)
            for (std::size_t j = i + 1; j < balls_.size(); ++j) {
                Ball& a = balls_[i];
                Ball& b = balls_[j];
                const double dx = b.x - a.x, dy = b.y - a.y;
                const double d = std::hypot(dx, dy);
                if (d >= 2 * ballRadius_ || d <= 0) continue;
                const double nx = dx / d, ny = dy / d;
                const double closing = (a.vx - b.vx) * nx + (a.vy - b.vy) * ny;
                if (closing <= 0) continue;
                a.vx -= closing * nx;
                a.vy -= closing * ny;
                b.vx += closing * nx;
                b.vy += closing * ny;
            }
        for (Ball& b : balls_) {
            const double speed = std::hypot(b.vx, b.vy);
            if (speed > MAX_SPEED) {
                b.vx *= MAX_SPEED / speed;
                b.vy *= MAX_SPEED / speed;
            }
        }
    }
}

void JugglerView::idle(std::int64_t now) {
    const double seconds = double(now - last_) / 1000.0;
    last_ = now;
    if (seconds <= 0 || balls_.empty()) return;
    step(seconds);
    invalidate();
}

void JugglerView::drawBall(OrlPixels::Surface& surface, const Ball& b, double cx, double cy) const {
    const double x = cx + b.x, y = cy + b.y, r = ballRadius_;
    OrlPixels::Polygon disc;
    disc.addCircle(x, y, r);
    {
        OrlPixels::PolygonMask body(disc, surface.bounds);
        OrlPixels::SolidRaster dark(shaded(b.color, 1.0 - gradientAmount_));
        OrlPixels::MaskedRaster painted(dark, body);
        surface.draw(painted);
    }
    OrlPixels::PolygonMask body(disc, surface.bounds);
    OrlPixels::RadialRampMask light(x + gradientOffset_.x, y + gradientOffset_.y, r, r);
    OrlPixels::ProductMask lit(body, light);
    OrlPixels::SolidRaster paint(b.color);
    OrlPixels::MaskedRaster painted(paint, lit);
    surface.draw(painted);
}

void JugglerView::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    const Fomal::RectF& v = rect();
    const double cx = v.left + v.width / 2.0, cy = v.top + v.height / 2.0;
    if (shadowScale_ > 0 && ballRadius_ > 0)
        for (const Ball& b : balls_) {
            const double r = ballRadius_ * shadowScale_;
            OrlPixels::RadialRampMask soft(cx + b.x + shadowOffset_.x, cy + b.y + shadowOffset_.y, r, r);
            OrlPixels::SolidRaster shade(SHADOW);
            OrlPixels::MaskedRaster shadow(shade, soft);
            surface.draw(shadow);
        }
    if (ballRadius_ > 0)
        for (const Ball& b : balls_) drawBall(surface, b, cx, cy);
}

}  // namespace views
