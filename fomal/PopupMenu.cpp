#include "fomal/PopupMenu.h"

#include <algorithm>

#include "fomal/EditorCore.h"
#include "fomal/LayoutValues.h"
#include "fomal/PanelDrawing.h"
#include "fomal/RectangleView.h"

namespace Fomal {

namespace {

constexpr int ROW_HEIGHT = 18;
constexpr int SEPARATOR_HEIGHT = 7;
constexpr int MARK_WIDTH = 18;    // room for the check mark
constexpr int ARROW_WIDTH = 18;   // room for a submenu's arrow
constexpr int MIN_WIDTH = 90;

constexpr OrlPixels::Pixel MENU_COLOR = DIALOG_FACE;
constexpr OrlPixels::Pixel EDGE_COLOR = DIALOG_EDGE;
constexpr OrlPixels::Pixel SELECTED_COLOR = 0xFF3C6E8Cu;
constexpr OrlPixels::Pixel INK = DIALOG_INK;
constexpr OrlPixels::Pixel GREY_INK = 0xFF9A968Cu;
constexpr OrlPixels::Pixel SELECTED_INK = 0xFFFFFFFFu;

}  // namespace

std::string menuTitle(std::string_view title) {
    std::string out;
    for (std::size_t i = 0; i < title.size(); ++i) {
        if (title[i] == '&') {
            if (i + 1 < title.size() && title[i + 1] == '&') {
                out += '&';
                ++i;
            }
            continue;
        }
        out += title[i];
    }
    return out;
}

PopupMenu::PopupMenu(EditorCore& editor, View& target, std::vector<PopupItem> items, float x, float y)
    : View(ViewBuild{Object(), RectF{0, 0, float(EditorCore::WIDTH), float(EditorCore::HEIGHT)}, editor}),
      core_(editor),
      target_(&target),
      targetLife_(target.lifeToken()),
      items_(std::move(items)),
      font_(readFont("{ size: 9 }")) {
    int width = MIN_WIDTH, height = 2;
    for (const PopupItem& item : items_) {
        height += item.separator() ? SEPARATOR_HEIGHT : ROW_HEIGHT;
        if (!item.separator())
            width = std::max(width, MARK_WIDTH + font_.font->measure(menuTitle(item.title)).width + ARROW_WIDTH);
    }
    width = std::min(width, EditorCore::WIDTH);
    height = std::min(height, EditorCore::HEIGHT);
    // Kept on the panel.
    int left = std::clamp(int(x), 0, EditorCore::WIDTH - width);
    int top = std::clamp(int(y), 0, EditorCore::HEIGHT - height);
    box_ = OrlPixels::IntRect(left, top, width, height);
    int rowTop = top + 1;
    for (const PopupItem& item : items_) {
        const int h = item.separator() ? SEPARATOR_HEIGHT : ROW_HEIGHT;
        rows_.emplace_back(left + 1, rowTop, width - 2, h);
        rowTop += h;
    }
}

void PopupMenu::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    fillBox(surface, rectOf(box_), MENU_COLOR);
    OrlPixels::Pen pen;
    pen.stroke = 1;
    pen.color = EDGE_COLOR;
    drawFrame(surface, rectOf(box_), pen, OrlPixels::NORMAL_MODE);
    for (std::size_t i = 0; i < items_.size(); ++i) {
        const PopupItem& item = items_[i];
        const OrlPixels::IntRect& r = rows_[i];
        if (item.separator()) {
            fillBox(surface, RectF{float(r.left + 4), float(r.top + SEPARATOR_HEIGHT / 2), float(r.width - 8), 1.0f},
                    EDGE_COLOR);
            continue;
        }
        const bool selected = int(i) == selected_ && item.enabled;
        if (selected) fillBox(surface, rectOf(r), SELECTED_COLOR);
        const OrlPixels::Pixel ink = selected ? SELECTED_INK : item.enabled ? INK : GREY_INK;
        const int ty = r.top + (ROW_HEIGHT - font_.font->lineHeight()) / 2;
        if (item.checked) font_.font->draw(surface, "x", r.left + 6, ty, ink);
        font_.font->draw(surface, menuTitle(item.title), r.left + MARK_WIDTH, ty, ink);
        if (!item.items.empty()) font_.font->draw(surface, ">", r.right() - ARROW_WIDTH + 6, ty, ink);
    }
}

int PopupMenu::rowAt(int x, int y) const {
    for (std::size_t i = 0; i < rows_.size(); ++i)
        if (rows_[i].contains(x, y)) return int(i);
    return -1;
}

void PopupMenu::select(int row) {
    if (row == selected_) return;
    if (selected_ >= 0) invalidate();
    selected_ = row;
    invalidate();
}

bool PopupMenu::mouseDown(const MouseEvent& e) {
    if (!box_.contains(e.x, e.y)) {
        // Outside this menu: a menu it came from may take the press.
        const auto& open = core_.overlay();
        for (std::size_t i = open.size(); i-- > 0;) {
            auto* menu = dynamic_cast<PopupMenu*>(open[i].get());
            if (menu != nullptr && menu != this && menu->box().contains(e.x, e.y)) {
                while (core_.overlay().back().get() != menu) core_.closeOverlay(*core_.overlay().back());
                return menu->mouseDown(e);
            }
        }
        core_.closeMenus();
        return false;
    }
    pressedInside_ = true;
    select(rowAt(e.x, e.y));
    return true;
}

void PopupMenu::mouseMove(const MouseEvent& e) { select(rowAt(e.x, e.y)); }

void PopupMenu::mouseUp(const MouseEvent& e) {
    const int row = rowAt(e.x, e.y);
    if (pressedInside_ && row >= 0) pick(std::size_t(row));
    pressedInside_ = false;
}

bool PopupMenu::keyDown(const KeyEvent& e) {
    if (e.name == "escape") {
        core_.closeOverlay(*this);
        return true;
    }
    if (e.name == "down" || e.name == "up") {
        const int n = int(items_.size());
        int row = selected_;
        for (int step = 0; step < n; ++step) {
            row = e.name == "down" ? (row + 1) % n : (row - 1 + n) % n;
            if (!items_[std::size_t(row)].separator()) break;
        }
        select(row);
        return true;
    }
    if (e.name == "return" && selected_ >= 0) {
        pick(std::size_t(selected_));
        return true;
    }
    return false;
}

bool PopupMenu::choose(std::string_view title) {
    for (std::size_t i = 0; i < items_.size(); ++i)
        if (!items_[i].separator() && items_[i].enabled && menuTitle(items_[i].title) == title) {
            pick(i);
            return true;
        }
    return false;
}

void PopupMenu::pick(std::size_t row) {
    const PopupItem item = items_[row];
    if (item.separator() || !item.enabled) return;
    View* target = !targetLife_.expired() && !target_->retired() ? target_ : core_.root();
    if (!item.items.empty()) {
        select(int(row));
        core_.openOverlay(std::make_unique<PopupMenu>(core_, *target, item.items, float(rows_[row].right() - 4),
                                                      float(rows_[row].top)));
        return;
    }
    core_.closeMenus();
    if (target != nullptr) core_.actions().popupChosen(*target, item);
}

}  // namespace Fomal
