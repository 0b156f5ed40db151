// A plant that only grows and sways, for the about page: no patch, no
// notes, no mouse and no overlay. It takes every key of the plant
// renderer, and grows the branches listed in `branches`, each
// `{ angle in degrees, length from 0 to 1 }`: a branch of angle a starts
// at the core's rim and grows away from the direction (cos a, sin a), with
// y growing downwards, as the panel's plant's branches do. From the moment
// the view opens, the growth rises evenly from 0 to 1 in `animateTime`
// seconds and scales every branch's length; its twists are fixed
// (`rootTwist`, `twigTwist`, degrees); it sways by `swayAmount` degrees at
// `swayRate` radians a second, and `decay` (0 to 1) droops it as a
// suspended plant droops. The seed is always the same, so the plant is
// the same every time the page opens.
#pragma once

#include <vector>

#include "fomal/View.h"
#include "views/PlantGeometry.h"
#include "views/PlantPainter.h"
#include "views/PlantRenderer.h"

namespace views {

class StaticPlantView : public Fomal::View, public PlantRenderer {
public:
    // The seed of every static plant.
    static constexpr std::uint32_t SEED = 0x1D2B3A4Cu;

    struct Branch {
        float angle = 0.0f;   // degrees
        float length = 1.0f;  // 0 to 1
    };

    explicit StaticPlantView(const Fomal::ViewBuild& build);

    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    void idle(std::int64_t now) override;

    // 0 when the view opened, 1 after `animateTime`.
    float growth() const { return growth_; }
    float swayPhase() const { return phase_; }
    const std::vector<Branch>& branches() const { return branches_; }
    // The plant as it is drawn now.
    const PlantGeometry& geometry();

private:
    // Moves growth and sway to the clock's time; true when either changed.
    bool follow(std::int64_t now);
    void grow();

    std::vector<Branch> branches_;
    double updateFreq_ = 20;
    double animateTime_ = 1.0;  // seconds
    float rootTwist_ = 2.0f;
    float swayAmount_ = 0.0f;   // degrees
    float swayRate_ = 0.0f;     // radians a second
    float decay_ = 0.0f;
    float decayMax_ = PlantShapeSettings().decayMax;

    std::int64_t opened_ = 0;
    std::int64_t last_ = 0;
    float growth_ = 0.0f;
    float phase_ = 0.0f;
    bool grown_ = false;  // geometry_ is of the present state
    PlantGeometry geometry_;
    PlantCoverageTable coverage_;
};

}  // namespace views
