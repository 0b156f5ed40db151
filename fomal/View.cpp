#include "fomal/View.h"

#include <cmath>

#include "fomal/EditorServices.h"

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
}

OrlPixels::IntRect View::pixelRect() const {
    const int l = rounded(rect_.left), t = rounded(rect_.top);
    return OrlPixels::IntRect(l, t, rounded(rect_.right()) - l, rounded(rect_.bottom()) - t);
}

void View::drawTree(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) {
    if (hidden_) return;
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
    return takesMouse() && pixelRect().contains(x, y) ? this : nullptr;
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

void View::invalidate() { editor_.invalidate(pixelRect()); }

}  // namespace Fomal
