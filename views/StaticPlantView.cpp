#include "views/StaticPlantView.h"

#include <algorithm>
#include <cmath>

#include "fomal/EditorServices.h"

namespace views {

namespace {

constexpr float TWO_PI = 6.2831855f;

float number(const Fomal::Object& keys, std::string_view key, float fallback) {
    return Fomal::tamed(Fomal::readNumber(keys.get(key), fallback));
}

}  // namespace

StaticPlantView::StaticPlantView(const Fomal::ViewBuild& build)
    : View(build), PlantRenderer(readPlantSettings(build.keys)), coverage_(settings.gamma) {
    const Fomal::Object& k = build.keys;
    updateFreq_ = number(k, "updateFreq", float(updateFreq_));
    animateTime_ = number(k, "animateTime", float(animateTime_));
    rootTwist_ = number(k, "rootTwist", rootTwist_);
    twigTwist = number(k, "twigTwist", PlantShapeSettings().twigMinTwist);
    swayAmount_ = number(k, "swayAmount", swayAmount_);
    swayRate_ = number(k, "swayRate", swayRate_);
    decay_ = std::clamp(number(k, "decay", decay_), 0.0f, 1.0f);
    if (k.has("branches")) {
        for (const std::string& raw : Fomal::parseArray(k.get("branches"))) {
            const Fomal::Array pair = Fomal::parseArray(raw);
            Branch b;
            if (!pair.empty()) b.angle = Fomal::tamed(Fomal::readNumber(pair[0], b.angle));
            if (pair.size() > 1) b.length = Fomal::tamed(Fomal::readNumber(pair[1], b.length));
            branches_.push_back(b);
        }
    }
    seed = SEED;
    const OrlPixels::IntRect r = pixelRect();
    radius = std::min(r.width, r.height) / 2;
    growthLimit = 10000.0f;
    rotationOffset = 0.0f;
    opened_ = last_ = editor().now();
    follow(opened_);
    if (!grown_ || (swayAmount_ != 0.0f && swayRate_ != 0.0f)) askForTicks(updateFreq_);
}

bool StaticPlantView::follow(std::int64_t now) {
    const float before = growth_, phaseBefore = phase_;
    const double span = animateTime_ * 1000.0;
    const double elapsed = double(now - opened_);
    growth_ = span > 0.0 ? float(std::min(elapsed / span, 1.0)) : 1.0f;
    if (growth_ < 0.0f) growth_ = 0.0f;
    phase_ += swayRate_ * float(double(now - last_) / 1000.0);
    phase_ -= TWO_PI * std::floor(phase_ / TWO_PI);
    last_ = now;
    // The sway shows only where there is some.
    const bool swayed = swayAmount_ != 0.0f && phase_ != phaseBefore;
    return growth_ != before || swayed;
}

void StaticPlantView::idle(std::int64_t now) {
    if (follow(now)) {
        grown_ = false;
        invalidate();
    }
    // A grown plant that does not sway needs no more ticks.
    if (growth_ >= 1.0f && (swayAmount_ == 0.0f || swayRate_ == 0.0f)) askForTicks(0);
}

void StaticPlantView::grow() {
    geometry_.clear();
    const OrlPixels::IntRect r = pixelRect();
    const std::int64_t left = r.left, top = r.top;
    const double cx = double((left + r.right()) / 2), cy = double((top + r.bottom()) / 2);
    const PlantSettings& s = settings;
    const float core = float(s.coreSize) * s.plantZoom;
    const float d3 = decay_ * decay_ * decay_;
    // Each branch with its twigs is appended to what the canvas holds.
    for (std::size_t i = 0; i < branches_.size(); ++i) {
        const Branch& b = branches_[i];
        const double angle = double(b.angle) * 0.017453292;
        const PlantPoint start{cx - std::cos(angle) * core, cy - std::sin(angle) * core};
        const float shown = std::clamp(b.length, 0.0f, 1.0f) * growth_;
        const float v = shown + (1.0f - shown) * d3;
        const float length = std::max(0.0f, s.minBranchLength + (s.maxBranchLength - s.minBranchLength) * v);
        const float alpha = s.minRootAlpha + (s.maxRootAlpha - s.minRootAlpha) * std::clamp(v, 0.0f, 1.0f);
        const std::uint32_t n = std::uint32_t(i);
        growLine(geometry_, int(i % BRANCH_COUNT), (n + seed) ^ 0x12345678u, start, float(angle), length, s.baseHue,
                 alpha, n + seed, phase_, swayAmount_, decay_ * decayMax_, 0, rootTwist_);
    }
    grown_ = true;
}

const PlantGeometry& StaticPlantView::geometry() {
    if (!grown_) grow();
    return geometry_;
}

void StaticPlantView::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    paintPlant(surface, geometry(), coverage_);
}

}  // namespace views
