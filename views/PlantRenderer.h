// PlantRenderer grows the plant of one frame: twelve branches leave the
// round core, each twists, sprouts twigs, and the twigs sprout twigs. The
// plant is grown anew for every frame from the patch's seed and the shown
// branch lengths, and it is the same plant each time, because all its
// randomness comes from generators seeded by fixed numbers. Its float values
// are 32-bit and its positions doubles, exactly as the plant was tuned: the
// factory patches look the way they do because of it.
//
// The renderer produces the geometry (PlantGeometry); painting the lines
// into a surface reads that geometry. PlantView and StaticPlantView derive
// from it and set the per-frame fields before each drawing.
#pragma once

#include <cstdint>
#include <vector>

#include "patch/NorvelleProgram.h"
#include "pixels/IntRect.h"
#include "views/PlantGeometry.h"
#include "views/PlantRandom.h"
#include "views/PlantSettings.h"

namespace views {

// What the view knows of the plant in one frame.
struct PlantFrame {
    double centerX = 0.0, centerY = 0.0;  // middle of the view's rectangle
    double rotation = 0.0;                // degrees, as shown
    float shown[BRANCH_COUNT] = {};       // smoothed drawn length, 0 to 1
    float level[BRANCH_COUNT] = {};       // sway level of the notes, 0 to 1
    float phase[BRANCH_COUNT] = {};       // sway phase, radians
    float decay = 0.0f;                   // 0 standing to 1 withered
    float rootTwist = 0.0f;               // degrees
    bool cloned = false;                  // the patch's flag: all branches sway alike
};

class PlantRenderer {
public:
    // A line holds at most this many points (63 segments); a longer line
    // stops there, its tip undrawn and its later twigs ungrown.
    static constexpr int MAX_POINTS = 64;
    // Limits that only extreme layout values reach, so that a frame is
    // always a bounded amount of work: twigs deeper than this generation
    // don't fork, whatever `twigMaxGenerations` says, and a frame takes at
    // most this many steps along its lines (a plant of the panel takes a
    // few thousand).
    static constexpr int MAX_TWIG_GENERATION = 16;
    static constexpr long FRAME_STEP_BUDGET = 1L << 20;

    PlantSettings settings;

    // Set by the view before each drawing.
    int radius = 0;                  // half the smaller side of the view
    std::uint32_t seed = 1;          // the patch's seed
    float growthLimit = 10000.0f;    // largest segment drawn; lower while withering
    float rotationOffset = 0.0f;     // degrees: the bend while the plant turns
    float twigTwist = 0.0f;          // degrees

    PlantRenderer() = default;
    explicit PlantRenderer(const PlantSettings& s) : settings(s) {}

    // The twelve branches of a frame, replacing what `canvas` held. The
    // sway amounts and the droop come from the view's shape settings.
    void growBranches(PlantGeometry& canvas, const PlantFrame& frame, const PlantShapeSettings& shape);

    // One branch or twig with its twigs, appended to `canvas` as lines of
    // `branch`: twigs come before the line they fork from, as they are
    // drawn. rotation in radians, length in steps, swayPhase in radians,
    // swayAmount, drop (per step) and twist in degrees.
    void growLine(PlantGeometry& canvas, int branch, std::uint32_t lineSeed, const PlantPoint& position,
                  float rotation, float length, float hue, float alpha, std::uint32_t swaySeed, float swayPhase,
                  float swayAmount, float drop, int generation, float twist);

    // Steps taken by the last growBranches or growLine.
    long stepsTaken() const { return FRAME_STEP_BUDGET - stepsLeft_; }

private:
    void grow(PlantGeometry& canvas, std::uint32_t lineSeed, const PlantPoint& position, float rotation, float length,
              float hue, float alpha, std::uint32_t swaySeed, float swayPhase, float swayAmount, float drop,
              int generation, float twist);
    void addLine(PlantGeometry& canvas, const PlantPoint* points, int count, float hue, float startAlpha,
                 int generation) const;

    int branch_ = 0;
    int depth_ = 0;  // lines being grown, the branch and its twigs
    long stepsLeft_ = FRAME_STEP_BUDGET;
    // The points of the lines being grown, 64 for each depth of twigs.
    std::vector<PlantPoint> scratch_ = std::vector<PlantPoint>(std::size_t(MAX_TWIG_GENERATION + 1) * MAX_POINTS);
};

// The colour of a line of hue h (0 to 1) at the given saturation and value
// 1, as bytes red, green, blue. A hue of exactly 1 is taken as it is, not
// times 6, and falls in the second sector.
void plantLineColor(float hue, float saturation, std::uint8_t rgb[3]);

// The squared distance of p to the segment from a to b: to the line where
// p's projection falls within the segment, else to the nearer end.
double squaredDistanceToSegment(const PlantPoint& p, const PlantPoint& a, const PlantPoint& b);

// min * (max / min)^a by the exponential of the logarithm, in single
// precision: a twist that follows Atonality on a geometric scale.
float plantTwist(float minTwist, float maxTwist, float atonality);

// The frame of a patch's plant at rest in `bounds` (panel pixels): every
// smoothing settled at the patch's values (lengths with the mod wheel,
// rotation = Rotation x 360 within [0, 360), twists from Atonality), no note
// sounding, sway phases 0, no decay. Also sets the renderer's per-frame
// fields for it (seed, radius, growth limit, bend, twig twist).
PlantFrame restingPlantFrame(const NorvelleProgram& record, const OrlPixels::IntRect& bounds,
                             const PlantShapeSettings& shape, PlantRenderer& renderer);

}  // namespace views
