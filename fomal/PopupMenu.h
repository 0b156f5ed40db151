// A popup menu as the panel draws it where the platform has none of its
// own: a column of entries with separators, grey when their action cannot
// be performed and with a check mark when it is checked; an entry with
// entries of its own opens a submenu beside it. A press outside every
// open menu closes them all.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "fomal/ActionDispatcher.h"
#include "fomal/View.h"
#include "pixels/FontSpecification.h"

namespace Fomal {

class EditorCore;

class PopupMenu : public View {
public:
    PopupMenu(EditorCore& editor, View& target, std::vector<PopupItem> items, float x, float y);

    bool takesMouse() const override { return true; }
    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    bool mouseDown(const MouseEvent& e) override;
    void mouseMove(const MouseEvent& e) override;
    void mouseUp(const MouseEvent& e) override;
    bool keyDown(const KeyEvent& e) override;

    // Picks the entry with that title (access-key marks left out); a grey
    // entry cannot be picked.
    bool choose(std::string_view title);
    const std::vector<PopupItem>& items() const { return items_; }
    const OrlPixels::IntRect& box() const { return box_; }

private:
    int rowAt(int x, int y) const;
    void pick(std::size_t row);
    void select(int row);

    EditorCore& core_;
    View* target_;
    std::weak_ptr<const char> targetLife_;
    std::vector<PopupItem> items_;
    std::vector<OrlPixels::IntRect> rows_;
    OrlPixels::IntRect box_;
    OrlPixels::FontSpecification font_;
    int selected_ = -1;
    bool pressedInside_ = false;
};

// A menu title as shown: `&` marks the access key and goes; `&&` is one `&`.
std::string menuTitle(std::string_view title);

}  // namespace Fomal
