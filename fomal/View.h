// A view: one rectangle of the panel with its children, built from one
// object of a layout. Common keys, read for every type: `bounds` (in the
// parent's terms; default the parent's whole rectangle), `label`, `hidden`,
// `thru` (mouse events pass to what lies under it), `cursor` and `hint`.
//
// Children are owned by their parent in layout order; the last stands on
// top. Views draw in panel coordinates into the editor's surface.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fomal/Cursor.h"
#include "fomal/Notation.h"
#include "fomal/NotationReaders.h"
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

    // Draws the view and its children within `clip`; hidden subtrees are skipped.
    void drawTree(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip);
    // The topmost view under a panel point that takes the mouse, or null.
    View* hitTest(int x, int y);
    // Depth first by label; "/" is the root.
    View* findView(std::string_view label);
    View* root();

    void addChild(std::unique_ptr<View> child);
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
    // The hint of this view; an empty hint hides those beneath, none lets
    // them show.
    const std::optional<std::string>& hint() const { return hint_; }

    // Asks the editor to redraw the view's rectangle.
    void invalidate();
    EditorServices& editor() const { return editor_; }

private:
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
};

}  // namespace Fomal
