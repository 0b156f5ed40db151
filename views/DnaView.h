// The DNA view (layout type `dna`): the genes of the patch as the rungs of
// a slowly turning double helix (DnaHelix), each with its name on the left
// and a box with its value on the right, dotted dividers between the gene
// groups (the genes that share a name's prefix: env_, vol_, mod_ ...), and
// scroll arrows at the top and bottom.
//
// The view opens with the molecule rising into place and turning into its
// start phase. Dragging the background scrolls; a press on an arrow scrolls
// while held, and the mouse resting in an arrow's band scrolls by itself.
// A press on a gene's ball drags the gene: up raises it, shift moves it by
// `fineRatio` percent of the pace, a control-click puts back its Init
// value. Each drag is one undo step, "Gene Modifications", and every change
// is heard at once. The gene under the mouse has the focus: its ball and
// label stand out, and the view sends "focusedGene" with its number, or
// "unfocusedGene" when the mouse leaves the genes, to the layouts around it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "fomal/View.h"
#include "pixels/ColorTable.h"
#include "pixels/Polygon.h"
#include "views/DnaHelix.h"
#include "views/DnaSettings.h"

namespace views {

class DnaView : public Fomal::View {
public:
    // Radians a second of the turning at rest: a turn in about 25 seconds.
    static constexpr double SPIN_RATE = 0.25;
    // Gene value per pixel of a drag: 200 pixels span a gene's range.
    static constexpr double DRAG_SCALE = 0.005;
    // Rungs a second that the arrows scroll.
    static constexpr double ARROW_SPEED = 8.0;
    // Pixels around a ball that still take the mouse.
    static constexpr double BALL_TOLERANCE = 1.5;
    // The value box to the right of the helix, from the rungs' reach.
    static constexpr double BOX_GAP = 18.0;
    static constexpr double BOX_WIDTH = 40.0;
    static constexpr double BOX_HEIGHT = 14.0;
    // The height of the value's bar in the box.
    static constexpr double VALUE_BAR = 2.0;
    // Rail points per rung.
    static constexpr int RAIL_STEPS = 6;

    explicit DnaView(const Fomal::ViewBuild& build);

    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    bool takesMouse() const override { return true; }
    bool mouseDown(const Fomal::MouseEvent& e) override;
    void mouseMove(const Fomal::MouseEvent& e) override;
    void mouseUp(const Fomal::MouseEvent& e) override;
    void hover(const Fomal::MouseEvent& e) override;
    void hoverEnds() override;
    void idle(std::int64_t now) override;
    // The genes changed outside the view (undo, another patch): drawn anew.
    void refreshState() override;
    // While a gene is dragged: its name and value.
    std::string valueText() const override;

    const DnaSettings& settings() const { return settings_; }
    int geneCount() const;
    // The scroll in pixels (0 shows the first gene at the top), and the
    // phase offset of the opening that is still to turn.
    double scroll() const { return scroll_; }
    double phaseOffset() const { return phaseOffset_; }
    // The angle of the first rung now.
    double phase() const { return settings_.helixPhase + spin_ + phaseOffset_; }
    // Sets the scroll within 0 to autoScroll; the opening's scroll ends.
    void scrollTo(double pixels);
    // The helix as it stands now, in panel coordinates.
    DnaHelixShape shape() const;
    // The gene whose ball lies under a panel point (the nearest of those),
    // or -1.
    int geneBallAt(double x, double y) const;
    // The gene a panel point is over (its ball or its row), -1 for none and
    // for the arrows' bands.
    int geneAt(double x, double y) const;
    // The focused gene, -1 for none; the gene being dragged, -1 for none.
    int focusedGene() const { return focused_; }
    int draggedGene() const { return dragged_; }
    // -1 in the top arrow's band, 1 in the bottom one's, else 0.
    int arrowAt(double x, double y) const;
    // The text of a gene's value.
    std::string geneText(int gene) const;
    // The top of a gene's row (the band of helixHeight around its rung),
    // and the baseline of its label and value.
    double rowTop(int gene) const;
    double baseline(int gene) const { return rowTop(gene) + settings_.labelsOffset.y; }
    // The value box of a gene, in panel coordinates.
    Fomal::RectF valueBox(int gene) const;
    // Whether genes i - 1 and i belong to different groups.
    bool startsGroup(int gene) const;

private:
    void readGroups();
    // Asks for the redraw of the band the molecule turns in.
    void invalidateMolecule();
    double firstRungY() const;
    void focus(int gene);
    void scrollBy(double pixels);
    void changeGene(double value);

    // Drawing (DnaDrawing.cpp).
    void drawMolecule(OrlPixels::Surface& s, const DnaHelixShape& shape);
    void drawLabels(OrlPixels::Surface& s, const DnaHelixShape& shape);
    void drawArrows(OrlPixels::Surface& s);
    void fillPolygon(OrlPixels::Surface& s, const OrlPixels::Polygon& polygon, OrlPixels::Pixel color);
    void strokePolygon(OrlPixels::Surface& s, OrlPixels::Polygon polygon, const OrlPixels::Pen& pen);
    // The colour table of a colour through the molecule's gamma.
    const OrlPixels::ColorTable& inkOf(OrlPixels::Pixel color);

    DnaSettings settings_;
    double scroll_ = 0.0;
    double spin_ = 0.0;
    double phaseOffset_ = 0.0;
    std::int64_t opened_ = 0;
    std::int64_t lastTick_ = 0;
    bool scrollOpening_ = true;
    int focused_ = -1;
    // The mouse over the view: where, and whether at all.
    bool hovering_ = false;
    double mouseX_ = 0.0, mouseY_ = 0.0;
    double focusScroll_ = 0.0;  // the scroll when the focus was last found
    // A press: on a gene (dragged_), on an arrow (arrowHeld_) or on the
    // background (scroll drag).
    int dragged_ = -1;
    int arrowHeld_ = 0;
    bool scrolling_ = false;
    double pressY_ = 0.0, pressScroll_ = 0.0, lastY_ = 0.0, dragValue_ = 0.0;
    std::vector<std::string> groups_;  // each gene's group
    std::vector<double> seenValues_;   // the genes at the last refresh
    struct Ink {
        OrlPixels::Pixel color;
        OrlPixels::ColorTable table;
    };
    std::vector<Ink> inks_;
};

}  // namespace views
