#include "fomal/View.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <utility>
#include <vector>

#include "fomal/ActionDispatcher.h"
#include "fomal/EditorServices.h"
#include "pixels/AffineTransformation.h"
#include "pixels/MaskedRaster.h"
#include "pixels/PixelBlock.h"
#include "pixels/SolidMask.h"
#include "pixels/TransformedRaster.h"

namespace Fomal {

namespace {

int rounded(float v) { return int(std::floor(v + 0.5f)); }

}  // namespace

View::View(const ViewBuild& build) : editor_(build.editor) {
    const Object& k = build.keys;
    // Bounds are in the parent's terms: read against the parent's own
    // rectangle at the origin, then placed on the panel.
    const RectF& p = build.parentRect;
    rect_ = p;
    if (k.has("bounds")) {
        rect_ = readRect(k.get("bounds"), RectF{0, 0, p.width, p.height});
        rect_.left += p.left;
        rect_.top += p.top;
    }
    rect_ = RectF{tamed(rect_.left), tamed(rect_.top), tamed(rect_.width), tamed(rect_.height)};
    type_ = readString(k.get("type", "\"fomal\""));
    label_ = readString(k.get("label"));
    if (k.has("hidden")) hidden_ = readBool(k.get("hidden"));
    if (k.has("thru")) thru_ = readBool(k.get("thru"));
    if (k.has("cursor")) cursor_ = parseCursor(readString(k.get("cursor")));
    if (k.has("hint")) hint_ = readString(k.get("hint"));
    if (k.has("triggers")) triggers_ = readTriggers(k.get("triggers"));
}

OrlPixels::IntRect View::pixelRect() const {
    const int l = rounded(rect_.left), t = rounded(rect_.top);
    return OrlPixels::IntRect(l, t, rounded(rect_.right()) - l, rounded(rect_.bottom()) - t);
}

void View::drawTree(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) {
    if (hidden_) return;
    if (animation_.running() || animation_.t() < 1.0) {
        const AnimationPose pose = animation_.pose();
        if (!pose.atRest) {
            drawAnimated(surface, clip, pose);
            return;
        }
    }
    const OrlPixels::IntRect mine = intersection(clip, pixelRect());
    if (!mine.isEmpty()) {
        OrlPixels::Surface clipped = surface.clipped(mine);
        draw(clipped, mine);
    }
    // Children may reach beyond their parent; they clip to what is asked.
    for (const std::unique_ptr<View>& child : children_) child->drawTree(surface, clip);
}

View* View::hitTest(int x, int y) {
    if (hidden_) return nullptr;
    for (auto it = children_.rbegin(); it != children_.rend(); ++it) {
        View& child = **it;
        if (child.hidden_ || child.thru_) continue;
        if (!child.pixelRect().contains(x, y)) continue;
        if (View* hit = child.hitTest(x, y)) return hit;
    }
    return takesMouse() && hitsAt(x, y) ? this : nullptr;
}

View* View::root() {
    View* v = this;
    while (v->parent_ != nullptr) v = v->parent_;
    return v;
}

View* View::findView(std::string_view label) {
    if (label == "/") return root();
    if (!label_.empty() && label_ == label) return this;
    for (const std::unique_ptr<View>& child : children_)
        if (View* found = child->findView(label)) return found;
    return nullptr;
}

void View::addChild(std::unique_ptr<View> child) {
    child->parent_ = this;
    children_.push_back(std::move(child));
}

void View::setHidden(bool hidden) {
    if (hidden == hidden_) return;
    hidden_ = hidden;
    invalidate();
}

Cursor View::cursor() const {
    for (const View* v = this; v != nullptr; v = v->parent_)
        if (v->cursor_ != Cursor::inherited) return v->cursor_;
    return Cursor::arrow;
}

void View::invalidate() {
    OrlPixels::IntRect r = pixelRect();
    if (!animation_.pose().atRest) {
        // A moved, turned or grown view may stand anywhere around its place:
        // its circle's square, moved by the offset, and its place itself.
        const AnimationPose p = animation_.pose();
        const double cx = rect_.left + rect_.width / 2 + p.offsetX, cy = rect_.top + rect_.height / 2 + p.offsetY;
        const double half = std::hypot(rect_.width, rect_.height) / 2 * std::max(1.0, std::abs(p.zoom)) + 2;
        const OrlPixels::IntRect around(int(std::floor(cx - half)), int(std::floor(cy - half)),
                                        int(std::ceil(2 * half)) + 1, int(std::ceil(2 * half)) + 1);
        r = unionOf(r, around);
    }
    editor_.invalidate(r);
}

// The subtree is drawn into a block of its own at rest, then onto the
// surface through the pose: zoom and rotation about the view's centre,
// the offset, and the alpha as a byte.
void View::drawAnimated(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip, const AnimationPose& pose) {
    if (pose.drawsNothing || pose.alpha <= 0) return;
    const OrlPixels::IntRect own = pixelRect();
    if (own.isEmpty()) return;
    std::vector<OrlPixels::Pixel> pixels(std::size_t(own.width) * std::size_t(own.height), 0u);
    OrlPixels::Surface offscreen(pixels.data(), own.width, own);
    const OrlPixels::PixelBlock block{pixels.data(), own.width, own.width, own.height, false};
    ViewAnimation resting = std::exchange(animation_, ViewAnimation());
    drawTree(offscreen, own);
    animation_ = std::move(resting);
    const double cx = own.width / 2.0, cy = own.height / 2.0;
    const OrlPixels::AffineTransformation place =
        OrlPixels::AffineTransformation::translation(-cx, -cy)
            .then(OrlPixels::AffineTransformation::scaling(pose.zoom, pose.zoom))
            .then(OrlPixels::AffineTransformation::rotation(pose.rotation))
            .then(OrlPixels::AffineTransformation::translation(own.left + cx + pose.offsetX, own.top + cy + pose.offsetY));
    OrlPixels::TransformedRaster moved(block, place, false);
    OrlPixels::Surface target = surface.clipped(clip);
    if (pose.alpha >= 256) {
        target.draw(moved);
    } else {
        OrlPixels::SolidMask alpha(OrlPixels::Coverage(std::min(pose.alpha, 255)));
        OrlPixels::MaskedRaster faded(moved, alpha);
        target.draw(faded);
    }
}

std::unique_ptr<View> View::removeChild(View& child) {
    for (auto it = children_.begin(); it != children_.end(); ++it)
        if (it->get() == &child) {
            std::unique_ptr<View> taken = std::move(*it);
            children_.erase(it);
            taken->parent_ = nullptr;
            return taken;
        }
    return nullptr;
}

void View::promoteChild(View& child) {
    auto it = std::find_if(children_.begin(), children_.end(), [&](const auto& c) { return c.get() == &child; });
    if (it == children_.end()) return;
    std::rotate(it, it + 1, children_.end());
}

bool View::fireTrigger(std::string_view name) {
    bool answered = false;
    // Copies: an action may close this view or change its triggers.
    const std::vector<Trigger> entries = triggers_;
    for (const Trigger& t : entries) {
        if (!t.answers(name)) continue;
        answered = true;
        editor_.actions().perform(*this, withTriggerName(t.action, name), withTriggerName(t.params, name), true);
    }
    return answered;
}

void View::queueDelayed(std::int64_t due, std::string label, std::string action, std::string params, bool alerts) {
    static std::uint64_t order = 0;
    delayed_.push_back(Delayed{due, ++order, std::move(label), std::move(action), std::move(params), alerts});
    editor_.wakeAt(due);
}

void View::cancelDelayed(std::string_view label) {
    std::erase_if(delayed_, [&](const Delayed& d) { return d.label == label; });
}

void View::animate(const AnimationRequest& request) {
    invalidate();
    animation_.start(request, editor_.now());
    invalidate();
    editor_.wakeAt(animation_.nextTick());
}

void View::askForTicks(double perSecond) {
    tickInterval_ = perSecond > 0 ? 1000.0 / std::min(perSecond, 1000.0) : 0;
    if (tickInterval_ > 0) {
        nextOwnTick_ = double(editor_.now()) + tickInterval_;
        editor_.wakeAt(std::int64_t(std::ceil(nextOwnTick_)));
    }
}

std::int64_t View::tick(std::int64_t now) {
    // Due delayed actions in the order they were queued. Each may close
    // views, this one too: a closed view is retired and runs nothing more.
    for (;;) {
        if (retired_) return INT64_MAX;
        auto due = delayed_.end();
        for (auto it = delayed_.begin(); it != delayed_.end(); ++it)
            if (it->due <= now && (due == delayed_.end() || it->order < due->order)) due = it;
        if (due == delayed_.end()) break;
        const Delayed d = std::move(*due);
        delayed_.erase(due);
        try {
            editor_.actions().perform(*this, d.action, d.params, d.alerts);
        } catch (...) {
            // A delayed action without alerts has no caller to tell.
        }
    }
    if (animation_.running()) {
        invalidate();
        const bool ended = animation_.advance(now);
        invalidate();
        if (ended) {
            const AnimationRequest& r = animation_.request();
            const std::string action = r.finallyAction, params = r.finallyParams;
            if (!action.empty()) editor_.actions().perform(*this, action, params, true);
        }
    }
    if (retired_) return INT64_MAX;
    if (tickInterval_ > 0 && double(now) >= nextOwnTick_) {
        while (double(now) >= nextOwnTick_) nextOwnTick_ += tickInterval_;
        idle(now);
    }
    return nextTick();
}

std::int64_t View::nextTick() const {
    if (retired_) return INT64_MAX;
    std::int64_t next = INT64_MAX;
    for (const Delayed& d : delayed_) next = std::min(next, d.due);
    if (animation_.running()) next = std::min(next, animation_.nextTick());
    if (tickInterval_ > 0) next = std::min(next, std::int64_t(std::ceil(nextOwnTick_)));
    return next;
}

void View::retireTree() {
    retired_ = true;
    delayed_.clear();
    animation_ = ViewAnimation();
    tickInterval_ = 0;
    for (const std::unique_ptr<View>& child : children_) child->retireTree();
}

}  // namespace Fomal
