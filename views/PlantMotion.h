// The plant's life between frames: what the patch says is smoothed at the
// view's timer rate, branches sway with the notes that sound on them, a
// suspended plant droops and revives, and a planted seed falls while the
// old plant withers. PlantMotion holds that state and nothing of the
// editor, so that its steps can be driven and read on their own.
#pragma once

#include <cstdint>

#include "engine/VisualState.h"
#include "notation/Notation.h"
#include "patch/NorvelleProgram.h"
#include "views/PlantGeometry.h"
#include "views/PlantRenderer.h"
#include "views/PlantSettings.h"

namespace views {

// The plant view's keys of its timer, smoothing, sway, decay and planting.
struct PlantMotionSettings {
    double updateFreq = 20.0;       // ticks a second
    int tickMs = 50;                // the tick's length, whole milliseconds
    float animateTime = 1.0f;       // seconds: time constant of all smoothing
    float deteriorateTime = 1.0f;   // seconds: withering at planting
    float dropSpeed = 1.0f;         // start speed of the falling seed
    float dropAcceleration = 1.0f;  // its acceleration
    float swayMinRate = 1.0f;       // radians a second, no note
    float swayMaxRate = 30.0f;      // radians a second, full note
    float decayRate = 0.1f;         // per tick while suspended
    float reviveRate = 0.1f;        // per tick after resuming
    float decayedSaturation = 1.0f;
    float decayedAlphaDrop = 1.0f;
};

// Reads the keys; `decayedSaturation` and `decayedAlphaDrop` see `$` as
// the renderer's normal value.
PlantMotionSettings readPlantMotionSettings(const notation::Object& keys, const PlantSettings& normal);

// The number a new plant's branches start from when the seed changes:
// a new plant stands at its shortest and grows to its lengths.
constexpr float PLANTING_START_VALUE = 0.0f;

class PlantMotion {
public:
    PlantMotion(const PlantMotionSettings& motion, const PlantSettings& normal);

    // The view's update from the patch (not while a seed falls): lengths,
    // wheel, atonality and rotation become targets; a new seed restarts the
    // branches, except the one a clone was taken from. The first update
    // takes everything as it stands.
    void follow(const NorvelleProgram& record, bool suspendedNow);
    // The per-branch note values of the sound: glows follow the flash, the
    // sway level and rate rise with a note at once and fall back tick by
    // tick within about `animateTime`, however often the sound is read.
    void hear(const VisualState& state);
    // One tick of `tickMs`. Returns true when a falling seed has landed in
    // this tick: the view then fires "planted" and follows the patch.
    bool tick();
    // A seed falls along branch `branch` from `distance` pixels out.
    void startPlanting(int branch, double distance);

    // The frame to grow, and the renderer's per-frame fields.
    PlantFrame frame(double centerX, double centerY, const PlantShapeSettings& shape) const;
    void prepare(PlantRenderer& renderer, const PlantShapeSettings& shape) const;

    const PlantMotionSettings& settings() const { return motion_; }

    // The state, as the drawing and the tests read it.
    float target[BRANCH_COUNT] = {};
    float shown[BRANCH_COUNT] = {};
    float phase[BRANCH_COUNT] = {};
    float level[BRANCH_COUNT] = {};
    float rate[BRANCH_COUNT] = {};
    float glow[BRANCH_COUNT] = {};
    double rotationTarget = 0.0, rotationShown = 0.0;  // degrees
    float rotationOffset = 0.0f;                       // degrees: the bend while turning
    float atonalityTarget = 0.0f, atonalityShown = 0.0f;
    double modWheel = 0.0;
    float decay = 0.0f;
    bool suspended = false;
    int plantingBranch = -1;
    double dropDistance = 0.0, dropVelocity = 0.0;
    float growthLimit = 10000.0f;
    // The renderer's values as decay and withering leave them.
    float alpha = 1.0f, saturation = 1.0f, alphaDrop = 1.0f;
    std::uint32_t seed = 1;
    bool cloned = false;
    bool followed = false;  // the patch has been read once

    // The smoothing factor of one tick.
    float smoothing() const { return q_; }

private:
    PlantMotionSettings motion_;
    PlantSettings normal_;
    float q_ = 0.0f;
    // The note values last heard; the sway falls back to them tick by tick.
    float heardLevel_[BRANCH_COUNT] = {};
    float heardRate_[BRANCH_COUNT] = {};
};

// Degrees `wanted`, moved by whole turns to within 180 degrees of `last`.
double shortWayRound(double wanted, double last);

}  // namespace views
