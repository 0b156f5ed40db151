// The living plant: how it follows the patch, moves at its timer, sways
// with notes, decays and revives, plants a seed, and what the mouse does
// on it, over an editor with a patch behind it.
#include "views/PlantView.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "fomal/EditorCore.h"
#include "fomal/ScriptRandom.h"
#include "notation/Notation.h"
#include "patch/ParameterTable.h"
#include "platform/Resources.h"
#include "tests/views/ScriptTestHost.h"
#include "views/LivingViews.h"
#include "views/PlantMainPanel.h"
#include "views/PlantMotion.h"
#include "views/PlantSettings.h"

namespace {

using views::PlantMotion;

// The panel's plant at { 74, 146, 236, 236 }: its centre and scale.
constexpr int CX = 192, CY = 264;
constexpr double INNER = 11 + 12;   // core + inner gap: value 0
constexpr double RANGE = 118 - 12 - 12 - 11;  // pixels from value 0 to 1

// A host that also reports suspension and what the sound shows, and counts
// the ends of gestures.
class PlantTestHost : public viewtest::ScriptTestHost {
public:
    bool hostSuspended = false;
    VisualState sound;
    int ends = 0;
    bool suspended() const override { return hostSuspended; }
    bool visualState(VisualState& state) const override {
        state = sound;
        return true;
    }
    void endEdit(std::string_view) override { ++ends; }
};

// The main panel's plant with two flags the layout's triggers hide, so
// that a test sees which triggers came.
std::string layout() {
    return std::string("triggers: {\n"
                       "  { when: \"draggedBranch\", action: \"hideView\", params: \"dragged\" }\n"
                       "  { when: \"changedModWheel\", action: \"hideView\", params: \"wheel\" }\n"
                       "  { when: \"changedRotation\", action: \"hideView\", params: \"turned\" }\n"
                       "  { when: \"planted\", action: \"hideView\", params: \"planted\" }\n"
                       "}\nviews: {\n"
                       "  { type: \"rectangle\", label: \"dragged\", bounds: { 0, 0, 1, 1 } }\n"
                       "  { type: \"rectangle\", label: \"wheel\", bounds: { 0, 0, 1, 1 } }\n"
                       "  { type: \"rectangle\", label: \"turned\", bounds: { 0, 0, 1, 1 } }\n"
                       "  { type: \"rectangle\", label: \"planted\", bounds: { 0, 0, 1, 1 } }\n  ") +
           std::string(views::mainPanelPlantLayout()) + "\n}";
}

struct Plant {
    PlantTestHost host;
    Fomal::VirtualClock clock;
    Fomal::EditorCore core{host, clock};
    std::vector<std::string> alerts;

    explicit Plant(const NorvelleProgram& record = NorvelleProgram()) {
        views::registerLivingViews();
        host.current = record;
        core.onAlert = [this](const std::string& title, const std::string& text) { alerts.push_back(title + ": " + text); };
        core.openLayoutText(layout());
    }
    views::PlantView& view() { return static_cast<views::PlantView&>(*core.root()->findView("plant")); }
    bool fired(const char* flag) { return core.root()->findView(flag)->hidden(); }
    void wait(std::int64_t ms) {
        for (std::int64_t i = 0; i < ms; ++i) {
            clock.advance(1);
            core.idle();
        }
    }
    // A point `value` along branch `branch` at rotation 0 (branch 0 grows down).
    static void pointOf(int branch, double value, int& x, int& y) {
        const double angle = (branch * 30.0 - 90.0) * 3.141592653589793 / 180.0;
        const double d = INNER + RANGE * value;
        x = int(std::lround(CX - std::cos(angle) * d));
        y = int(std::lround(CY - std::sin(angle) * d));
    }
    void drag(int x0, int y0, int x1, int y1, std::uint32_t mods = 0, int steps = 5) {
        core.mouseDown({x0, y0, Fomal::LEFT_BIT | mods});
        for (int i = 1; i <= steps; ++i)
            core.mouseMove({x0 + (x1 - x0) * i / steps, y0 + (y1 - y0) * i / steps, Fomal::LEFT_BIT | mods});
        core.mouseUp({x1, y1, Fomal::LEFT_BIT | mods});
    }
};

views::PlantMotionSettings panelMotion() {
    const notation::Object keys = notation::parseObject(views::mainPanelPlantLayout());
    return views::readPlantMotionSettings(keys, views::mainPanelPlant().settings);
}

PlantMotion panelPlantMotion() { return PlantMotion(panelMotion(), views::mainPanelPlant().settings); }

NorvelleProgram withBranches(std::initializer_list<float> values) {
    NorvelleProgram p;
    int i = 0;
    for (const float v : values) p.setParam(Param::Branch1 + i++, v);
    return p;
}

}  // namespace

// ---------------------------------------------------------------------------
// Timer and smoothing.

TEST(PlantViewTest, ThePanelTicksThirtyTimesASecondWithWholeMilliseconds) {
    const views::PlantMotionSettings m = panelMotion();
    EXPECT_EQ(m.tickMs, 33);
    // Decay within 4 s and revival within 20 s, as the change of one tick.
    EXPECT_FLOAT_EQ(m.decayRate, 33.0f / 4000.0f);
    EXPECT_FLOAT_EQ(m.reviveRate, 33.0f / 20000.0f);
    // `$` is the normal value.
    EXPECT_FLOAT_EQ(m.decayedSaturation, 0.8f * 0.5f);
    EXPECT_FLOAT_EQ(m.decayedAlphaDrop, 0.8f * 0.75f);
    const PlantMotion motion = panelPlantMotion();
    EXPECT_FLOAT_EQ(motion.smoothing(), 1.0f - std::exp(-6.2831855f * (33.0f / 1250.0f)));
}

TEST(PlantViewTest, TheFirstLookAtThePatchTakesItAsItStands) {
    PlantMotion m = panelPlantMotion();
    NorvelleProgram p = withBranches({0.5f, 0.25f});
    p.setParam(Param::Rotation, 0.25f);
    p.setParam(Param::ModWheel, 0.5f);
    p.setParam(Param::WheelScale, 0.5f);
    m.follow(p, false);
    // Lengths grow by the wheel: B + (1 - B) * ModWheel * WheelScale.
    EXPECT_FLOAT_EQ(m.target[0], 0.5f + 0.5f * 0.25f);
    EXPECT_FLOAT_EQ(m.target[1], 0.25f + 0.75f * 0.25f);
    EXPECT_FLOAT_EQ(m.target[2], 0.25f);
    EXPECT_FLOAT_EQ(m.shown[0], m.target[0]);
    EXPECT_DOUBLE_EQ(m.rotationShown, 90.0);
    EXPECT_DOUBLE_EQ(m.modWheel, 0.5);
}

TEST(PlantViewTest, LengthsMoveByTheSmoothingAndSettleWithinATinyDifference) {
    PlantMotion m = panelPlantMotion();
    m.follow(NorvelleProgram(), false);
    m.follow(withBranches({1.0f}), false);
    EXPECT_FLOAT_EQ(m.shown[0], 0.0f);
    m.tick();
    EXPECT_FLOAT_EQ(m.shown[0], m.smoothing());
    for (int i = 0; i < 300 && m.shown[0] != 1.0f; ++i) m.tick();
    EXPECT_EQ(m.shown[0], 1.0f);  // set equal once closer than 1e-5
    for (int i = 1; i < 12; ++i) EXPECT_EQ(m.shown[i], 0.0f);
}

TEST(PlantViewTest, GoingFromRotation099To001TurnsTheShortWay) {
    PlantMotion m = panelPlantMotion();
    NorvelleProgram p;
    p.setParam(Param::Rotation, 0.99f);
    m.follow(p, false);
    const double start = m.rotationShown;
    EXPECT_NEAR(start, 356.4, 1e-4);
    p.setParam(Param::Rotation, 0.01f);
    m.follow(p, false);
    EXPECT_NEAR(m.rotationTarget, 363.6, 1e-4);  // on, not back across the whole circle
    double last = start;
    bool bent = false;
    for (int i = 0; i < 400 && m.rotationShown != m.rotationTarget; ++i) {
        m.tick();
        EXPECT_GE(m.rotationShown, last);
        last = m.rotationShown;
        bent = bent || m.rotationOffset != 0.0f;
    }
    EXPECT_TRUE(bent);  // the plant bends while it turns
    m.tick();           // settled: both wrap into 0 to 360
    EXPECT_NEAR(m.rotationShown, 3.6, 1e-4);
    EXPECT_EQ(m.rotationShown, m.rotationTarget);
    // And back the short way again.
    p.setParam(Param::Rotation, 0.99f);
    m.follow(p, false);
    EXPECT_NEAR(m.rotationTarget, -3.6, 1e-4);
}

TEST(PlantViewTest, ShortWayRoundKeepsWithinHalfATurn) {
    EXPECT_DOUBLE_EQ(views::shortWayRound(3.6, 356.4), 363.6);
    EXPECT_NEAR(views::shortWayRound(356.4, 3.6), -3.6, 1e-9);
    EXPECT_DOUBLE_EQ(views::shortWayRound(90.0, 0.0), 90.0);
    EXPECT_DOUBLE_EQ(views::shortWayRound(270.0, 720.0), 630.0);
}

TEST(PlantViewTest, AChangeThatKeepsTheSeedAnimatesLengthsAndRotationOnly) {
    PlantMotion m = panelPlantMotion();
    NorvelleProgram p = withBranches({0.5f, 0.5f});
    m.follow(p, true);
    for (int i = 0; i < 40; ++i) m.tick();  // some decay while suspended
    const float decayed = m.decay;
    ASSERT_GT(decayed, 0.0f);
    p.setParam(Param::Branch1, 0.75f);
    p.setParam(Param::Rotation, 0.45f);
    m.follow(p, true);
    EXPECT_EQ(m.shown[0], 0.5f);  // not restarted
    EXPECT_EQ(m.shown[1], 0.5f);
    EXPECT_EQ(m.decay, decayed);
    EXPECT_FLOAT_EQ(m.target[0], 0.75f);
    EXPECT_NEAR(m.rotationTarget, 162.0, 1e-4);
}

TEST(PlantViewTest, ANewSeedRestartsEveryBranchAndTheDecay) {
    PlantMotion m = panelPlantMotion();
    NorvelleProgram p = withBranches({0.5f, 0.5f, 0.5f});
    m.follow(p, true);
    for (int i = 0; i < 40; ++i) m.tick();
    p.seed = 77;
    m.follow(p, false);
    for (int i = 0; i < 12; ++i) EXPECT_EQ(m.shown[i], views::PLANTING_START_VALUE) << i;
    EXPECT_EQ(m.decay, 0.0f);
    EXPECT_EQ(m.seed, 77u);
}

TEST(PlantViewTest, ACloneOfBranch5KeepsBranch5AndRestartsTheOthers) {
    PlantMotion m = panelPlantMotion();
    NorvelleProgram p = withBranches({0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.7f});
    p.seed = 1000;
    m.follow(p, false);
    NorvelleProgram clone = p;
    clone.cloned = true;
    clone.seed = 1005;
    for (int i = 0; i < 12; ++i) clone.setParam(Param::Branch1 + i, 0.6f);
    m.follow(clone, false);
    EXPECT_FLOAT_EQ(m.shown[5], 0.6f);
    for (int i = 0; i < 12; ++i) {
        if (i != 5) {
            EXPECT_EQ(m.shown[i], views::PLANTING_START_VALUE) << i;
        }
    }
    // Already cloned: a further new seed restarts them all.
    NorvelleProgram again = clone;
    again.seed = 1005 + 3;
    m.shown[3] = 0.4f;
    m.follow(again, false);
    EXPECT_EQ(m.shown[3], views::PLANTING_START_VALUE);
}

TEST(PlantViewTest, ACloneOfBranch0KeepsTheSeedAndBranch0) {
    PlantMotion m = panelPlantMotion();
    NorvelleProgram p = withBranches({0.8f, 0.2f});
    m.follow(p, false);
    NorvelleProgram clone = p;
    clone.cloned = true;
    m.follow(clone, false);
    EXPECT_FLOAT_EQ(m.shown[0], 0.8f);
    EXPECT_EQ(m.shown[1], views::PLANTING_START_VALUE);
}

// ---------------------------------------------------------------------------
// Sway, notes, decay.

TEST(PlantViewTest, PhasesMoveAtTheRateOfTheNotesAndFreezeWhileSuspended) {
    PlantMotion m = panelPlantMotion();
    m.follow(NorvelleProgram(), false);
    VisualState sound;
    sound.levelHigh[3] = 1.0f;
    m.hear(sound);
    m.tick();
    // Rate 2 rad/s without a note, 50 with a bright one, for 33 ms.
    EXPECT_FLOAT_EQ(m.phase[0], 2.0f * 33.0f / 1000.0f);
    EXPECT_FLOAT_EQ(m.phase[3], 50.0f * 33.0f / 1000.0f);
    m.follow(NorvelleProgram(), true);
    const float frozen = m.phase[0];
    m.tick();
    EXPECT_EQ(m.phase[0], frozen);
}

TEST(PlantViewTest, ANoteGlowsAndItsSwayFadesWithinAboutTheAnimateTime) {
    PlantMotion m = panelPlantMotion();
    m.follow(NorvelleProgram(), false);
    VisualState sound;
    sound.flash[2] = 1.0f;
    sound.levelLow[2] = 0.6f;
    sound.levelHigh[2] = 0.3f;
    m.hear(sound);
    EXPECT_EQ(m.glow[2], 1.0f);
    EXPECT_FLOAT_EQ(m.level[2], 0.9f);  // a note lifts at once
    EXPECT_FLOAT_EQ(m.rate[2], 0.3f);
    EXPECT_EQ(m.level[1], 0.0f);
    const VisualState silence;
    m.hear(silence);
    m.hear(silence);  // reading the sound again moves nothing
    EXPECT_FLOAT_EQ(m.level[2], 0.9f);
    int ticks = 0;
    for (; ticks < 200 && m.level[2] > 0.9f * 0.01f; ++ticks) {
        m.hear(silence);
        m.tick();
    }
    // Down to a hundredth within about 1.25 s of 33 ms ticks.
    EXPECT_GT(ticks, 10);
    EXPECT_LT(ticks, 45);
    EXPECT_EQ(m.glow[2], 0.0f);
}

TEST(PlantViewTest, ASuspendedPlantDroopsWithinItsDecayTimeAndRevivesWithinItsReviveTime) {
    PlantMotion m = panelPlantMotion();
    m.follow(NorvelleProgram(), true);
    int ticks = 0;
    while (m.decay < 1.0f && ticks < 1000) {
        m.tick();
        ++ticks;
    }
    EXPECT_EQ(ticks, int(std::ceil(4000.0 / 33.0)));
    // Saturation and alpha drop follow decay cubed.
    EXPECT_FLOAT_EQ(m.saturation, 0.4f);
    EXPECT_FLOAT_EQ(m.alphaDrop, 0.6f);
    m.follow(NorvelleProgram(), false);
    ticks = 0;
    while (m.decay > 0.0f && ticks < 10000) {
        m.tick();
        ++ticks;
    }
    EXPECT_NEAR(ticks, 20000.0 / 33.0, 1.0);
    EXPECT_FLOAT_EQ(m.saturation, 0.8f);
    EXPECT_FLOAT_EQ(m.alphaDrop, 0.8f);
}

TEST(PlantViewTest, AtFullDecayEveryBranchIsAtFullLengthWhateverThePatchSays) {
    const views::MainPanelPlant& panel = views::mainPanelPlant();
    PlantMotion m = panelPlantMotion();
    m.follow(withBranches({0.0f, 0.3f, 1.0f}), true);
    m.decay = 1.0f;
    views::PlantRenderer renderer(panel.settings);
    renderer.radius = 118;
    views::PlantFrame decayed = m.frame(CX, CY, panel.shape);
    m.prepare(renderer, panel.shape);
    views::PlantGeometry a, b;
    renderer.growBranches(a, decayed, panel.shape);
    views::PlantFrame full = decayed;
    for (float& s : full.shown) s = 1.0f;
    renderer.growBranches(b, full, panel.shape);
    ASSERT_EQ(a.lines().size(), b.lines().size());
    ASSERT_EQ(a.pointTotal(), b.pointTotal());
    for (std::size_t i = 0; i < a.lines().size(); ++i) {
        const auto pa = a.points(a.lines()[i]);
        const auto pb = b.points(b.lines()[i]);
        for (std::size_t k = 0; k < pa.size(); ++k) {
            EXPECT_EQ(pa[k].x, pb[k].x);
            EXPECT_EQ(pa[k].y, pb[k].y);
        }
    }
    // And a decayed plant is not the standing one of the same lengths.
    views::PlantFrame standing = full;
    standing.decay = 0.0f;
    views::PlantGeometry c;
    renderer.growBranches(c, standing, panel.shape);
    EXPECT_NE(c.points(c.lines()[0])[1].y, a.points(a.lines()[0])[1].y);
}

// ---------------------------------------------------------------------------
// The view over an editor.

TEST(PlantViewTest, TheViewIsPlacedAndSettledOnThePatch) {
    Plant e(withBranches({0.5f}));
    ASSERT_TRUE(e.alerts.empty()) << e.alerts.front();
    EXPECT_EQ(e.view().centerX(), CX);
    EXPECT_EQ(e.view().centerY(), CY);
    EXPECT_EQ(e.view().radius, 118);
    EXPECT_DOUBLE_EQ(e.view().range(), RANGE);
    EXPECT_FLOAT_EQ(e.view().motion().shown[0], 0.5f);
    e.core.paint();
    EXPECT_GT(e.view().geometry().lines().size(), 12u);
}

TEST(PlantViewTest, ThePointsOfABranchLieInItsSectorAndTheCoreBelongsToTheSeed) {
    Plant e;
    for (int b = 0; b < 12; ++b) {
        int x, y;
        Plant::pointOf(b, 0.5, x, y);
        EXPECT_EQ(e.view().branchAt(x, y), b) << b;
    }
    // Branch 0 grows downwards at rotation 0.
    EXPECT_EQ(e.view().branchAt(CX, CY + 60), 0);
    EXPECT_EQ(e.view().branchAt(CX - 60, CY), 3);
    EXPECT_FALSE(e.view().hitsAt(CX + 5, CY + 5));
    EXPECT_TRUE(e.view().hitsAt(CX, CY + 60));
    EXPECT_FALSE(e.view().hitsAt(CX, CY + 119));
}

TEST(PlantViewTest, ABranchDragIsOneUndoStepAndOneGestureAndLeavesTheOtherBranches) {
    Plant e(withBranches({0.0f, 0.4f, 0.2f}));
    int x0, y0, x1, y1;
    Plant::pointOf(0, 0.1, x0, y0);
    Plant::pointOf(0, 0.5, x1, y1);
    e.drag(x0, y0, x1, y1);
    ASSERT_EQ(e.host.undoSteps.size(), 1u);
    EXPECT_EQ(e.host.undoSteps[0].first, "Change Branch C (1)");
    EXPECT_EQ(e.host.gestures(), 1);
    EXPECT_EQ(e.host.ends, 1);
    EXPECT_NEAR(e.host.current.param(Param::Branch1), 0.5, 1.0 / RANGE);
    EXPECT_EQ(e.host.current.param(Param::Branch2), 0.4f);
    EXPECT_EQ(e.host.current.param(Param::Branch3), 0.2f);
    EXPECT_EQ(e.host.selected, 0);
    EXPECT_TRUE(e.fired("dragged"));
    // The branch's note sounded while the button was down.
    ASSERT_EQ(e.host.notes.size(), 2u);
    EXPECT_EQ(e.host.notes[0], "down 60 100");
    EXPECT_EQ(e.host.notes[1].substr(0, 5), "up 60");

    // The plant follows to the new length.
    e.wait(5000);
    EXPECT_FLOAT_EQ(e.view().motion().shown[0], e.host.current.param(Param::Branch1));
}

TEST(PlantViewTest, OneBranchsChangeChangesNoOtherBranchsLines) {
    Plant e(withBranches({0.0f, 0.4f, 0.2f}));
    views::PlantView& v = e.view();
    const views::MainPanelPlant& panel = views::mainPanelPlant();
    views::PlantFrame f = v.motion().frame(CX, CY, panel.shape);
    views::PlantRenderer renderer(panel.settings);
    v.motion().prepare(renderer, panel.shape);
    views::PlantGeometry before, after;
    renderer.growBranches(before, f, panel.shape);
    f.shown[0] = 0.9f;
    renderer.growBranches(after, f, panel.shape);
    auto pointsOf = [](const views::PlantGeometry& g, int branch) {
        std::vector<double> xs;
        for (const views::PlantLine& line : g.lines())
            if (line.branch == branch)
                for (const views::PlantPoint& p : g.points(line)) xs.push_back(p.x), xs.push_back(p.y);
        return xs;
    };
    EXPECT_NE(pointsOf(before, 0), pointsOf(after, 0));
    for (int b = 1; b < 12; ++b) EXPECT_EQ(pointsOf(before, b), pointsOf(after, b)) << b;
}

TEST(PlantViewTest, AClickWithoutMovementSelectsTheBranchAndWritesNothing) {
    Plant e(withBranches({0.3f}));
    int x, y;
    Plant::pointOf(4, 0.7, x, y);
    e.core.mouseDown({x, y, Fomal::LEFT_BIT});
    e.core.mouseUp({x, y, Fomal::LEFT_BIT});
    EXPECT_EQ(e.host.selected, 4);
    EXPECT_TRUE(e.host.undoSteps.empty());
    EXPECT_EQ(e.host.gestures(), 0);
    EXPECT_FALSE(e.fired("dragged"));
    EXPECT_EQ(e.host.current.param(Param::Branch5), 0.0f);
}

TEST(PlantViewTest, AControlClickRetractsTheBranchToItsRoot) {
    Plant e(withBranches({0.3f, 0.0f, 0.7f}));
    int x, y;
    Plant::pointOf(2, 0.5, x, y);
    e.core.mouseDown({x, y, Fomal::LEFT_BIT | Fomal::CONTROL_BIT});
    e.core.mouseMove({x + 20, y + 20, Fomal::LEFT_BIT | Fomal::CONTROL_BIT});  // moving on changes nothing
    e.core.mouseUp({x + 20, y + 20, Fomal::LEFT_BIT | Fomal::CONTROL_BIT});
    EXPECT_EQ(e.host.current.param(Param::Branch3), 0.0f);
    EXPECT_EQ(e.host.current.param(Param::Branch1), 0.3f);
    ASSERT_EQ(e.host.undoSteps.size(), 1u);
    EXPECT_EQ(e.host.undoSteps[0].first, "Change Branch D (3)");
    EXPECT_EQ(e.host.gestures(), 1);
    EXPECT_EQ(e.host.ends, 1);
    EXPECT_TRUE(e.fired("dragged"));
}

TEST(PlantViewTest, ShiftCountsEachPixelAsAFineStep) {
    Plant e(withBranches({0.5f}));
    int x, y;
    Plant::pointOf(0, 0.5, x, y);
    e.drag(x, y, x, y + 10, Fomal::SHIFT_BIT, 10);
    EXPECT_NEAR(e.host.current.param(Param::Branch1), 0.5 + 10 * 0.001, 1e-5);
    EXPECT_EQ(e.host.undoSteps.size(), 1u);
}

TEST(PlantViewTest, TheModWheelsPartIsNotWrittenIntoTheBranch) {
    NorvelleProgram p;
    p.setParam(Param::ModWheel, 0.5f);
    p.setParam(Param::WheelScale, 1.0f);
    Plant e(p);
    // The ring stands at 0.5 of the scale less 6 px; press beyond it.
    int x0, y0, x1, y1;
    Plant::pointOf(6, 0.8, x0, y0);
    Plant::pointOf(6, 0.75, x1, y1);
    e.drag(x0, y0, x1, y1);
    // Shown 0.75 = B + (1 - B) * 0.5: B = 0.5.
    EXPECT_NEAR(e.host.current.param(Param::Branch7), 0.5, 2.0 / RANGE);
    EXPECT_EQ(e.host.undoSteps.size(), 1u);
}

TEST(PlantViewTest, ACloneMovesAllBranchesAsOneStep) {
    NorvelleProgram p = withBranches({0.2f, 0.2f, 0.2f, 0.2f, 0.2f, 0.2f, 0.2f, 0.2f, 0.2f, 0.2f, 0.2f, 0.2f});
    p.cloned = true;
    Plant e(p);
    int x0, y0, x1, y1;
    Plant::pointOf(1, 0.2, x0, y0);
    Plant::pointOf(1, 0.6, x1, y1);
    e.drag(x0, y0, x1, y1);
    ASSERT_EQ(e.host.undoSteps.size(), 1u);
    EXPECT_EQ(e.host.undoSteps[0].first, "Change Branches");
    for (int i = 0; i < 12; ++i) EXPECT_NEAR(e.host.current.param(Param::Branch1 + i), 0.6, 2.0 / RANGE) << i;
}

TEST(PlantViewTest, TheRingDragsTheModWheelAsOneStep) {
    Plant e;
    // At wheel 0 the ring lies at the start of the scale less 6 px.
    const int ringY = CY + int(INNER - 6);
    e.core.mouseDown({CX, ringY, Fomal::LEFT_BIT});
    EXPECT_TRUE(e.view().overWheel());
    EXPECT_EQ(e.view().currentHint(), "Mod Wheel = " + e.host.controlText("ModWheel"));  // worded by the catalogue
    e.core.mouseMove({CX, ringY + 20, Fomal::LEFT_BIT});
    e.core.mouseMove({CX, ringY + 40, Fomal::LEFT_BIT});
    e.core.mouseUp({CX, ringY + 40, Fomal::LEFT_BIT});
    EXPECT_NEAR(e.host.current.param(Param::ModWheel), 40.0 / RANGE, 1e-4);
    ASSERT_EQ(e.host.undoSteps.size(), 1u);
    EXPECT_EQ(e.host.undoSteps[0].first, "Change Wheel");
    EXPECT_EQ(e.host.gestures(), 1);
    EXPECT_TRUE(e.fired("wheel"));
    EXPECT_FALSE(e.fired("dragged"));
    EXPECT_EQ(e.host.selected, -1);
}

TEST(PlantViewTest, TheHandleTurnsThePlantAsOneStepWrappedIntoOneTurn) {
    NorvelleProgram p;
    p.setParam(Param::Rotation, 0.9f);
    Plant e(p);
    const Fomal::PointF h = e.view().handlePoint();
    // The handle stands in the frame turned by rotation + 90 degrees.
    const double turn = (0.9 * 360.0 + 90.0) * 3.141592653589793 / 180.0;
    EXPECT_NEAR(h.x, CX + 106.0 * std::cos(turn) + 28.5 * std::sin(turn), 1e-3);
    EXPECT_NEAR(h.y, CY + 106.0 * std::sin(turn) - 28.5 * std::cos(turn), 1e-3);
    const int hx = int(std::lround(h.x)), hy = int(std::lround(h.y));
    e.core.mouseDown({hx, hy, Fomal::LEFT_BIT});
    EXPECT_TRUE(e.view().overHandle());
    // A quarter turn clockwise around the centre.
    const int qx = CX - (hy - CY), qy = CY + (hx - CX);
    e.core.mouseMove({qx, qy, Fomal::LEFT_BIT});
    e.core.mouseUp({qx, qy, Fomal::LEFT_BIT});
    EXPECT_NEAR(e.host.current.param(Param::Rotation), 0.15, 1e-5);
    ASSERT_EQ(e.host.undoSteps.size(), 1u);
    EXPECT_EQ(e.host.undoSteps[0].first, "Rotation");
    EXPECT_EQ(e.host.gestures(), 1);
    EXPECT_TRUE(e.fired("turned"));
    // It turns on the short way, 0.9 to 0.15.
    EXPECT_NEAR(e.view().motion().rotationTarget, 0.15 * 360.0 + 360.0, 1e-3);
}

TEST(PlantViewTest, HintsNameWhatTheMouseDoes) {
    Plant e(withBranches({0.25f}));
    int x, y;
    Plant::pointOf(0, 0.25, x, y);
    e.core.mouseDown({x, y, Fomal::LEFT_BIT});
    e.core.mouseMove({x, y + 10, Fomal::LEFT_BIT});
    EXPECT_EQ(e.view().currentHint(), "Branch C (1) = " + e.host.controlText("Branch1"));
    e.core.mouseUp({x, y + 10, Fomal::LEFT_BIT});
    // With the plant turned by two steps, branch 0 plays D.
    NorvelleProgram p;
    p.setParam(Param::Rotation, 2.0f / 12.0f);
    Plant t(p);
    Plant::pointOf(2, 0.3, x, y);  // branch 0 turned by 60 degrees lies where branch 2 was
    t.core.mouseDown({x, y, Fomal::LEFT_BIT});
    t.core.mouseMove({x, y + 3, Fomal::LEFT_BIT});
    EXPECT_EQ(t.view().hoverBranch(), 0);
    EXPECT_EQ(t.view().currentHint().substr(0, 14), "Branch D (1) =");
    t.core.mouseUp({x, y + 3, Fomal::LEFT_BIT});
    ASSERT_EQ(t.host.undoSteps.size(), 1u);
    EXPECT_EQ(t.host.undoSteps[0].first, "Change Branch D (1)");
    EXPECT_EQ(t.host.notes[0], "down 62 100");
}

TEST(PlantViewTest, PlantingDropsTheSeedWhileTheOldPlantWithersThenFiresPlanted) {
    Plant e(withBranches({0.0f, 0.0f, 0.0f, 0.6f}));
    views::PlantView& v = e.view();
    EXPECT_FALSE(v.canPerformOwn("plant", ""));  // nothing chosen
    int x, y;
    Plant::pointOf(3, 0.6, x, y);
    e.core.mouseDown({x, y, Fomal::LEFT_BIT});
    e.core.mouseUp({x, y, Fomal::LEFT_BIT});
    ASSERT_EQ(e.host.selected, 3);
    ASSERT_TRUE(v.answersAction("plant"));
    ASSERT_TRUE(v.canPerformOwn("plant", ""));
    const std::uint32_t oldSeed = e.host.current.seed;
    v.performOwn("plant", "");
    ASSERT_EQ(e.host.undoSteps.size(), 1u);
    EXPECT_EQ(e.host.undoSteps[0].first, "Plant");
    EXPECT_NE(e.host.current.seed, oldSeed);
    EXPECT_EQ(v.motion().plantingBranch, 3);
    EXPECT_NEAR(v.motion().dropDistance, INNER + RANGE * 0.6, 1e-4);
    EXPECT_FALSE(v.canPerformOwn("plant", ""));
    // The old plant still stands while the seed falls.
    e.wait(34);
    EXPECT_EQ(v.motion().seed, oldSeed);
    EXPECT_LT(v.motion().growthLimit, 5.0f);
    // Branches take no input while it falls.
    Plant::pointOf(7, 0.2, x, y);
    e.drag(x, y, x + 30, y + 30);
    EXPECT_EQ(e.host.undoSteps.size(), 1u);
    EXPECT_FALSE(e.fired("planted"));
    double last = v.motion().dropDistance;
    int ticks = 0;
    while (v.motion().plantingBranch >= 0 && ticks < 200) {
        e.wait(34);  // at least one tick of 33 1/3 ms
        ++ticks;
        if (v.motion().plantingBranch >= 0) {
            EXPECT_LT(v.motion().dropDistance, last);
            last = v.motion().dropDistance;
        }
    }
    EXPECT_EQ(v.motion().plantingBranch, -1);
    EXPECT_TRUE(e.fired("planted"));
    EXPECT_EQ(v.motion().growthLimit, 10000.0f);
    EXPECT_FLOAT_EQ(v.motion().alpha, 0.6f);
    EXPECT_EQ(v.motion().seed, e.host.current.seed);
    // A fall of 0.6 of the range at 1 px and 20 px/s more each second of ticks.
    EXPECT_GT(ticks, 8);
    EXPECT_LT(ticks, 20);
}

TEST(PlantViewTest, ASuspendedPlantCancelsItsHoverAndTakesNoMouse) {
    Plant e(withBranches({0.5f}));
    int x, y;
    Plant::pointOf(0, 0.5, x, y);
    e.core.mouseDown({x, y, Fomal::LEFT_BIT});
    EXPECT_TRUE(e.view().overPlant());
    e.host.hostSuspended = true;
    e.wait(34);
    EXPECT_FALSE(e.view().overPlant());
    EXPECT_EQ(e.view().hoverBranch(), -1);
    EXPECT_EQ(e.view().currentHint().substr(0, 6), "Branch");  // the drag that began still says what it does
    e.core.mouseUp({x, y, Fomal::LEFT_BIT});
    EXPECT_EQ(e.view().currentHint(), "");
    EXPECT_FALSE(e.view().hitsAt(x, y));
    EXPECT_FALSE(e.view().canPerformOwn("plant", ""));
    e.view().hoverAt(x, y);
    EXPECT_FALSE(e.view().overPlant());
}

TEST(PlantViewTest, TheRotationHandleShowsOnRequest) {
    Plant e;
    EXPECT_FALSE(e.view().handleShown());
    EXPECT_FALSE(e.view().ringShown());
    ASSERT_TRUE(e.view().answersAction("showRotationHandle"));
    e.view().performOwn("showRotationHandle", "true");
    EXPECT_TRUE(e.view().handleShown());
    e.view().performOwn("showRotationHandle", "false");
    EXPECT_FALSE(e.view().handleShown());
}

TEST(PlantViewTest, NotesFromTheSoundGlowOnTheirBranch) {
    Plant e(withBranches({0.5f}));
    e.core.paint();
    const std::vector<std::uint32_t> dark(e.core.pixels().begin(), e.core.pixels().end());
    e.host.sound.flash[0] = 1.0f;
    e.host.sound.levelLow[0] = 0.8f;
    e.wait(34);
    EXPECT_EQ(e.view().motion().glow[0], 1.0f);
    e.core.paint();
    // The glow stands at the branch's handle: brighter there than before.
    const int gy = CY + int(INNER + RANGE * 0.5);
    const std::uint32_t before = dark[std::size_t(gy) * 384 + CX], now = e.core.pixels()[std::size_t(gy) * 384 + CX];
    EXPECT_GT(now & 0xFF, before & 0xFF);
    EXPECT_GT((now >> 8) & 0xFF, 0xC0u);
}

TEST(PlantViewTest, TheMainLayoutHoldsThePanelsPlantBetweenTheSeedAndTheJugglerLayer) {
    const notation::Object layout = notation::parseObject(platform::productResources().find("FOMAL", "main").text());
    const notation::Array views = notation::parseArray(layout.get("views"));
    const notation::Object shared = notation::parseObject(views::mainPanelPlantLayout());
    int seed = -1, plant = -1, juggler = -1;
    for (std::size_t i = 0; i < views.size(); ++i) {
        const notation::Object v = notation::parseObject(views[i]);
        const std::string label = v.has("label") ? notation::readString(v.get("label")) : std::string();
        if (label == "seed") seed = int(i);
        if (label == "jugglerLayer") juggler = int(i);
        if (label != "plant") continue;
        plant = int(i);
        // Every key as the shared text has it, and nothing else.
        EXPECT_EQ(v.size(), shared.size());
        for (const auto& [key, value] : shared.entries()) {
            ASSERT_TRUE(v.has(key)) << key;
            EXPECT_EQ(v.get(key), value) << key;
        }
    }
    EXPECT_EQ(seed, 2);
    EXPECT_EQ(plant, seed + 1);
    EXPECT_EQ(juggler, plant + 1);
}

TEST(PlantViewTest, APlantedSeedComesFromTheGeneratorTheScriptsShare) {
    Plant e(withBranches({0.5f}));
    e.host.selected = 0;
    Fomal::ScriptRandom::process() = Fomal::ScriptRandom(0x12345678u, 0x9ABCDEF0u);
    Fomal::ScriptRandom expected(0x12345678u, 0x9ABCDEF0u);
    const std::uint32_t word = expected.nextWord();
    e.view().performOwn("plant", "");
    EXPECT_EQ(e.host.current.seed, word == 0 ? 1u : word);
    // One step taken: the scripts go on from there.
    EXPECT_EQ(Fomal::ScriptRandom::process().a(), expected.a());
    EXPECT_EQ(Fomal::ScriptRandom::process().b(), expected.b());
}

TEST(PlantViewTest, TheFrameGrownAtATickIsWhatAWholeRepaintShows) {
    Plant e(withBranches({0.1f, 0.9f, 0.0f, 0.5f}));
    const OrlPixels::IntRect whole(0, 0, Fomal::EditorCore::WIDTH, Fomal::EditorCore::HEIGHT);
    auto fullPaint = [&] {
        e.core.paint();
        e.core.invalidate(whole);
        e.core.paint();
        return std::vector<std::uint32_t>(e.core.pixels().begin(), e.core.pixels().end());
    };
    // Growing, swaying with notes, turning, drooping and reviving: after
    // each stretch of ticks the panel painted bit by bit is the panel
    // painted whole.
    auto check = [&](const char* what) {
        e.core.paint();
        const std::vector<std::uint32_t> stepwise(e.core.pixels().begin(), e.core.pixels().end());
        EXPECT_EQ(stepwise, fullPaint()) << what;
    };
    e.core.paint();
    e.host.current.setParam(Param::Branch3, 1.0f);
    e.wait(700);
    check("growing");
    e.host.sound.flash[1] = 1.0f;
    e.host.sound.levelHigh[1] = 1.0f;
    e.wait(500);
    check("notes");
    e.host.sound = VisualState();
    e.host.current.setParam(Param::Rotation, 0.3f);
    e.wait(600);
    check("turning");
    int x0, y0, x1, y1;
    Plant::pointOf(0, 0.1, x0, y0);
    Plant::pointOf(0, 0.7, x1, y1);
    e.drag(x0, y0, x1, y1);
    e.wait(2000);
    check("dragged");
    e.host.hostSuspended = true;
    e.wait(2000);
    check("drooping");
    e.host.hostSuspended = false;
    e.wait(1000);
    check("reviving");
}

TEST(PlantViewTest, EachTickRedrawsTheWholeViewUnlessTheSuspendedPlantStandsStill) {
    Plant e;
    e.core.paint();
    e.wait(40);
    EXPECT_EQ(e.core.paint(), e.view().pixelRect());
    e.host.hostSuspended = true;
    e.wait(4100);  // fully decayed
    e.core.paint();
    e.wait(100);
    EXPECT_TRUE(e.core.paint().isEmpty());
}

// The mouse over the plant with no button held: the branch under it is
// hovered, with the plant's own hint (none on the main panel); a drag shows
// the branch's value in the hint window as it changes; leaving the plant
// forgets the branch.
TEST(PlantViewTest, TheMouseOverABranchHoversItAndADragShowsItsValue) {
    Plant e(withBranches({0.25f}));
    int x, y;
    Plant::pointOf(0, 0.25, x, y);
    e.core.mouseMove({x, y, 0});
    EXPECT_EQ(e.view().hoverBranch(), 0);
    e.wait(Fomal::EditorCore::HINT_DELAY_MS);
    EXPECT_EQ(e.core.hint().text(), "");
    e.core.mouseDown({x, y, Fomal::LEFT_BIT});
    e.core.mouseMove({x, y + 10, Fomal::LEFT_BIT});
    ASSERT_TRUE(e.core.hint().shown());
    EXPECT_EQ(e.core.hint().text(), "Branch C (1) = " + e.host.controlText("Branch1"));
    e.core.mouseUp({x, y + 10, Fomal::LEFT_BIT});
    // Out of the plant: the branch is forgotten.
    e.core.mouseMove({2, 2, 0});
    EXPECT_EQ(e.view().hoverBranch(), -1);
}
