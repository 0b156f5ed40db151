// How the DNA view draws: the molecule from back to front (the rails'
// runs behind the axis, the balls behind, the dashed rungs, the runs in
// front, the balls in front), then the gene names with the dividers of the
// groups and the value boxes, then the scroll arrows. The molecule's
// coverage goes through the view's gamma.
#include <algorithm>
#include <cmath>

#include "fomal/EditorHost.h"
#include "fomal/EditorServices.h"
#include "fomal/PanelDrawing.h"
#include "pixels/LookupRaster.h"
#include "pixels/MaskedRaster.h"
#include "pixels/PolygonMask.h"
#include "pixels/SolidRaster.h"
#include "pixels/Stroking.h"
#include "views/DnaView.h"

namespace views {

namespace {

// A ball of the molecule to draw: its place and whose it is.
struct Ball {
    DnaEnd end;
    int gene;
    int rail;
};

OrlPixels::Pixel scaled(OrlPixels::Pixel color, double f) {
    OrlPixels::Pixel out = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const double byte = double((color >> shift) & 0xFFu) * f;
        out |= OrlPixels::Pixel(std::min(255.0, std::floor(byte + 0.5))) << shift;
    }
    return out;
}

// The lines of the view around the molecule, without its gamma.
void drawOutline(OrlPixels::Surface& s, OrlPixels::Polygon polygon, const OrlPixels::Pen& pen) {
    OrlPixels::applyPen(polygon, pen);
    if (polygon.isEmpty()) return;
    OrlPixels::PolygonMask mask(polygon, s.bounds, OrlPixels::nonZeroFillRule);
    OrlPixels::SolidRaster ink(pen.color);
    OrlPixels::MaskedRaster masked(ink, mask);
    s.draw(masked);
}

}  // namespace

const OrlPixels::ColorTable& DnaView::inkOf(OrlPixels::Pixel color) {
    for (const Ink& ink : inks_)
        if (ink.color == color) return ink.table;
    Ink ink{color, {}};
    for (int c = 0; c < 256; ++c) ink.table.entries[c] = scaled(color, std::pow(c / 255.0, settings_.gamma));
    inks_.push_back(ink);
    return inks_.back().table;
}

void DnaView::fillPolygon(OrlPixels::Surface& s, const OrlPixels::Polygon& polygon, OrlPixels::Pixel color) {
    if (polygon.isEmpty() || color == 0) return;
    OrlPixels::PolygonMask mask(polygon, s.bounds, OrlPixels::nonZeroFillRule);
    OrlPixels::LookupRaster ink(mask, &inkOf(color));
    s.draw(ink);
}

void DnaView::strokePolygon(OrlPixels::Surface& s, OrlPixels::Polygon polygon, const OrlPixels::Pen& pen) {
    OrlPixels::applyPen(polygon, pen);
    fillPolygon(s, polygon, pen.color);
}

void DnaView::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) {
    OrlPixels::Surface s = surface.clipped(OrlPixels::intersection(clip, pixelRect()));
    if (s.bounds.isEmpty()) return;
    if (int(groups_.size()) != geneCount()) readGroups();
    const DnaHelixShape helix = shape();
    // The molecule scrolls in the window between the arrows' bands.
    const OrlPixels::IntRect r = pixelRect();
    const int margin = int(std::floor(settings_.arrowMargin + 0.5));
    OrlPixels::Surface window = s.clipped(OrlPixels::IntRect(r.left, r.top + margin, r.width, r.height - 2 * margin));
    if (!window.bounds.isEmpty()) {
        drawMolecule(window, helix);
        drawLabels(window, helix);
    }
    drawArrows(s);
}

void DnaView::drawMolecule(OrlPixels::Surface& s, const DnaHelixShape& helix) {
    const int genes = geneCount();
    if (genes == 0) return;
    // The rungs that can show: a rung reaches turn / 2 and a ball beyond
    // its centre.
    const double reach = helix.turn / 2.0 + helix.maxSize + settings_.railsPen.stroke;
    const double first = std::floor((rect().top - reach - helix.firstY) / helix.height);
    const double last = std::ceil((rect().bottom() + reach - helix.firstY) / helix.height);
    const double from = std::max(first, -double(settings_.railsExtra));
    const double to = std::min(last, double(genes - 1 + settings_.railsExtra));
    if (!(to > from)) return;

    std::vector<Ball> back, front;
    OrlPixels::Polygon rungs;
    for (int i = int(from); i <= int(to); ++i) {
        const DnaRung rung = dnaRungAt(helix, i);
        const DnaEnd& a = rung.ends[0];
        const DnaEnd& b = rung.ends[1];
        const bool gene = i >= 0 && i < genes;
        // The rung runs between the balls' rims; a rung beyond the genes
        // has no balls.
        const double dx = b.x - a.x, dy = b.y - a.y;
        const double length = std::hypot(dx, dy);
        const double cutA = gene ? a.radius : 0.0, cutB = gene ? b.radius : 0.0;
        if (length > cutA + cutB) {
            const double ux = dx / length, uy = dy / length;
            rungs.addLine(a.x + ux * cutA, a.y + uy * cutA, b.x - ux * cutB, b.y - uy * cutB);
        }
        if (!gene) continue;
        for (int k = 0; k < 2; ++k) (rung.ends[k].depth > 0.0 ? front : back).push_back(Ball{rung.ends[k], i, k});
    }
    auto byDepth = [](const Ball& p, const Ball& q) { return p.end.depth < q.end.depth; };
    std::sort(back.begin(), back.end(), byDepth);
    std::sort(front.begin(), front.end(), byDepth);

    OrlPixels::Polygon railsBehind, railsInFront;
    for (const DnaRailRun& run : dnaRails(helix, from, to, RAIL_STEPS)) {
        OrlPixels::Polygon& target = run.front ? railsInFront : railsBehind;
        target.moveTo(run.points[0], run.points[1]);
        for (std::size_t p = 2; p + 1 < run.points.size(); p += 2) target.lineTo(run.points[p], run.points[p + 1]);
    }

    auto drawBalls = [&](const std::vector<Ball>& balls) {
        for (const Ball& ball : balls) {
            const bool focused = ball.gene == focused_;
            OrlPixels::Polygon disc;
            disc.addCircle(ball.end.x, ball.end.y, ball.end.radius, 1.0);
            fillPolygon(s, disc, focused ? settings_.focusFill : ball.rail == 0 ? settings_.moleculesFill1 : settings_.moleculesFill2);
            strokePolygon(s, disc, focused ? settings_.focusPen : settings_.moleculesPen);
        }
    };
    strokePolygon(s, railsBehind, settings_.railsPen);
    drawBalls(back);
    strokePolygon(s, rungs, settings_.tiersPen);
    strokePolygon(s, railsInFront, settings_.railsPen);
    drawBalls(front);
}

void DnaView::drawLabels(OrlPixels::Surface& s, const DnaHelixShape& helix) {
    const int genes = geneCount();
    const Fomal::RectF& r = rect();
    const double lineReach = 24.0;
    OrlPixels::Polygon dividers;
    Fomal::EditorHost& host = editor().host();
    for (int i = 0; i < genes; ++i) {
        const double top = rowTop(i);
        if (top > r.bottom() + lineReach || top + helix.height < r.top - lineReach) continue;
        if (startsGroup(i)) {
            // Below the last row of the group before.
            const double y = rowTop(i - 1) + settings_.dividersOffset.y;
            const double x = r.left + settings_.dividersOffset.x;
            dividers.addLine(x, y, x + settings_.dividersWidth, y);
        }
        const int line = int(std::floor(baseline(i) + 0.5));
        const std::string name = host.geneName(i);
        const bool focused = i == focused_;
        const OrlPixels::FontSpecification& font = focused ? settings_.focusFont : settings_.labelsFont;
        if (font.font) {
            const OrlPixels::Font& f = *font.font;
            const int width = f.measure(name).width;
            const int point = int(std::floor(r.left + settings_.labelsOffset.x + 0.5));
            const int x = OrlPixels::alignedLeft(settings_.labelsAlign, point, 0, width);
            const int textTop = line - f.ascent();
            if (focused) {
                const Fomal::RectF box{float(x - settings_.boxExpand.x), float(textTop - settings_.boxExpand.y),
                                       float(width + 2.0 * settings_.boxExpand.x),
                                       float(f.lineHeight() + 2.0 * settings_.boxExpand.y)};
                Fomal::fillBox(s, box, settings_.boxFill);
                OrlPixels::Polygon outline;
                outline.addRectangle(box.left, box.top, box.width, box.height);
                drawOutline(s, outline, settings_.boxPen);
            }
            f.draw(s, name, x, textTop, font.color);
        }
        // The value box: the number over a bar along the bottom as long
        // as the value.
        const Fomal::RectF box = valueBox(i);
        const double value = std::clamp(host.geneValue(i), 0.0, 1.0);
        Fomal::fillBox(s, box, settings_.boxFill);
        const float bar = float(VALUE_BAR);
        Fomal::fillBox(s, Fomal::RectF{box.left, box.bottom() - bar, float(box.width * value), bar},
                       focused ? settings_.focusPen.color : settings_.moleculesFill1);
        OrlPixels::Polygon frame;
        frame.addRectangle(box.left + 0.5, box.top + 0.5, box.width - 1.0, box.height - 1.0);
        drawOutline(s, frame, settings_.moleculesPen);
        if (settings_.labelsFont.font) {
            const OrlPixels::Font& f = *settings_.labelsFont.font;
            const std::string text = geneText(i);
            const int x = OrlPixels::alignedLeft(OrlPixels::TextAlign::center, int(box.left), int(box.width), f.measure(text).width);
            f.draw(s, text, x, line - f.ascent(), settings_.labelsFont.color);
        }
    }
    strokePolygon(s, dividers, settings_.dividersPen);
}

void DnaView::drawArrows(OrlPixels::Surface& s) {
    const Fomal::RectF& r = rect();
    const double cx = r.left + settings_.helixOffset.x;
    const double height = settings_.arrowDimensions.x, half = settings_.arrowDimensions.y;
    const double margin = settings_.arrowMargin;
    OrlPixels::Polygon arrows;
    if (scroll_ > 0.5) {
        const double tip = r.top + (margin - height) / 2.0;
        arrows.moveTo(cx - half, tip + height);
        arrows.lineTo(cx, tip);
        arrows.lineTo(cx + half, tip + height);
    }
    if (scroll_ < settings_.autoScroll - 0.5) {
        const double tip = r.bottom() - (margin - height) / 2.0;
        arrows.moveTo(cx - half, tip - height);
        arrows.lineTo(cx, tip);
        arrows.lineTo(cx + half, tip - height);
    }
    drawOutline(s, arrows, settings_.arrowPen);
}

}  // namespace views
