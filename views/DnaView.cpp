#include "views/DnaView.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "fomal/EditorHost.h"
#include "fomal/EditorServices.h"

namespace views {

namespace {

constexpr double TWO_PI = 6.283185307179586;

// The part of an opening still to go after `elapsed` of `duration`
// seconds: 1 at the start, easing out to 0 at the end.
double openingLeft(double elapsed, double duration) {
    if (!(duration > 0.0) || elapsed >= duration) return 0.0;
    const double rest = 1.0 - std::max(0.0, elapsed) / duration;
    return rest * rest * rest;
}

// A gene's group: its name up to the first underscore, or the whole name.
std::string groupOf(const std::string& name) { return name.substr(0, name.find('_')); }

}  // namespace

DnaView::DnaView(const Fomal::ViewBuild& build) : View(build), settings_(readDnaSettings(build.keys)) {
    opened_ = lastTick_ = editor().now();
    scroll_ = settings_.scrollStart;
    phaseOffset_ = settings_.rotationStart;
    // An opening of no time stands at once.
    if (openingLeft(0.0, settings_.scrollTime) == 0.0) {
        scroll_ = 0.0;
        scrollOpening_ = false;
    }
    if (openingLeft(0.0, settings_.rotationTime) == 0.0) phaseOffset_ = 0.0;
    readGroups();
    askForTicks(settings_.updateFreq);
}

void DnaView::readGroups() {
    groups_.clear();
    for (int i = 0; i < geneCount(); ++i) groups_.push_back(groupOf(editor().host().geneName(i)));
}

int DnaView::geneCount() const { return std::max(0, editor().host().geneCount()); }

bool DnaView::startsGroup(int gene) const {
    if (gene <= 0 || gene >= int(groups_.size())) return false;
    return groups_[std::size_t(gene)] != groups_[std::size_t(gene) - 1];
}

double DnaView::firstRungY() const { return rect().top + settings_.helixOffset.y - scroll_; }

DnaHelixShape DnaView::shape() const {
    DnaHelixShape s;
    s.centreX = rect().left + settings_.helixOffset.x;
    s.firstY = firstRungY();
    s.width = settings_.helixWidth;
    s.height = settings_.helixHeight;
    s.twist = settings_.helixTwist;
    s.turn = settings_.helixTurn;
    s.phase = phase();
    s.minSize = settings_.moleculeMinSize;
    s.maxSize = settings_.moleculeMaxSize;
    return s;
}

// ---------------------------------------------------------------------------
// Where the mouse is.

int DnaView::arrowAt(double x, double y) const {
    const Fomal::RectF& r = rect();
    if (x < r.left || x >= r.right() || y < r.top || y >= r.bottom()) return 0;
    if (y < r.top + settings_.arrowMargin) return -1;
    if (y >= r.bottom() - settings_.arrowMargin) return 1;
    return 0;
}

int DnaView::geneBallAt(double x, double y) const {
    const DnaHelixShape s = shape();
    int best = -1;
    double bestDistance = 0.0;
    for (int i = 0; i < geneCount(); ++i) {
        const DnaRung rung = dnaRungAt(s, i);
        for (const DnaEnd& e : rung.ends) {
            const double d = std::hypot(x - e.x, y - e.y);
            if (d <= e.radius + BALL_TOLERANCE && (best < 0 || d < bestDistance)) {
                best = i;
                bestDistance = d;
            }
        }
    }
    return best;
}

int DnaView::geneAt(double x, double y) const {
    const Fomal::RectF& r = rect();
    if (x < r.left || x >= r.right() || y < r.top || y >= r.bottom() || arrowAt(x, y) != 0) return -1;
    const int ball = geneBallAt(x, y);
    if (ball >= 0) return ball;
    // The gene's row, from its label to its value box.
    const double row = std::floor((y - rowTop(0)) / settings_.helixHeight);
    if (!(row >= 0.0 && row < geneCount())) return -1;
    const int gene = int(row);
    if (x < r.left + settings_.dividersOffset.x || x >= valueBox(gene).right()) return -1;
    return gene;
}

double DnaView::rowTop(int gene) const {
    return firstRungY() + (gene - 0.5) * settings_.helixHeight;
}

Fomal::RectF DnaView::valueBox(int gene) const {
    const double left =
        rect().left + settings_.helixOffset.x + settings_.helixWidth / 2.0 + settings_.moleculeMaxSize + BOX_GAP;
    // The box stands on the labels' baseline, around the text.
    const double top = baseline(gene) + 4.0 - BOX_HEIGHT;
    return Fomal::RectF{float(left), float(top), float(BOX_WIDTH), float(BOX_HEIGHT)};
}

std::string DnaView::geneText(int gene) const {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", editor().host().geneValue(gene));
    return text;
}

std::string DnaView::valueText() const {
    if (dragged_ < 0) return {};
    return editor().host().geneName(dragged_) + " = " + geneText(dragged_);
}

// ---------------------------------------------------------------------------
// Focus and triggers.

void DnaView::focus(int gene) {
    focusScroll_ = scroll_;
    if (gene == focused_) return;
    focused_ = gene;
    invalidate();
    const std::string name = gene >= 0 ? "focusedGene" + std::to_string(gene) : std::string("unfocusedGene");
    // The layouts that hold the view answer, the nearest first.
    for (View* v = this; v != nullptr; v = v->parent())
        if (v->fireTrigger(name)) return;
}

void DnaView::hover(const Fomal::MouseEvent& e) {
    hovering_ = true;
    mouseX_ = e.x;
    mouseY_ = e.y;
    focus(geneAt(e.x, e.y));
}

void DnaView::hoverEnds() {
    hovering_ = false;
    focus(-1);
}

// ---------------------------------------------------------------------------
// Scrolling.

void DnaView::scrollTo(double pixels) {
    scrollOpening_ = false;
    const double limited = std::clamp(pixels, 0.0, std::max(0.0, settings_.autoScroll));
    if (limited == scroll_) return;
    scroll_ = limited;
    invalidate();
}

void DnaView::scrollBy(double pixels) {
    // A scroll during the opening starts from where the molecule is shown.
    scrollTo(std::clamp(scroll_, 0.0, std::max(0.0, settings_.autoScroll)) + pixels);
}

// ---------------------------------------------------------------------------
// The mouse.

bool DnaView::mouseDown(const Fomal::MouseEvent& e) {
    // The context button is for the menus around the view, not for genes.
    if ((e.modifiers & (Fomal::RIGHT_BIT | Fomal::CONTEXT_BIT)) != 0) return false;
    mouseX_ = e.x;
    mouseY_ = e.y;
    if (const int arrow = arrowAt(e.x, e.y)) {
        // A click moves a rung at once; held, the arrow goes on at its pace.
        arrowHeld_ = arrow;
        scrollBy(arrow * settings_.helixHeight);
        return true;
    }
    const int gene = geneBallAt(e.x, e.y);
    if (gene < 0) {
        scrolling_ = true;
        pressY_ = e.y;
        pressScroll_ = std::clamp(scroll_, 0.0, std::max(0.0, settings_.autoScroll));
        return true;
    }
    focus(gene);
    Fomal::EditorHost& host = editor().host();
    host.beginGeneEdit();
    dragged_ = gene;
    if (e.resetModifier()) {
        // A control-click puts back the Init value and drags nothing.
        changeGene(host.geneInitValue(gene));
        host.endGeneEdit();
        dragged_ = -1;
        return true;
    }
    lastY_ = e.y;
    dragValue_ = host.geneValue(gene);
    return true;
}

void DnaView::mouseMove(const Fomal::MouseEvent& e) {
    mouseX_ = e.x;
    mouseY_ = e.y;
    if (dragged_ >= 0) {
        // Up raises the gene; shift slows the pace to fineRatio percent.
        const double pace = DRAG_SCALE * (e.shift() ? settings_.fineRatio / 100.0 : 1.0);
        dragValue_ = std::clamp(dragValue_ + (lastY_ - e.y) * pace, 0.0, 1.0);
        lastY_ = e.y;
        changeGene(dragValue_);
    } else if (scrolling_) {
        // The molecule follows the mouse.
        scrollTo(pressScroll_ - (e.y - pressY_));
    }
}

void DnaView::mouseUp(const Fomal::MouseEvent& e) {
    if (dragged_ >= 0) {
        dragged_ = -1;
        editor().host().endGeneEdit();
        invalidate();
    }
    arrowHeld_ = 0;
    scrolling_ = false;
    mouseX_ = e.x;
    mouseY_ = e.y;
    hovering_ = pixelRect().contains(e.x, e.y);
    focus(hovering_ ? geneAt(e.x, e.y) : -1);
}

void DnaView::changeGene(double value) {
    if (dragged_ < 0 || !(value == value)) return;
    editor().host().changeGene(dragged_, std::clamp(value, 0.0, 1.0));
    invalidate();
}

// ---------------------------------------------------------------------------
// The timer: the opening, the turning and the arrows.

void DnaView::idle(std::int64_t now) {
    const double seconds = double(std::max<std::int64_t>(0, now - lastTick_)) / 1000.0;
    lastTick_ = now;
    const double elapsed = double(now - opened_) / 1000.0;
    spin_ = std::fmod(spin_ + SPIN_RATE * seconds, TWO_PI);
    phaseOffset_ = settings_.rotationStart * openingLeft(elapsed, settings_.rotationTime);
    if (scrollOpening_) {
        const double left = openingLeft(elapsed, settings_.scrollTime);
        scroll_ = settings_.scrollStart * left;
        if (left == 0.0) scrollOpening_ = false;
        invalidate();
    }
    const double pace = ARROW_SPEED * settings_.helixHeight * seconds;
    if (arrowHeld_ != 0) {
        scrollBy(arrowHeld_ * pace);
    } else if (hovering_ && dragged_ < 0 && !scrolling_) {
        if (const int arrow = arrowAt(mouseX_, mouseY_)) scrollBy(arrow * pace);
        // A scroll moves the genes under a resting mouse; the turning alone
        // does not take the focus from the gene the player is reading about.
        if (scroll_ != focusScroll_) focus(geneAt(mouseX_, mouseY_));
    }
    // A scroll has redrawn the whole view; turning moves the molecule alone.
    invalidateMolecule();
}

void DnaView::refreshState() {
    std::vector<double> values(static_cast<std::size_t>(geneCount()));
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = editor().host().geneValue(int(i));
    if (values == seenValues_) return;
    if (values.size() != seenValues_.size()) readGroups();
    seenValues_ = std::move(values);
    invalidate();
}

void DnaView::invalidateMolecule() {
    if (!animation().pose().atRest) {
        invalidate();
        return;
    }
    const double half = settings_.helixWidth / 2.0 + settings_.moleculeMaxSize + settings_.railsPen.stroke +
                        std::max(double(settings_.arrowDimensions.y), 0.0) + 2.0;
    const double centre = rect().left + settings_.helixOffset.x;
    const OrlPixels::IntRect r = pixelRect();
    const int left = int(std::floor(centre - half)), right = int(std::ceil(centre + half));
    editor().invalidate(OrlPixels::intersection(r, OrlPixels::IntRect(left, r.top, right - left, r.height)));
}

}  // namespace views
