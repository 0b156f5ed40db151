#include "views/MarkerView.h"

#include <algorithm>
#include <cmath>

#include "fomal/AnimationCurve.h"
#include "fomal/EditorServices.h"
#include "fomal/LayoutValues.h"
#include "pixels/AffineTransformation.h"
#include "pixels/MaskedRaster.h"
#include "pixels/PolygonMask.h"
#include "pixels/SolidRaster.h"
#include "pixels/Stroking.h"
#include "views/PlantRandom.h"

namespace views {

namespace {

constexpr double PI = 3.14159265358979323846;
constexpr double DEGREES = PI / 180.0;
// The waver's parts: three slow waves of one, two and three cycles a
// turn, and a drift that keeps the stroke's end off its beginning.
constexpr double WAVE_WEIGHT[3] = {0.4, 0.25, 0.15};
constexpr double DRIFT_WEIGHT = 0.2;

double number(const Fomal::Object& keys, std::string_view key, double fallback) {
    return Fomal::tamed(Fomal::readNumber(keys.get(key), float(fallback)));
}

// A mask whose coverage goes through a table.
class TableMask : public OrlPixels::Mask {
public:
    TableMask(OrlPixels::Mask& inner, const std::uint8_t* table) : inner_(inner), table_(table) {}
    void calcBounds(OrlPixels::IntRect& out) override { inner_.calcBounds(out); }
    void render(int x, int y, int length, OrlPixels::MaskSpanOutput& out) override {
        OrlPixels::MaskSpanOutput in = scratch_.output();
        inner_.render(x, y, length, in);
        for (int i = 0; i < in.count();) {
            const OrlPixels::MaskSpan s = in.table[i];
            const int n = s.length();
            if (s.solid()) {
                const OrlPixels::Coverage v = table_[*s.data];
                out.putSolid(n, v, v == 255);
            } else {
                OrlPixels::Coverage* to = out.beginRaw();
                for (int j = 0; j < n; ++j) to[j] = table_[s.data[j]];
                out.putRaw(n, to, false);
            }
            i += n;
        }
    }

private:
    OrlPixels::Mask& inner_;
    const std::uint8_t* table_;
    OrlPixels::SpanScratch<OrlPixels::Coverage> scratch_;
};

}  // namespace

MarkerView::MarkerView(const Fomal::ViewBuild& build) : View(build) {
    const Fomal::Object& k = build.keys;
    const Fomal::RectF own{0, 0, rect().width, rect().height};
    gamma_ = number(k, "gamma", gamma_);
    center_ = Fomal::tamed(Fomal::readPoint(k.get("center"), center_, &own));
    center_.x += rect().left;
    center_.y += rect().top;
    size_ = Fomal::tamed(Fomal::readPoint(k.get("size"), size_));
    rotation_ = number(k, "rotation", rotation_);
    random_ = std::clamp(number(k, "random", random_), 0.0, 1.0);
    if (k.has("pen")) pen_ = Fomal::readPen(k.get("pen"), 1.0);
    else pen_.color = 0xFF000000u, pen_.stroke = 1.0;
    quality_ = number(k, "quality", quality_);
    if (!(quality_ > 0.01)) quality_ = 0.01;
    updateFreq_ = number(k, "updateFreq", updateFreq_);
    start_ = number(k, "start", start_);
    sweep_ = std::clamp(number(k, "sweep", sweep_), -360.0, 360.0);
    outlineMix_ = std::clamp(number(k, "outlineMix", outlineMix_), 0.0, 100.0);
    outlineWidth_ = std::max(0.0, number(k, "outlineWidth", outlineWidth_));
    time_ = number(k, "time", time_);

    const double g = gamma_ > 0.01 ? gamma_ : 0.01;
    for (int i = 0; i < 256; ++i) {
        const double v = std::floor(255.0 * std::pow(i / 255.0, 1.0 / g) + 0.5);
        coverage_[i] = std::uint8_t(std::clamp(v, 0.0, 255.0));
    }
    // The same marker at the same place wavers the same way.
    PlantRandom r = PlantRandom::fromSeed(std::uint32_t(std::lround(center_.x * 977.0 + center_.y * 7919.0)) ^
                                          std::uint32_t(std::lround(size_.x * 131.0 + size_.y * 8191.0)));
    for (int i = 0; i < 3; ++i) {
        r.step();
        waveAmplitude_[i] = random_ * WAVER * WAVE_WEIGHT[i] * (0.5 + 0.5 * (r.a / 4294967296.0));
        wavePhase_[i] = 2 * PI * (r.b / 4294967296.0);
    }

    opened_ = editor().now();
    progress_ = time_ > 0 ? 0.0 : 1.0;
    if (progress_ < 1.0) askForTicks(updateFreq_);
}

void MarkerView::idle(std::int64_t now) {
    const double t = std::clamp(double(now - opened_) / (time_ * 1000.0), 0.0, 1.0);
    const double p = t >= 1.0 ? 1.0 : Fomal::animationCurve(t, PROGRESS_CURVE);
    if (p != progress_) {
        progress_ = p;
        invalidate();
    }
    if (progress_ >= 1.0) askForTicks(0);
}

OrlPixels::Polygon MarkerView::centreLine() const {
    OrlPixels::Polygon line;
    const double sweep = drawnSweep() * DEGREES;
    if (sweep == 0.0) return line;
    const double rx = size_.x, ry = size_.y;
    const double step = OrlPixels::Polygon::curveStep(std::max(std::fabs(rx), std::fabs(ry)), quality_);
    const int count = std::max(1, int(std::ceil(std::fabs(sweep) / step)));
    const double start = start_ * DEGREES;
    const OrlPixels::AffineTransformation place = OrlPixels::AffineTransformation::rotation(rotation_ * DEGREES)
                                                      .then(OrlPixels::AffineTransformation::translation(center_.x, center_.y));
    for (int i = 0; i <= count; ++i) {
        const double along = sweep * i / count;  // radians from the start
        const double a = start + along;
        double k = 1.0 + random_ * WAVER * DRIFT_WEIGHT * std::fabs(along) / (2 * PI);
        for (int w = 0; w < 3; ++w) k += waveAmplitude_[w] * std::sin((w + 1) * along + wavePhase_[w]);
        double x = rx * k * std::cos(a), y = ry * k * std::sin(a);
        place.apply(x, y);
        if (i == 0)
            line.moveTo(x, y);
        else
            line.lineTo(x, y);
    }
    return line;
}

void MarkerView::paint(OrlPixels::Surface& surface, OrlPixels::Polygon line, const OrlPixels::Pen& pen) const {
    OrlPixels::applyPen(line, pen);
    if (line.isEmpty()) return;
    OrlPixels::PolygonMask shape(line, surface.bounds);
    TableMask shaped(shape, coverage_);
    OrlPixels::SolidRaster ink(pen.color);
    OrlPixels::MaskedRaster inked(ink, shaped);
    surface.draw(inked);
}

void MarkerView::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    const OrlPixels::Polygon line = centreLine();
    if (line.isEmpty()) return;
    if (outlineWidth_ > 0) {
        // The edge: the same line, wider, in darker ink, under the stroke.
        OrlPixels::Pen edge = pen_;
        edge.stroke = pen_.stroke + 2 * outlineWidth_;
        const double f = 1.0 - outlineMix_ / 100.0;
        const auto channel = [&](int shift) {
            return OrlPixels::Pixel(double((pen_.color >> shift) & 0xFFu) * f) << shift;
        };
        edge.color = (pen_.color & 0xFF000000u) | channel(16) | channel(8) | channel(0);
        paint(surface, line, edge);
    }
    paint(surface, line, pen_);
}

}  // namespace views
