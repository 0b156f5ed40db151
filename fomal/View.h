// A view: one rectangle of the panel with its children, built from one
// object of a layout. Common keys, read for every type: `bounds` (in the
// parent's terms; default the parent's whole rectangle), `label`, `hidden`,
// `thru` (mouse events pass to what lies under it), `cursor` and `hint`.
//
// Children are owned by their parent in layout order; the last stands on
// top. Views draw in panel coordinates into the editor's surface.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fomal/Cursor.h"
#include "fomal/NotationNames.h"
#include "fomal/Trigger.h"
#include "fomal/ViewAnimation.h"
#include "fomal/ViewEvents.h"
#include "pixels/IntRect.h"
#include "pixels/Surface.h"

namespace Fomal {

class EditorServices;

// A layout number held within the panel's reach: far beyond it, or no
// number at all (NaN), cannot be drawn and is kept from every pixel sum.
inline float tamed(float v) { return v > 1e6f ? 1e6f : v < -1e6f ? -1e6f : v == v ? v : 0.0f; }
inline PointF tamed(PointF p) { return {tamed(p.x), tamed(p.y)}; }

// What building one view gets: its layout object, the panel rectangle of
// its parent, and the editor's services.
struct ViewBuild {
    const Object& keys;
    RectF parentRect;  // in panel coordinates
    EditorServices& editor;
};

class View {
public:
    explicit View(const ViewBuild& build);
    View(const View&) = delete;
    View& operator=(const View&) = delete;
    virtual ~View() = default;

    // The view's own picture; its children are drawn after it.
    virtual void draw(OrlPixels::Surface&, const OrlPixels::IntRect& /*clip*/) {}
    // Whether a press on the view, where no child takes it, is its own.
    virtual bool takesMouse() const { return false; }
    // Whether a panel point is on the part of the view that takes the
    // mouse: its rectangle, or less of it (a button's `clickRect`, a
    // slider's cap).
    virtual bool hitsAt(int x, int y) const { return pixelRect().contains(x, y); }

    // Mouse events. A press that the view answers with true captures the
    // mouse: the moves and the release go to the view until the release,
    // also outside its bounds.
    virtual bool mouseDown(const MouseEvent&) { return false; }
    virtual void mouseMove(const MouseEvent&) {}
    virtual void mouseUp(const MouseEvent&) {}
    // The mouse over the view with no button held (panel coordinates),
    // and leaving it for another view.
    virtual void hover(const MouseEvent&) {}
    virtual void hoverEnds() {}
    // The view with focus gets the keys; true if it used the key.
    virtual bool keyDown(const KeyEvent&) { return false; }
    // The editor's idle tick, for views that asked for one (askForTicks).
    virtual void idle(std::int64_t /*now*/) {}
    // Recomputes the enabled and checked states that actions give the view.
    virtual void refreshState() {}
    // The display text of the value the view shows, for `^X` in its hint.
    virtual std::string valueText() const { return {}; }
    // Actions that belong to views of a kind (a page of a bubble, the
    // growth of the plant): whether this view answers `action`, and doing it.
    virtual bool answersAction(std::string_view /*action*/) const { return false; }
    virtual bool canPerformOwn(std::string_view /*action*/, std::string_view /*params*/) { return false; }
    virtual void performOwn(std::string_view /*action*/, std::string_view /*params*/) {}

    // Draws the view and its children within `clip`; hidden subtrees are skipped.
    void drawTree(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip);
    // The topmost view under a panel point that takes the mouse, or null.
    View* hitTest(int x, int y);
    // Depth first by label; "/" is the root.
    View* findView(std::string_view label);
    View* root();

    void addChild(std::unique_ptr<View> child);
    // Takes a child out of the tree; the caller owns it then.
    std::unique_ptr<View> removeChild(View& child);
    // Moves a child to the top of its siblings.
    void promoteChild(View& child);
    const std::vector<std::unique_ptr<View>>& children() const { return children_; }
    View* parent() const { return parent_; }

    const RectF& rect() const { return rect_; }       // panel coordinates
    OrlPixels::IntRect pixelRect() const;            // rounded as graphics round
    const std::string& label() const { return label_; }
    const std::string& type() const { return type_; }
    bool hidden() const { return hidden_; }
    void setHidden(bool hidden);
    bool thru() const { return thru_; }
    // The first cursor set on the view or its ancestors.
    Cursor cursor() const;
    // The cursor over a panel point of the view; the view's own by default,
    // less for views whose parts differ (a bubble's clickable words).
    virtual Cursor cursorAt(int /*x*/, int /*y*/) const { return cursor(); }
    // The hint of this view; an empty hint hides those beneath, none lets
    // them show.
    const std::optional<std::string>& hint() const { return hint_; }

    // Asks the editor to redraw the view's rectangle (with what an
    // animation moves it over).
    void invalidate();
    EditorServices& editor() const { return editor_; }

    // Triggers: runs every entry that answers `name`; false if none did.
    bool fireTrigger(std::string_view name);
    const std::vector<Trigger>& triggers() const { return triggers_; }

    // Delayed actions, run from the idle tick when due; closing the view
    // drops them.
    void queueDelayed(std::int64_t due, std::string label, std::string action, std::string params, bool alerts);
    void cancelDelayed(std::string_view label);
    std::size_t delayedCount() const { return delayed_.size(); }

    void animate(const AnimationRequest& request);
    const ViewAnimation& animation() const { return animation_; }

    // Asks for `idle` at the rate given (frames a second; 0 stops).
    void askForTicks(double perSecond);

    // The editor's tick for this view (not its children): due delayed
    // actions, the animation and the view's own timer. Returns the time the
    // view wants its next tick, INT64_MAX for none.
    std::int64_t tick(std::int64_t now);
    std::int64_t nextTick() const;

    // A token that expires with the view, for those that hold on to a
    // view past the event that gave it to them (alerts, menus).
    std::weak_ptr<const char> lifeToken() const { return life_; }

    // Taken out of the tree: the view and its subtree run nothing more.
    void retireTree();
    bool retired() const { return retired_; }

protected:
    // Moves and resizes the view (panel coordinates); the caller redraws
    // what it leaves and what it covers.
    void setRect(const RectF& rect) { rect_ = rect; }

private:
    struct Delayed {
        std::int64_t due;
        std::uint64_t order;
        std::string label, action, params;
        bool alerts;
    };
    void drawAnimated(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip, const AnimationPose& pose);

    EditorServices& editor_;
    View* parent_ = nullptr;
    std::vector<std::unique_ptr<View>> children_;
    RectF rect_;
    std::string type_;
    std::string label_;
    bool hidden_ = false;
    bool thru_ = false;
    Cursor cursor_ = Cursor::inherited;
    std::optional<std::string> hint_;
    std::vector<Trigger> triggers_;
    std::vector<Delayed> delayed_;
    ViewAnimation animation_;
    double tickInterval_ = 0;  // ms; 0 when the view asks for no ticks
    double nextOwnTick_ = 0;
    bool retired_ = false;
    std::shared_ptr<const char> life_ = std::make_shared<const char>('v');
};

}  // namespace Fomal
