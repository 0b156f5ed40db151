#include "views/BubbleView.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "fomal/ActionDispatcher.h"
#include "fomal/AnimationCurve.h"
#include "fomal/EditorServices.h"
#include "fomal/LayoutValues.h"
#include "fomal/TextSubstitution.h"
#include "pixels/ColorTable.h"
#include "pixels/LookupRaster.h"
#include "pixels/MaskedRaster.h"
#include "pixels/PolygonMask.h"
#include "pixels/SolidRaster.h"
#include "pixels/Stroking.h"
#include "platform/Exceptions.h"
#include "views/PlantPainter.h"

namespace views {

namespace {

constexpr double PI = 3.14159265358979323846;
// Room around the text lines that a redraw of typed words covers, for
// underlines, frames and offsets that reach past the line.
constexpr int TEXT_SLACK = 6;

double number(const Fomal::Object& keys, std::string_view key, double fallback) {
    return Fomal::tamed(Fomal::readNumber(keys.get(key), float(fallback)));
}

// { left, top, right, bottom }; missing elements are 0.
void readEdges(const Fomal::Object& keys, std::string_view key, double (&out)[4]) {
    const Fomal::Array parts = Fomal::parseArray(keys.get(key));
    for (std::size_t i = 0; i < 4 && i < parts.size(); ++i) out[i] = Fomal::tamed(Fomal::readNumber(parts[i], 0.0f));
}

BubbleStyle readStyle(const std::string& name, std::string_view raw, const BubbleStyle* base) {
    const Fomal::Object o = Fomal::parseObject(raw);
    BubbleStyle s;
    if (base != nullptr) {
        s.font = base->font;
        s.color = base->color;
        s.offset = base->offset;
        s.lineSpacing = base->lineSpacing;
        s.typingRate = base->typingRate;
    }
    s.name = name;
    if (o.has("font") || base == nullptr) {
        const OrlPixels::FontSpecification f = Fomal::readFont(o.get("font"));
        s.font = f.font;
        s.color = f.color;
    }
    s.offset = Fomal::tamed(Fomal::readPoint(o.get("offset"), s.offset));
    s.lineSpacing = number(o, "lineSpacing", s.lineSpacing);
    s.typingRate = number(o, "typingRate", s.typingRate);
    if (o.has("underline")) {
        const std::string pen = o.get("underline");
        s.underlined = true;
        s.underline = Fomal::readPen(pen, 1.0);
        s.underlineOffset = number(Fomal::parseObject(pen), "offset", 0);
    }
    s.padding = number(o, "padding", 0);
    s.margin = number(o, "margin", 0);
    if (o.has("frame")) {
        const std::string pen = o.get("frame");
        s.framed = true;
        s.frame = Fomal::readPen(pen, 1.0);
        const Fomal::Object f = Fomal::parseObject(pen);
        s.padding = number(f, "padding", s.padding);
        s.margin = number(f, "margin", s.margin);
    }
    return s;
}

void fillPolygon(OrlPixels::Surface& surface, const OrlPixels::Polygon& shape, OrlPixels::Pixel color) {
    if (shape.isEmpty() || color == 0) return;
    OrlPixels::PolygonMask mask(shape, surface.bounds);
    OrlPixels::SolidRaster ink(color);
    OrlPixels::MaskedRaster inked(ink, mask);
    surface.draw(inked);
}

void strokePolygon(OrlPixels::Surface& surface, OrlPixels::Polygon line, const OrlPixels::Pen& pen) {
    OrlPixels::applyPen(line, pen);
    fillPolygon(surface, line, pen.color);
}

// A strict integer: blanks, an optional minus and digits.
bool readPageNumber(const std::string& text, int& out) {
    std::size_t p = text.find_first_not_of(" \t");
    std::size_t e = text.find_last_not_of(" \t");
    if (p == std::string::npos) return false;
    bool negative = false;
    if (text[p] == '-') negative = true, ++p;
    if (p > e) return false;
    long long v = 0;
    for (; p <= e; ++p) {
        if (text[p] < '0' || text[p] > '9') return false;
        v = v * 10 + (text[p] - '0');
        if (v > 1000000000) return false;
    }
    out = int(negative ? -v : v);
    return true;
}

// A page without its script sections, as far as the mark-up goes.
std::string withoutScripts(std::string_view page) {
    constexpr std::string_view close = "[/quol]";
    std::string out;
    std::size_t p = 0;
    for (;;) {
        const std::size_t open = page.find(BubbleView::SCRIPT_OPEN, p);
        if (open == std::string_view::npos) break;
        const std::size_t end = page.find(close, open);
        if (end == std::string_view::npos) break;
        out.append(page.substr(p, open - p));
        p = end + close.size();
    }
    out.append(page.substr(p));
    return out;
}

}  // namespace

int BubbleStyles::find(std::string_view name) const {
    for (std::size_t i = 0; i < list.size(); ++i)
        if (list[i].name == name) return int(i);
    return -1;
}

double BubbleStyles::measure(int style, std::string_view text) const {
    const BubbleStyle& s = list[std::size_t(style)];
    return s.font ? s.font->measure(text).width : 0.0;
}

MarkupStyleMetrics BubbleStyles::metrics(int style) const {
    const BubbleStyle& s = list[std::size_t(style)];
    MarkupStyleMetrics m;
    if (s.font) {
        m.ascent = s.font->ascent();
        m.lineHeight = s.font->lineHeight();
    }
    m.lineSpacing = s.lineSpacing;
    m.side = s.margin + s.padding;
    return m;
}

BubbleView::BubbleView(const Fomal::ViewBuild& build) : View(build) {
    const Fomal::Object& k = build.keys;
    minHeight_ = number(k, "minHeight", minHeight_);
    maxHeight_ = number(k, "maxHeight", maxHeight_);
    gamma_ = number(k, "gamma", gamma_);
    if (!(gamma_ > 0.01)) gamma_ = 0.01;
    if (k.has("fill")) fill_ = Fomal::readColor(k.get("fill"));
    if (k.has("frame")) {
        framed_ = true;
        frame_ = Fomal::readPen(k.get("frame"), 1.0);
    }
    const Fomal::PointF corners = Fomal::tamed(Fomal::readPoint(k.get("corners"), {0, 0}));
    rx_ = std::max(0.0f, corners.x);
    ry_ = std::max(0.0f, corners.y);
    const Fomal::PointF tail = Fomal::tamed(Fomal::readPoint(k.get("tailSize"), {0, 0}));
    tailWidth_ = tail.x;
    tailHeight_ = tail.y;
    tailPosition_ = number(k, "tailPosition", 0);
    if (k.has("clickAction")) clickAction_ = Fomal::readString(k.get("clickAction"));
    clickParams_ = k.get("clickParams");
    readEdges(k, "margins", margins_);
    readEdges(k, "paddings", paddings_);
    moveResizeFPS_ = number(k, "moveResizeFPS", moveResizeFPS_);
    moveResizeTime_ = number(k, "moveResizeTime", moveResizeTime_);
    moveResizeCurve_ = number(k, "moveResizeCurve", moveResizeCurve_);
    for (const std::string& raw : Fomal::parseArray(k.get("pages"))) pages_.push_back(Fomal::readString(raw));

    const Fomal::Object styles = Fomal::parseObject(k.get("styles"));
    if (!styles.has("default")) throw Exception("Missing (default) style specification for bubble view");
    styles_.list.push_back(readStyle("default", styles.get("default"), nullptr));
    for (const auto& [name, raw] : styles.entries())
        if (name != "default") styles_.list.push_back(readStyle(name, raw, &styles_.list.front()));

    home_ = rect();
    target_ = rect();
    // The layout's own scripts are not ready while it is being built: a
    // first page with script sections is checked without them now, and
    // shown with their results at the first tick.
    scriptsPending_ = !pages_.empty() && pages_.front().find(SCRIPT_OPEN) != std::string::npos;
    showPage(0, !scriptsPending_);
    standAtTarget();
    advance(editor().now(), false);
    updateTicks();
}

void BubbleView::standAtTarget() {
    moveStart_ = -1;
    invalidate();
    setRect(target_);
    invalidate();
}

Fomal::RectF BubbleView::bubbleRect() const {
    const Fomal::RectF& r = rect();
    const double left = r.left + margins_[0], top = r.top + margins_[1];
    const double right = r.right() + margins_[2], bottom = r.bottom() + margins_[3];
    return {float(left), float(top), float(right - left), float(bottom - top)};
}

double BubbleView::textLeft() const { return bubbleRect().left + paddings_[0]; }
double BubbleView::textTop() const { return bubbleRect().top + paddings_[1]; }
double BubbleView::textWidth() const {
    return target_.width - margins_[0] + margins_[2] - paddings_[0] + paddings_[2];
}

OrlPixels::Polygon BubbleView::outline() const {
    const Fomal::RectF b = bubbleRect();
    const double left = b.left, top = b.top, right = b.right(), bottom = b.bottom();
    const double rx = std::clamp(rx_, 0.0, std::max(0.0, double(b.width) / 2));
    const double ry = std::clamp(ry_, 0.0, std::max(0.0, double(b.height) / 2));
    const double radius = std::max(rx, ry);
    const double step = radius > 0 ? std::max(2 / radius, 2 * PI / 100) : PI / 2;
    OrlPixels::Polygon shape;
    bool first = true;
    const auto add = [&](double x, double y) {
        if (first) shape.moveTo(x, y);
        else shape.lineTo(x, y);
        first = false;
    };
    // A quarter arc about (cx, cy) from angle a0, clockwise on the panel.
    const auto quarter = [&](double cx, double cy, double a0) {
        for (double a = 0; a < PI / 2; a += step) add(cx + rx * std::cos(a0 + a), cy + ry * std::sin(a0 + a));
        add(cx + rx * std::cos(a0 + PI / 2), cy + ry * std::sin(a0 + PI / 2));
    };
    quarter(right - rx, top + ry, -PI / 2);
    quarter(right - rx, bottom - ry, 0);
    if (tailWidth_ > 0 && tailHeight_ > 0) {
        const double tailX = left + tailPosition_;
        add(tailX + tailWidth_, bottom);
        add(tailX, bottom + tailHeight_);
        add(tailX - tailWidth_, bottom);
    }
    quarter(left + rx, bottom - ry, PI / 2);
    quarter(left + rx, top + ry, PI);
    shape.close(0);
    return shape;
}

bool BubbleView::hitsAt(int x, int y) const {
    const Fomal::RectF b = bubbleRect();
    return pixelRect().contains(x, y) && x >= b.left && x < b.right() && y >= b.top && y < b.bottom();
}

void BubbleView::showPage(int page, bool runScripts) {
    page_ = page;
    const std::string& raw = page_ < int(pages_.size()) ? pages_[std::size_t(page_)] : std::string();
    compiled_ = compileMarkup(runScripts ? Fomal::substituteText(raw, editor().substitution()) : withoutScripts(raw),
                              styles_);
    op_ = 0;
    typedInOp_ = 0;
    typedBefore_ = 0;
    typedTo_ = editor().now();
    pauseEnd_ = -1;
    speed_ = 1.0;
    spedUp_ = false;
    pressedClick_ = -1;
    repeating_ = false;
    target_ = home_;
    fitHeight();
}

void BubbleView::fitHeight() {
    wrapped_ = wrapMarkup(compiled_, textWidth(), styles_);
    const double vertical = paddings_[1] - paddings_[3] + margins_[1] - margins_[3];
    const double height = std::max(minHeight_, std::min(maxHeight_, wrapped_.height + vertical));
    const Fomal::RectF to{home_.left, float(home_.bottom() - height), home_.width, float(height)};
    startMove(to, moveResizeTime_, moveResizeCurve_);
}

void BubbleView::gotoPage(int page) {
    if (page < 0 || page >= int(pages_.size())) throw Exception("Invalid page number: " + std::to_string(page));
    invalidate();
    scriptsPending_ = false;
    showPage(page, true);
    invalidate();
    advance(editor().now(), true);
    updateTicks();
}

void BubbleView::startMove(const Fomal::RectF& to, double seconds, double curve) {
    target_ = to;
    const Fomal::RectF& r = rect();
    if (r.left == to.left && r.top == to.top && r.width == to.width && r.height == to.height) {
        moveStart_ = -1;
        return;
    }
    if (!(seconds > 0) || !(moveResizeFPS_ > 0)) {
        invalidate();
        setRect(to);
        moveStart_ = -1;
        invalidate();
        return;
    }
    moveFrom_ = r;
    moveStart_ = editor().now();
    moveTime_ = seconds;
    moveCurve_ = curve;
}

void BubbleView::stepMove(std::int64_t now) {
    if (moveStart_ < 0) return;
    const double t = double(now - moveStart_) / (moveTime_ * 1000.0);
    invalidate();
    if (t >= 1) {
        setRect(target_);
        moveStart_ = -1;
    } else {
        const double f = Fomal::animationCurve(t, moveCurve_);
        const auto mix = [f](float a, float b) { return float(a + (b - a) * f); };
        setRect({mix(moveFrom_.left, target_.left), mix(moveFrom_.top, target_.top),
                 mix(moveFrom_.width, target_.width), mix(moveFrom_.height, target_.height)});
    }
    invalidate();
}

int BubbleView::shownCharacters() const { return typedBefore_ + int(std::floor(typedInOp_)); }

void BubbleView::advance(std::int64_t now, bool runActions) {
    const int before = shownCharacters();
    while (op_ < compiled_.ops.size()) {
        const MarkupOp& op = compiled_.ops[op_];
        if (op.kind == MarkupKind::lineBreak) {
            ++op_;
        } else if (op.kind == MarkupKind::run) {
            const int chars = op.characters();
            const double rate = styles_.list[std::size_t(op.style)].typingRate;
            if (rate > 0 && std::isfinite(speed_)) {
                const double perSecond = rate * speed_;
                const double available = double(now - typedTo_) / 1000.0 * perSecond;
                const double needed = chars - typedInOp_;
                if (available < needed) {
                    typedInOp_ += std::max(0.0, available);
                    typedTo_ = now;
                    break;
                }
                typedTo_ += needed / perSecond * 1000.0;
            }
            typedBefore_ += chars;
            typedInOp_ = 0;
            ++op_;
        } else if (!runActions) {
            break;
        } else if (op.kind == MarkupKind::pause) {
            if (pauseEnd_ < 0) pauseEnd_ = typedTo_ + op.delay * 1000.0;
            if (pauseEnd_ > double(now)) {
                typedTo_ = double(now);
                break;
            }
            typedTo_ = pauseEnd_;
            pauseEnd_ = -1;
            ++op_;
        } else if (op.kind == MarkupKind::action) {
            const std::string action = op.action, params = op.params;
            const double delay = op.delay;
            ++op_;
            if (delay > 0)
                queueDelayed(now + std::int64_t(std::llround(delay * 1000.0)), std::string(), action, params, true);
            else
                runAction(action, params);
            if (retired()) return;
        } else {  // move
            const MarkupOp m = op;
            ++op_;
            // `$` keeps the bubble's own value; the other symbols are the
            // parent's, as in a layout's bounds.
            const Fomal::RectF parent = parentRectOf();
            const Fomal::NumberSymbol symbols[] = {{"l", 0}, {"t", 0}, {"w", parent.width}, {"h", parent.height},
                                                   {"r", parent.width}, {"b", parent.height}};
            const Fomal::Array parts = Fomal::parseArray(m.bounds);
            const float own[4] = {target_.left - parent.left, target_.top - parent.top, target_.width, target_.height};
            float v[4] = {own[0], own[1], own[2], own[3]};
            for (std::size_t i = 0; i < 4 && i < parts.size(); ++i) v[i] = Fomal::tamed(Fomal::readNumber(parts[i], own[i], symbols));
            const double seconds = m.time.empty() ? moveResizeTime_ : Fomal::readNumber(m.time, 0.0f);
            const double curve = m.curve.empty() ? moveResizeCurve_ : Fomal::readNumber(m.curve, 0.5f);
            const bool rewrap = v[2] != target_.width;
            startMove({v[0] + parent.left, v[1] + parent.top, v[2], v[3]}, seconds, curve);
            if (rewrap) wrapped_ = wrapMarkup(compiled_, textWidth(), styles_);
        }
    }
    if (op_ >= compiled_.ops.size()) typedTo_ = std::max(typedTo_, double(now));
    const int after = shownCharacters();
    if (after != before) invalidateLines(before, after);
}

Fomal::RectF BubbleView::parentRectOf() const {
    return parent() != nullptr ? parent()->rect() : Fomal::RectF{0, 0, home_.right(), home_.bottom()};
}

void BubbleView::invalidateLines(int fromCharacter, int toCharacter) {
    int first = -1, last = -1;
    for (const PlacedRun& r : wrapped_.runs) {
        const int end = r.firstCharacter + compiled_.ops[r.op].characters();
        if (end <= fromCharacter || r.firstCharacter >= toCharacter) continue;
        if (first < 0) first = r.line;
        last = r.line;
    }
    if (first < 0) return;
    const MarkupLine& a = wrapped_.lines[std::size_t(first)];
    const MarkupLine& b = wrapped_.lines[std::size_t(last)];
    const int left = int(std::floor(textLeft())) - TEXT_SLACK;
    const int top = int(std::floor(textTop() + a.top)) - TEXT_SLACK;
    const int right = int(std::ceil(textLeft() + textWidth())) + TEXT_SLACK;
    const int bottom = int(std::ceil(textTop() + b.top + b.height)) + TEXT_SLACK;
    editor().invalidate(OrlPixels::IntRect(left, top, right - left, bottom - top));
}

void BubbleView::updateTicks() {
    double want = 0;
    if (moveStart_ >= 0) want = std::max(want, moveResizeFPS_);
    if (typing() || repeating_ || scriptsPending_) want = std::max(want, TYPING_FPS);
    if (want != ticksAsked_) {
        ticksAsked_ = want;
        askForTicks(want);
    }
}

void BubbleView::idle(std::int64_t now) {
    if (scriptsPending_) {
        scriptsPending_ = false;
        showPage(page_, true);
        standAtTarget();
        if (retired()) return;
    }
    stepMove(now);
    if (typing()) advance(now, true);
    if (retired()) return;
    if (repeating_ && pressedClick_ >= 0 && now >= nextRepeat_) {
        nextRepeat_ += REPEAT_INTERVAL_MS;
        const MarkupClick c = compiled_.clicks[std::size_t(pressedClick_)];
        runAction(c.action, c.params);
        if (retired()) return;
    }
    updateTicks();
}

void BubbleView::runAction(const std::string& action, const std::string& params) {
    editor().actions().perform(*this, action, params, true);
}

int BubbleView::clickAt(int x, int y) const {
    const int shown = shownCharacters();
    for (const PlacedRun& r : wrapped_.runs) {
        const MarkupOp& op = compiled_.ops[r.op];
        if (op.click < 0 || r.firstCharacter >= shown) continue;
        const MarkupLine& line = wrapped_.lines[std::size_t(r.line)];
        const double left = textLeft() + r.x, top = textTop() + line.top;
        if (x >= left && x < left + op.width && y >= top && y < top + line.height) return op.click;
    }
    return -1;
}

Fomal::Cursor BubbleView::cursorAt(int x, int y) const {
    return clickAt(x, y) >= 0 ? Fomal::Cursor::hand : cursor();
}

bool BubbleView::mouseDown(const Fomal::MouseEvent& e) {
    const int c = clickAt(e.x, e.y);
    if (c >= 0) {
        pressedClick_ = c;
        const MarkupClick click = compiled_.clicks[std::size_t(c)];
        if (click.autoRepeat) {
            repeating_ = true;
            nextRepeat_ = editor().now() + REPEAT_DELAY_MS;
            runAction(click.action, click.params);
            if (!retired()) updateTicks();
        }
        return !retired();
    }
    pressedClick_ = -1;
    if (clickAction_ == "typingRate" && !Fomal::parseObject(clickParams_).has("label"))
        typingRate(clickParams_);
    else
        runAction(clickAction_, clickParams_);
    return false;
}

void BubbleView::mouseUp(const Fomal::MouseEvent& e) {
    const int pressed = pressedClick_;
    const bool repeated = repeating_;
    pressedClick_ = -1;
    repeating_ = false;
    updateTicks();
    if (pressed < 0 || repeated || pressed >= int(compiled_.clicks.size())) return;
    if (clickAt(e.x, e.y) != pressed) return;
    const MarkupClick click = compiled_.clicks[std::size_t(pressed)];
    runAction(click.action, click.params);
}

void BubbleView::typingRate(std::string_view params) {
    const Fomal::Object k = Fomal::parseObject(params);
    if (!typing() || spedUp_) {
        const std::string reclick = Fomal::readString(k.get("reclickAction"));
        if (!reclick.empty()) runAction(reclick, k.get("reclickParams"));
        return;
    }
    const double rate = Fomal::readNumber(k.get("rate"), 0.0f);
    spedUp_ = true;
    speed_ = rate > 0 ? rate : std::numeric_limits<double>::infinity();
    advance(editor().now(), true);
    if (!retired()) updateTicks();
}

bool BubbleView::canPerformOwn(std::string_view action, std::string_view params) {
    if (action == "typingRate") return true;
    if (action != "gotoPage") return false;
    const Fomal::Object k = Fomal::parseObject(params);
    int page = 0;
    if (!readPageNumber(Fomal::readString(k.get("page")), page) || pages_.empty()) return false;
    const bool wrap = k.has("wrap") ? Fomal::readBool(k.get("wrap")) : true;
    return wrap || (page >= 0 && page < int(pages_.size()));
}

void BubbleView::performOwn(std::string_view action, std::string_view params) {
    if (action == "typingRate") {
        typingRate(params);
        return;
    }
    if (action != "gotoPage") return;
    const Fomal::Object k = Fomal::parseObject(params);
    const std::string text = Fomal::readString(k.get("page"));
    int page = 0;
    const bool wrap = k.has("wrap") ? Fomal::readBool(k.get("wrap")) : true;
    const int count = int(pages_.size());
    if (!readPageNumber(text, page) || count == 0 || (!wrap && (page < 0 || page >= count)))
        throw Exception("Invalid page number: " + text);
    gotoPage(((page % count) + count) % count);
}

void BubbleView::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    const OrlPixels::Polygon shape = outline();
    fillPolygon(surface, shape, fill_);
    if (framed_) {
        OrlPixels::Polygon line = shape;
        OrlPixels::applyPen(line, frame_);
        if (!line.isEmpty()) {
            // The line's coverage through the bubble's gamma.
            const PlantCoverageTable coverage(gamma_);
            OrlPixels::ColorTable table;
            for (int i = 0; i < 256; ++i)
                table.entries[i] = OrlPixels::scalePixel(frame_.color, OrlPixels::scaleFactor(coverage.value[i]));
            table.opaque = OrlPixels::isOpaquePixel(frame_.color) && coverage.value[255] == 255;
            OrlPixels::PolygonMask mask(line, surface.bounds);
            OrlPixels::LookupRaster ink(mask, &table);
            surface.draw(ink);
        }
    }

    if (scriptsPending_) return;
    const int shown = shownCharacters();
    const double left = textLeft(), top = textTop();
    for (std::size_t k = 0; k < wrapped_.runs.size(); ++k) {
        const PlacedRun& r = wrapped_.runs[k];
        if (r.firstCharacter >= shown) break;
        const MarkupOp& op = compiled_.ops[r.op];
        const BubbleStyle& style = styles_.list[std::size_t(op.style)];
        if (!style.font) continue;
        const std::size_t count = std::min(op.text.size(), std::size_t(shown - r.firstCharacter));
        const std::string_view text = std::string_view(op.text).substr(0, count);
        const MarkupLine& line = wrapped_.lines[std::size_t(r.line)];
        const double baseline = top + line.baseline + style.offset.y;
        const double lineTop = baseline - style.font->ascent();
        const int x = int(std::floor(left + r.x + style.margin + style.padding + style.offset.x + 0.5));
        const int y = int(std::floor(lineTop + 0.5));
        const int width = style.font->measure(text).width;
        if (style.framed) {
            const double boxLeft = std::floor(left + r.x + style.margin + style.offset.x) + 0.5;
            const double boxTop = std::floor(lineTop - style.padding) + 0.5;
            const double boxWidth = std::floor(width + 2 * style.padding);
            const double boxHeight = std::floor(style.font->lineHeight() + 2 * style.padding);
            OrlPixels::Polygon box;
            box.addRectangle(boxLeft, boxTop, boxWidth, boxHeight);
            strokePolygon(surface, box, style.frame);
        }
        style.font->draw(surface, text, x, y, style.color);
        if (style.underlined && width > 0) {
            // The line runs on under the blank to the next word of the
            // style on the line, once that word has begun.
            double length = width;
            if (k + 1 < wrapped_.runs.size()) {
                const PlacedRun& next = wrapped_.runs[k + 1];
                if (next.line == r.line && next.firstCharacter < shown && compiled_.ops[next.op].style == op.style)
                    length = next.x - r.x - style.margin - style.padding;
            }
            const double uy = std::floor(baseline + style.underlineOffset) + 0.5;
            OrlPixels::Polygon underline;
            underline.moveTo(x, uy);
            underline.lineTo(x + length, uy);
            strokePolygon(surface, underline, style.underline);
        }
    }
}

}  // namespace views
