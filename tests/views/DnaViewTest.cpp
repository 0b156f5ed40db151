// The DNA view over an editor with a patch behind it: its keys, the
// molecule's geometry, the opening, scrolling, the focus and its triggers,
// and the edits of genes by dragging their balls.
#include "views/DnaView.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "fomal/EditorCore.h"
#include "fomal/StillHost.h"
#include "notation/Notation.h"
#include "patch/GeneTable.h"
#include "tests/views/ScriptTestHost.h"
#include "views/DnaHelix.h"
#include "views/DnaSettings.h"
#include "views/LivingViews.h"

namespace {

// The patch's genes over the test host's record and undo steps; an edit
// saves its step before its first change, as the plug-in does.
class GeneTestHost : public viewtest::ScriptTestHost {
public:
    int begun = 0, ended = 0, changes = 0;

    int geneCount() const override { return GENE_COUNT; }
    std::string geneName(int gene) const override { return std::string(GENE_TABLE[gene].name); }
    double geneValue(int gene) const override { return current.genes[gene]; }
    double geneInitValue(int) const override { return 0.5; }
    void beginGeneEdit() override {
        ++begun;
        saved_ = false;
    }
    void changeGene(int gene, double value) override {
        if (current.genes[gene] == float(value)) return;
        if (!saved_) saveUndo("Gene Modifications");
        saved_ = true;
        current.setGene(gene, float(value));
        ++changes;
    }
    void endGeneEdit() override { ++ended; }

private:
    bool saved_ = false;
};

// Every focus trigger appends its name to ::log.
std::string layout(const std::string& dnaKeys = "") {
    std::string names;
    for (int i = 0; i < GENE_COUNT; ++i) names += "\"focusedGene" + std::to_string(i) + "\", ";
    return "bounds: { 12, 82, 360, 420 }\n"
           "triggers: { { when: { " + names + "\"unfocusedGene\" }, action: \"{ ::log = ::log # '$;' }\" } }\n"
           "views: { { type: \"dna\", label: \"dna\"" + (dnaKeys.empty() ? "" : ", " + dnaKeys) + " } }";
}

constexpr int LEFT = 12, TOP = 82;

struct Dna {
    GeneTestHost host;
    Fomal::VirtualClock clock;
    Fomal::EditorCore core{host, clock};

    explicit Dna(const std::string& keys = "") {
        views::registerLivingViews();
        core.openLayoutText(layout(keys));
        core.scripts().evaluate(*core.root(), "{ ::log = '' }");
    }
    views::DnaView& view() { return static_cast<views::DnaView&>(*core.root()->findView("dna")); }
    std::string log() { return core.scripts().evaluate(*core.root(), "{ ::log }"); }
    void wait(std::int64_t ms) {
        for (std::int64_t i = 0; i < ms; ++i) {
            clock.advance(1);
            core.idle();
        }
    }
    // Lets the opening end.
    void settle() { wait(1600); }
    // The centre of gene i's ball on the first rail, as it stands now.
    views::DnaEnd ball(int gene, int rail = 0) { return views::dnaRungAt(view().shape(), gene).ends[rail]; }
    int x(const views::DnaEnd& e) { return int(std::lround(e.x)); }
    int y(const views::DnaEnd& e) { return int(std::lround(e.y)); }
    // A point of gene i's row on its label, away from the balls.
    void onLabel(int gene, int& px, int& py) {
        px = LEFT + 40;
        py = int(std::lround(view().shape().firstY + gene * 16.0));
    }
};

// A drag from (x, y) straight up by `rise` pixels (down when negative), in
// steps of one pixel.
void dragUp(Dna& d, int x, int y, int rise, std::uint32_t mods = 0) {
    d.core.mouseDown({x, y, Fomal::LEFT_BIT | mods});
    const int step = rise > 0 ? 1 : -1;
    for (int i = 1; i <= std::abs(rise); ++i) d.core.mouseMove({x, y - i * step, Fomal::LEFT_BIT | mods});
    d.core.mouseUp({x, y - rise, Fomal::LEFT_BIT | mods});
}

}  // namespace

// ---------------------------------------------------------------------------
// Keys.

TEST(DnaViewTest, ThePanelsScrollRangeIs252) {
    const views::DnaSettings s = views::readDnaSettings(notation::Object());
    EXPECT_DOUBLE_EQ(s.autoScroll, 252.0);
    // The opening starts three ranges down and half a phase more turned.
    EXPECT_DOUBLE_EQ(s.scrollStart, -756.0);
    EXPECT_DOUBLE_EQ(s.rotationStart, 1.5);
    EXPECT_DOUBLE_EQ(s.helixWidth, 92.0);
    EXPECT_EQ(s.railsExtra, 2);
    EXPECT_EQ(s.tiersPen.color, 0xFF808080u);
    EXPECT_DOUBLE_EQ(s.tiersPen.dash, 20.0);
    EXPECT_DOUBLE_EQ(s.tiersPen.gap, 4.0);
    EXPECT_EQ(s.arrowPen.caps, OrlPixels::ROUND_CAPS);
    EXPECT_EQ(s.arrowPen.joints, OrlPixels::MITER_JOINTS);
    EXPECT_EQ(s.focusFill, 0xF0F0F0F0u);
    EXPECT_TRUE(s.labelsFont.font);
    EXPECT_TRUE(s.focusFont.font);
}

TEST(DnaViewTest, AutoScrollWrittenAsTheLayoutsExpressionIs252AndDollarIsTheRangeAndThePhase) {
    const views::DnaSettings s = views::readDnaSettings(notation::parseObject(
        "{ autoScroll: 40*2 + 37*16 - 420, helixPhase: 2.0, scrollStart: -$*2, rotationStart: $*0.5, helixTwist: $ * 2 }"));
    EXPECT_DOUBLE_EQ(s.autoScroll, 252.0);
    EXPECT_DOUBLE_EQ(s.scrollStart, -504.0);
    EXPECT_DOUBLE_EQ(s.rotationStart, 1.0);
    EXPECT_NEAR(s.helixTwist, 1.8, 1e-6);
}

TEST(DnaViewTest, ABadKeyFailsWithTheReadersMessage) {
    EXPECT_THROW(views::readDnaSettings(notation::parseObject("{ labelsAlign: \"middle\" }")), std::exception);
}

// ---------------------------------------------------------------------------
// Geometry.

TEST(DnaViewTest, BallsStayWithinTheirSizesAndGrowNearer) {
    views::DnaHelixShape s;
    for (double p = -2.0; p <= 38.0; p += 0.125) {
        const views::DnaRung r = views::dnaRungAt(s, p);
        for (const views::DnaEnd& e : r.ends) {
            EXPECT_GE(e.radius, s.minSize - 1e-12);
            EXPECT_LE(e.radius, s.maxSize + 1e-12);
            EXPECT_GE(e.depth, -1.0);
            EXPECT_LE(e.depth, 1.0);
        }
        // The two ends face each other across the axis.
        EXPECT_NEAR(r.ends[0].depth, -r.ends[1].depth, 1e-12);
        EXPECT_NEAR((r.ends[0].x + r.ends[1].x) / 2.0, s.centreX, 1e-9);
        const views::DnaEnd& nearer = r.ends[0].depth > r.ends[1].depth ? r.ends[0] : r.ends[1];
        const views::DnaEnd& farther = r.ends[0].depth > r.ends[1].depth ? r.ends[1] : r.ends[0];
        if (nearer.depth > 1e-9) {
            EXPECT_GT(nearer.radius, farther.radius);
            // Seen from above, the nearer end stands lower.
            EXPECT_GT(nearer.y, farther.y);
        }
    }
    // Fully near and fully far: the two sizes.
    s.phase = 0.0;
    const views::DnaRung r = views::dnaRungAt(s, 0.0);
    EXPECT_DOUBLE_EQ(r.ends[0].radius, 5.5);
    EXPECT_DOUBLE_EQ(r.ends[1].radius, 5.0);
}

TEST(DnaViewTest, RungsFollowInOrderDownTheViewWithTheTwist) {
    views::DnaHelixShape s;
    s.firstY = 100.0;
    for (int i = 0; i < 36; ++i) {
        const views::DnaRung a = views::dnaRungAt(s, i), b = views::dnaRungAt(s, i + 1);
        EXPECT_DOUBLE_EQ(b.y - a.y, 16.0);
        EXPECT_DOUBLE_EQ(a.y, 100.0 + 16.0 * i);
        // Each end lies on the rung's ellipse, helixWidth wide and helixTurn tall.
        const double ex = (a.ends[0].x - s.centreX) / 46.0, ey = (a.ends[0].y - a.y) / 10.0;
        EXPECT_NEAR(ex * ex + ey * ey, 1.0, 1e-9);
        EXPECT_NEAR(a.ends[0].x - s.centreX, 46.0 * std::sin(1.0 + 0.9 * i), 1e-9);
    }
}

TEST(DnaViewTest, RailsAreWholeAndCutOnlyWhereTheyPassTheAxis) {
    views::DnaHelixShape s;
    const std::vector<views::DnaRailRun> runs = views::dnaRails(s, -2.0, 38.0, 6);
    ASSERT_GT(runs.size(), 4u);
    for (int rail = 0; rail < 2; ++rail) {
        double lastX = 0, lastY = 0;
        bool first = true, lastFront = false;
        std::size_t points = 0;
        for (const views::DnaRailRun& run : runs) {
            if (run.rail != rail) continue;
            ASSERT_GE(run.points.size(), 4u);
            if (!first) {
                // A run begins where the one before ended, on the other side.
                EXPECT_DOUBLE_EQ(run.points[0], lastX);
                EXPECT_DOUBLE_EQ(run.points[1], lastY);
                EXPECT_NE(run.front, lastFront);
            }
            first = false;
            lastFront = run.front;
            lastX = run.points[run.points.size() - 2];
            lastY = run.points.back();
            points += run.points.size() / 2;
        }
        // The rail ends at the last extra rung.
        const views::DnaEnd end = views::dnaRungAt(s, 38.0).ends[rail];
        EXPECT_DOUBLE_EQ(lastX, end.x);
        EXPECT_DOUBLE_EQ(lastY, end.y);
        EXPECT_GE(points, 40u * 6u);
    }
}

// ---------------------------------------------------------------------------
// Opening and turning.

TEST(DnaViewTest, TheOpeningRisesAndTurnsIntoPlaceAndEndsAtScrollZeroAndNoOffset) {
    Dna d;
    EXPECT_DOUBLE_EQ(d.view().scroll(), -756.0);
    EXPECT_DOUBLE_EQ(d.view().phaseOffset(), 1.5);
    d.wait(300);
    const double scrollMidway = d.view().scroll(), offsetMidway = d.view().phaseOffset();
    EXPECT_GT(scrollMidway, -756.0);
    EXPECT_LT(scrollMidway, 0.0);
    EXPECT_GT(offsetMidway, 0.0);
    EXPECT_LT(offsetMidway, 1.5);
    // The scroll comes in within 0.75 s, the turn within 1.5 s.
    d.wait(500);
    EXPECT_EQ(d.view().scroll(), 0.0);
    EXPECT_GT(d.view().phaseOffset(), 0.0);
    d.wait(800);
    EXPECT_EQ(d.view().scroll(), 0.0);
    EXPECT_EQ(d.view().phaseOffset(), 0.0);
}

TEST(DnaViewTest, AtRestTheMoleculeKeepsTurningSlowly) {
    Dna d;
    d.settle();
    const double before = d.view().phase();
    d.wait(1000);
    const double turned = std::remainder(d.view().phase() - before, 6.283185307179586);
    EXPECT_NEAR(turned, views::DnaView::SPIN_RATE, 0.02);
    EXPECT_EQ(d.view().scroll(), 0.0);
}

// ---------------------------------------------------------------------------
// Scrolling.

TEST(DnaViewTest, DraggingTheBackgroundScrollsWithinZeroAndTheRange) {
    Dna d;
    d.settle();
    // Up by 100 pixels shows 100 pixels further down the molecule.
    dragUp(d, LEFT + 330, TOP + 300, 100);
    EXPECT_DOUBLE_EQ(d.view().scroll(), 100.0);
    dragUp(d, LEFT + 330, TOP + 380, 300);
    EXPECT_DOUBLE_EQ(d.view().scroll(), 252.0);
    dragUp(d, LEFT + 330, TOP + 30, -380);
    EXPECT_DOUBLE_EQ(d.view().scroll(), 0.0);
    d.view().scrollTo(-5.0);
    EXPECT_DOUBLE_EQ(d.view().scroll(), 0.0);
    d.view().scrollTo(1000.0);
    EXPECT_DOUBLE_EQ(d.view().scroll(), 252.0);
}

TEST(DnaViewTest, TheArrowsScrollAndTheMouseRestingInTheirBandsScrollsByItself) {
    Dna d;
    d.settle();
    // A click on the bottom arrow moves a rung at once.
    d.core.mouseDown({LEFT + 160, TOP + 413, Fomal::LEFT_BIT});
    d.core.mouseUp({LEFT + 160, TOP + 413, Fomal::LEFT_BIT});
    EXPECT_DOUBLE_EQ(d.view().scroll(), 16.0);
    // Resting in the bottom band goes on down, to the end and no further.
    d.core.mouseMove({LEFT + 100, TOP + 410, 0});
    d.wait(500);
    const double after = d.view().scroll();
    EXPECT_GT(after, 16.0 + 50.0);
    d.wait(3000);
    EXPECT_DOUBLE_EQ(d.view().scroll(), 252.0);
    // In the top band it comes back.
    d.core.mouseMove({LEFT + 100, TOP + 5, 0});
    d.wait(4000);
    EXPECT_DOUBLE_EQ(d.view().scroll(), 0.0);
    // Elsewhere it stays.
    d.view().scrollTo(100.0);
    d.core.mouseMove({LEFT + 330, TOP + 200, 0});
    d.wait(1000);
    EXPECT_DOUBLE_EQ(d.view().scroll(), 100.0);
}

// ---------------------------------------------------------------------------
// Focus.

TEST(DnaViewTest, FocusMovesFromGeneToGeneWithoutUnfocusBetweenAndLeavingUnfocuses) {
    Dna d;
    d.settle();
    int x = 0, y = 0;
    d.onLabel(3, x, y);
    d.core.mouseMove({x, y, 0});
    EXPECT_EQ(d.view().focusedGene(), 3);
    d.onLabel(4, x, y);
    d.core.mouseMove({x, y, 0});
    EXPECT_EQ(d.view().focusedGene(), 4);
    EXPECT_EQ(d.log(), "focusedGene3;focusedGene4;");
    // Within the same gene nothing more is sent.
    d.core.mouseMove({x + 10, y, 0});
    EXPECT_EQ(d.log(), "focusedGene3;focusedGene4;");
    // Away from the genes, and off the view.
    d.core.mouseMove({LEFT + 5, y, 0});
    EXPECT_EQ(d.view().focusedGene(), -1);
    EXPECT_EQ(d.log(), "focusedGene3;focusedGene4;unfocusedGene;");
    d.core.mouseMove({x, y, 0});
    d.core.mouseMove({2, 2, 0});
    EXPECT_EQ(d.view().focusedGene(), -1);
    EXPECT_EQ(d.log(), "focusedGene3;focusedGene4;unfocusedGene;focusedGene4;unfocusedGene;");
}

TEST(DnaViewTest, ABallTakesTheFocusOfItsGene) {
    Dna d;
    d.settle();
    const views::DnaEnd b = d.ball(6, 1);
    d.core.mouseMove({d.x(b), d.y(b), 0});
    EXPECT_EQ(d.view().geneBallAt(b.x, b.y), 6);
    EXPECT_EQ(d.view().focusedGene(), 6);
    EXPECT_EQ(d.log(), "focusedGene6;");
}

TEST(DnaViewTest, TheTurningAloneKeepsTheFocusOfAMouseRestingOnABall) {
    Dna d;
    d.settle();
    const views::DnaEnd b = d.ball(6, 1);
    d.core.mouseMove({d.x(b), d.y(b), 0});
    ASSERT_EQ(d.view().focusedGene(), 6);
    // Four seconds of turning carry the ball away from under the mouse.
    d.wait(4000);
    EXPECT_EQ(d.view().focusedGene(), 6);
    EXPECT_EQ(d.log(), "focusedGene6;");
    // A move of the mouse finds the gene under it again.
    d.core.mouseMove({d.x(b), d.y(b) + 1, 0});
    EXPECT_EQ(d.view().focusedGene(), d.view().geneAt(d.x(b), d.y(b) + 1));
}

// ---------------------------------------------------------------------------
// Editing.

TEST(DnaViewTest, DraggingABallUpRaisesTheGeneByTheDragScaleAsOneUndoStep) {
    Dna d;
    d.settle();
    const views::DnaEnd b = d.ball(5);
    dragUp(d, d.x(b), d.y(b), 40);
    EXPECT_NEAR(d.host.current.genes[5], 0.5 + 40 * views::DnaView::DRAG_SCALE, 1e-6);
    ASSERT_EQ(d.host.undoSteps.size(), 1u);
    EXPECT_EQ(d.host.undoSteps[0].first, "Gene Modifications");
    EXPECT_FLOAT_EQ(d.host.undoSteps[0].second.genes[5], 0.5f);
    EXPECT_EQ(d.host.begun, 1);
    EXPECT_EQ(d.host.ended, 1);
    // Every step of the drag was a change of its own, heard at once.
    EXPECT_EQ(d.host.changes, 40);
    // Down lowers it, and the range ends at 0.
    const views::DnaEnd c = d.ball(5);
    dragUp(d, d.x(c), d.y(c), -300);
    EXPECT_FLOAT_EQ(d.host.current.genes[5], 0.0f);
    EXPECT_EQ(d.host.undoSteps.size(), 2u);
    // Undo puts back the state before that drag.
    d.host.undo();
    EXPECT_NEAR(d.host.current.genes[5], 0.7, 1e-6);
    // Other genes are untouched.
    EXPECT_FLOAT_EQ(d.host.current.genes[4], 0.5f);
    EXPECT_FLOAT_EQ(d.host.current.genes[6], 0.5f);
}

TEST(DnaViewTest, ShiftDragsAtFineRatioPercent) {
    Dna d;
    d.settle();
    const views::DnaEnd b = d.ball(10);
    dragUp(d, d.x(b), d.y(b), 40, Fomal::SHIFT_BIT);
    EXPECT_NEAR(d.host.current.genes[10], 0.5 + 40 * views::DnaView::DRAG_SCALE * 0.10, 1e-6);
    // The layout's own ratio.
    Dna e("fineRatio: 50");
    e.settle();
    const views::DnaEnd c = e.ball(10);
    dragUp(e, e.x(c), e.y(c), 40, Fomal::SHIFT_BIT);
    EXPECT_NEAR(e.host.current.genes[10], 0.5 + 40 * views::DnaView::DRAG_SCALE * 0.5, 1e-6);
}

TEST(DnaViewTest, AControlClickResetsTheGeneToItsInitValue) {
    Dna d;
    d.host.current.genes[20] = 0.9f;
    d.settle();
    const views::DnaEnd b = d.ball(20);
    dragUp(d, d.x(b), d.y(b), 30, Fomal::CONTROL_BIT);
    EXPECT_FLOAT_EQ(d.host.current.genes[20], 0.5f);
    ASSERT_EQ(d.host.undoSteps.size(), 1u);
    EXPECT_EQ(d.host.undoSteps[0].first, "Gene Modifications");
    EXPECT_FLOAT_EQ(d.host.undoSteps[0].second.genes[20], 0.9f);
    // A gene at its Init value already makes no step.
    const views::DnaEnd c = d.ball(21);
    dragUp(d, d.x(c), d.y(c), 0, Fomal::CONTROL_BIT);
    EXPECT_EQ(d.host.undoSteps.size(), 1u);
}

TEST(DnaViewTest, TheHintShowsTheGeneAndItsValueWhileDragging) {
    Dna d;
    d.settle();
    EXPECT_EQ(d.view().valueText(), "");
    // The lower genes are below the view until it scrolls.
    d.view().scrollTo(252.0);
    const views::DnaEnd b = d.ball(27);
    d.core.mouseDown({d.x(b), d.y(b), Fomal::LEFT_BIT});
    d.core.mouseMove({d.x(b), d.y(b) - 20, Fomal::LEFT_BIT});
    EXPECT_EQ(d.view().draggedGene(), 27);
    EXPECT_EQ(d.view().valueText(), "flt_freq = 0.600");
    d.core.mouseUp({d.x(b), d.y(b) - 20, Fomal::LEFT_BIT});
    EXPECT_EQ(d.view().valueText(), "");
}

TEST(DnaViewTest, TheContextButtonNeitherDragsGenesNorScrolls) {
    Dna d;
    d.settle();
    const views::DnaEnd b = d.ball(5);
    d.core.mouseDown({d.x(b), d.y(b), Fomal::RIGHT_BIT | Fomal::CONTEXT_BIT});
    d.core.mouseMove({d.x(b), d.y(b) - 30, Fomal::RIGHT_BIT | Fomal::CONTEXT_BIT});
    d.core.mouseUp({d.x(b), d.y(b) - 30, Fomal::RIGHT_BIT | Fomal::CONTEXT_BIT});
    EXPECT_FLOAT_EQ(d.host.current.genes[5], 0.5f);
    EXPECT_EQ(d.host.begun, 0);
    EXPECT_DOUBLE_EQ(d.view().scroll(), 0.0);
}

TEST(DnaViewTest, APressBesideTheBallsScrollsAndChangesNoGene) {
    Dna d;
    d.settle();
    int x = 0, y = 0;
    d.onLabel(8, x, y);
    dragUp(d, x, y, 20);
    EXPECT_DOUBLE_EQ(d.view().scroll(), 20.0);
    EXPECT_EQ(d.host.changes, 0);
    EXPECT_TRUE(d.host.undoSteps.empty());
}

TEST(DnaViewTest, GroupsFollowTheGenesPrefixes) {
    Dna d;
    // env_ | vol_ | mod_ | lfo_ | a_ | b_ | fm_ | sub_am | balance | flt_ | fx_
    std::vector<int> starts;
    for (int i = 0; i < GENE_COUNT; ++i)
        if (d.view().startsGroup(i)) starts.push_back(i);
    EXPECT_EQ(starts, (std::vector<int>{3, 6, 10, 13, 18, 23, 25, 26, 27, 32}));
}

TEST(DnaViewTest, AHostWithoutGenesShowsNoGenesAndSendsNoFocus) {
    views::registerLivingViews();
    Fomal::StillHost host;
    Fomal::VirtualClock clock;
    Fomal::EditorCore core(host, clock);
    core.openLayoutText(layout());
    core.scripts().evaluate(*core.root(), "{ ::log = '' }");
    for (int i = 0; i < 1600; ++i) {
        clock.advance(1);
        core.idle();
    }
    core.paint();
    auto& view = static_cast<views::DnaView&>(*core.root()->findView("dna"));
    EXPECT_EQ(view.geneCount(), 0);
    core.mouseMove({LEFT + 40, TOP + 40, 0});
    core.mouseDown({LEFT + 126, TOP + 40, Fomal::LEFT_BIT});
    core.mouseUp({LEFT + 126, TOP + 40, Fomal::LEFT_BIT});
    EXPECT_EQ(view.focusedGene(), -1);
    EXPECT_EQ(core.scripts().evaluate(*core.root(), "{ ::log }"), "");
}
