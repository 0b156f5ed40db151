#include "fomal/ButtonView.h"

#include <cmath>

#include "fomal/ActionDispatcher.h"
#include "fomal/CaptionView.h"
#include "fomal/EditorServices.h"
#include "fomal/LayoutValues.h"

namespace Fomal {

namespace {

int rounded(float v) { return int(std::floor(v + 0.5f)); }

}  // namespace

ButtonView::ButtonView(const ViewBuild& build, bool isSwitch)
    : View(build), switch_(isSwitch), actions_(readClickActions(build.keys)) {
    const Object& k = build.keys;
    const OrlPixels::IntRect r = pixelRect();
    image_ = readImageIfGiven(k, "image");
    disabledImage_ = readImageIfGiven(k, "disabledImage");
    icon_ = readImageIfGiven(k, "icon");
    disabledIcon_ = readImageIfGiven(k, "disabledIcon");
    // A film's frames are as large as the button.
    if (k.has("film")) film_.emplace(readImage(k.get("film")), r.width, r.height);
    if (k.has("disabledFilm")) disabledFilm_.emplace(readImage(k.get("disabledFilm")), r.width, r.height);
    buttonOffset_ = tamed(readPoint(k.get("buttonOffset"), buttonOffset_));
    if (k.has("iconOffset")) iconOffset_ = tamed(readPoint(k.get("iconOffset")));
    downOffset_ = tamed(readPoint(k.get("downOffset"), downOffset_));
    if (k.has("clickRect")) {
        RectF c = readRect(k.get("clickRect"), RectF{0, 0, rect().width, rect().height});
        c.left += rect().left;
        c.top += rect().top;
        clickRect_ = c;
    }
    title_ = readString(k.get("title"));
    if (k.has("font")) font_ = readFont(k.get("font"));
    if (k.has("ellipsis")) ellipsis_ = readEllipsis(k.get("ellipsis"));
}

const ClickAction* ButtonView::mainAction() const {
    for (const ClickAction& a : actions_)
        if (a.mask == CLICK_BIT) return &a;
    return actions_.empty() ? nullptr : &actions_.front();
}

bool ButtonView::hitsAt(int x, int y) const {
    if (!clickRect_) return View::hitsAt(x, y);
    const RectF& c = *clickRect_;
    return float(x) >= c.left && float(x) < c.right() && float(y) >= c.top && float(y) < c.bottom();
}

void ButtonView::refreshState() {
    const ClickAction* a = mainAction();
    bool enabled = true, checked = false;
    if (a != nullptr && !a->action.empty()) {
        ActionDispatcher& d = editor().actions();
        enabled = d.canPerform(*this, a->action, a->params);
        if (switch_) checked = d.isChecked(*this, a->action, a->params);
    }
    if (enabled == enabled_ && checked == checked_) return;
    enabled_ = enabled;
    checked_ = checked;
    invalidate();
}

void ButtonView::setPressed(bool pressed) {
    if (pressed == pressed_) return;
    pressed_ = pressed;
    invalidate();
}

// A grey button does not press and its main action does not run; the
// actions of its other clicks still do (the seed sounds and auditions a
// random seed while it cannot be planted).
std::vector<ClickAction> ButtonView::liveActions() const {
    if (enabled_) return actions_;
    std::vector<ClickAction> live;
    const ClickAction* main = mainAction();
    for (const ClickAction& a : actions_)
        if (&a != main) live.push_back(a);
    return live;
}

bool ButtonView::mouseDown(const MouseEvent& e) {
    const std::vector<ClickAction> live = liveActions();
    if (!enabled_ && live.empty()) return false;
    tracking_ = true;
    if (enabled_) setPressed(true);
    performClickActions(*this, live, pressBits(e));
    return !retired();
}

void ButtonView::mouseMove(const MouseEvent& e) {
    if (tracking_ && enabled_) setPressed(hitsAt(e.x, e.y));
}

void ButtonView::mouseUp(const MouseEvent& e) {
    if (!tracking_) return;
    tracking_ = false;
    const bool inside = hitsAt(e.x, e.y);
    setPressed(false);
    performClickActions(*this, liveActions(), releaseBits(e, inside));
}

void ButtonView::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    const OrlPixels::IntRect r = pixelRect();
    const int x = r.left + rounded(buttonOffset_.x), y = r.top + rounded(buttonOffset_.y);
    const std::optional<OrlPixels::Film>& film = !enabled_ && disabledFilm_ ? disabledFilm_ : film_;
    if (film) {
        // Up, down, then for a switch checked up and checked down; a film
        // with fewer frames shows its last for the rest.
        const int frame = (checked_ ? 2 : 0) + (pressed_ ? 1 : 0);
        film->drawFrame(surface, std::min(frame, film->frameCount() - 1), x, y);
    } else {
        const OrlPixels::ImageRef& image = !enabled_ && disabledImage_ ? disabledImage_ : image_;
        if (image) image->draw(surface, x, y);
    }
    const int dx = pressed_ ? rounded(downOffset_.x) : 0, dy = pressed_ ? rounded(downOffset_.y) : 0;
    const OrlPixels::ImageRef& icon = !enabled_ && disabledIcon_ ? disabledIcon_ : icon_;
    if (icon) {
        // Centred on the button unless placed.
        const int ix = iconOffset_ ? r.left + rounded(iconOffset_->x) : r.left + (r.width - icon->width) / 2;
        const int iy = iconOffset_ ? r.top + rounded(iconOffset_->y) : r.top + (r.height - icon->height) / 2;
        icon->draw(surface, ix + dx, iy + dy);
    }
    if (font_ && !title_.empty()) {
        const OrlPixels::Font& f = *font_->font;
        const std::string text = OrlPixels::fitText(f, substituteText(title_, editor().substitution()), r.width, ellipsis_);
        const int tx = OrlPixels::alignedLeft(OrlPixels::TextAlign::center, r.left, r.width, f.measure(text).width);
        const int ty = r.top + (r.height - f.lineHeight()) / 2;
        f.draw(surface, text, tx + dx, ty + dy, font_->color);
    }
}

}  // namespace Fomal
