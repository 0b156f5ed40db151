#include "fomal/FileDialogView.h"

#include <algorithm>

#include "fomal/EditorCore.h"
#include "fomal/LayoutValues.h"
#include "fomal/PanelDrawing.h"
#include "fomal/RectangleView.h"
#include "platform/OrlFiles/Files.h"
#include "platform/Utf16.h"

namespace Fomal {

namespace {

// The box's measures, in pixels.
constexpr int BOX_LEFT = 12;
constexpr int BOX_TOP = 30;
constexpr int BOX_WIDTH = 360;
constexpr int BOX_HEIGHT = 452;
constexpr int PADDING = 12;
constexpr int ROW_HEIGHT = 18;
constexpr int SCROLL_WIDTH = 12;
constexpr int FIELD_HEIGHT = 20;
constexpr int BUTTON_WIDTH = 72;
constexpr int BUTTON_HEIGHT = 22;
constexpr int BUTTON_GAP = 8;
constexpr std::size_t NAME_LIMIT = 200;

constexpr OrlPixels::Pixel SELECTED_COLOR = 0xFF9DBB5Cu;
constexpr OrlPixels::Pixel SCROLL_COLOR = 0xFFD8D4C8u;
constexpr OrlPixels::Pixel THUMB_COLOR = 0xFF8E897C;
constexpr OrlPixels::Pixel FOLDER_INK = 0xFF3C5A14u;
constexpr OrlPixels::Pixel STATUS_INK = 0xFF8A2A10u;

// A text cut at its start to fit width, behind "...": a long folder keeps
// its last names in view.
std::string fitLeft(const OrlPixels::Font& font, const std::string& text, int width) {
    if (font.measure(text).width <= width) return text;
    std::size_t cut = 0;
    while (cut < text.size() && font.measure("..." + text.substr(cut)).width > width) {
        ++cut;
        while (cut < text.size() && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) ++cut;
    }
    return "..." + text.substr(cut);
}

// A text cut at its end to fit width, before "...".
std::string fitRight(const OrlPixels::Font& font, const std::string& text, int width) {
    if (font.measure(text).width <= width) return text;
    std::string cut = text;
    while (!cut.empty() && font.measure(cut + "...").width > width) {
        cut.pop_back();
        while (!cut.empty() && (static_cast<unsigned char>(cut.back()) & 0xC0) == 0x80) cut.pop_back();
    }
    return cut + "...";
}

OrlFiles::Path parsedOr(const std::string& text, const OrlFiles::Path& fallback) {
    try {
        if (!text.empty()) return OrlFiles::Path::parse(text);
    } catch (const std::exception&) {
    }
    return fallback;
}

}  // namespace

FileDialogView::FileDialogView(EditorCore& editor, FileDialogRequest request, FileChosen chosen)
    : View(ViewBuild{Object(), RectF{0, 0, float(EditorCore::WIDTH), float(EditorCore::HEIGHT)}, editor}),
      core_(editor),
      request_(std::move(request)),
      chosen_(std::move(chosen)),
      titleFont_(readFont("{ fnt: \"segoe14b\" }")),
      textFont_(readFont("{ size: 9 }")),
      name_(request_.fileName) {
    titleFont_.color = DIALOG_INK;
    textFont_.color = DIALOG_INK;
    box_ = OrlPixels::IntRect(BOX_LEFT, BOX_TOP, BOX_WIDTH, BOX_HEIGHT);
    const int line = textFont_.font->lineHeight();
    const int listTop = box_.top + PADDING + titleFont_.font->lineHeight() + 6 + line + 6;
    list_ = OrlPixels::IntRect(box_.left + PADDING, listTop, BOX_WIDTH - 2 * PADDING - SCROLL_WIDTH,
                               VISIBLE_ROWS * ROW_HEIGHT);
    scroll_ = OrlPixels::IntRect(int(list_.right()), listTop, SCROLL_WIDTH, list_.height);
    int y = int(list_.bottom()) + 8;
    const int labelWidth = 64;
    nameBox_ = OrlPixels::IntRect(box_.left + PADDING + labelWidth, y, BOX_WIDTH - 2 * PADDING - labelWidth, FIELD_HEIGHT);
    if (request_.save) y += FIELD_HEIGHT + 6;
    typeBox_ = OrlPixels::IntRect(box_.left + PADDING + labelWidth, y, BOX_WIDTH - 2 * PADDING - labelWidth, FIELD_HEIGHT);
    layoutButtons();
    // A folder that is gone: the nearest one above it that is there.
    OrlFiles::Path start = parsedOr(request_.folder, OrlFiles::Path::parse(std::string_view("/")));
    while (!start.parts().empty() && !OrlFiles::exists(start)) start = start.parent();
    enter(start);
}

std::vector<FileFilter> FileDialogView::filters() const {
    std::vector<FileFilter> all = request_.filters;
    all.push_back(allFilesFilter());
    return all;
}

void FileDialogView::layoutButtons() {
    buttons_.clear();
    const std::string ok = !replacing_.empty() ? "Replace" : request_.save ? "Save" : "Open";
    const int y = int(box_.bottom()) - PADDING - BUTTON_HEIGHT;
    int x = int(box_.right()) - PADDING - 2 * BUTTON_WIDTH - BUTTON_GAP;
    for (const std::string& title : {ok, std::string("Cancel")}) {
        buttons_.push_back(Button{title, OrlPixels::IntRect(x, y, BUTTON_WIDTH, BUTTON_HEIGHT)});
        x += BUTTON_WIDTH + BUTTON_GAP;
    }
}

void FileDialogView::enter(const OrlFiles::Path& folder) {
    std::vector<Entry> folders, files;
    try {
        const std::vector<FileFilter> all = filters();
        const FileFilter& filter = all[std::min(filter_, all.size() - 1)];
        for (const OrlFiles::FolderEntry& e : OrlFiles::listFolder(folder)) {
            const std::string shown = platform::utf16ToUtf8Lossy(e.path.name());
            if (shown.empty() || shown[0] == '.') continue;  // hidden files stay hidden
            if (e.isFolder) {
                folders.push_back(Entry{shown + "/", e.path, true});
            } else if (std::any_of(filter.patterns.begin(), filter.patterns.end(),
                                   [&](const std::string& p) { return matchesPattern(shown, p); })) {
                files.push_back(Entry{shown, e.path, false});
            }
        }
        status_.clear();
    } catch (const std::exception& x) {
        // A folder that can't be read shows why, and stays open to go up.
        status_ = x.what();
    }
    folder_ = folder;
    entries_.clear();
    if (!folder.parts().empty()) entries_.push_back(Entry{"..", folder.parent(), true});
    entries_.insert(entries_.end(), folders.begin(), folders.end());
    entries_.insert(entries_.end(), files.begin(), files.end());
    selected_ = -1;
    top_ = 0;
    if (!replacing_.empty()) {
        replacing_.clear();
        layoutButtons();
    }
    invalidate();
}

std::vector<std::string> FileDialogView::entryNames() const {
    std::vector<std::string> names;
    for (const Entry& e : entries_) names.push_back(e.shown);
    return names;
}

void FileDialogView::select(int index) {
    selected_ = index;
    if (index >= 0) {
        if (index < top_) top_ = index;
        if (index >= top_ + VISIBLE_ROWS) top_ = index - VISIBLE_ROWS + 1;
        if (request_.save && !entries_[std::size_t(index)].folder) editName(entries_[std::size_t(index)].shown);
    }
    invalidate();
}

void FileDialogView::activate(int index) {
    const Entry entry = entries_[std::size_t(index)];
    if (entry.folder) {
        enter(entry.path);
        return;
    }
    if (selected_ == index) {
        if (!request_.save) name_ = entry.shown;
        confirm();
        return;
    }
    select(index);
    if (!request_.save) name_ = entry.shown;
}

void FileDialogView::editName(std::string name) {
    name_ = std::move(name);
    if (!replacing_.empty()) {
        replacing_.clear();
        status_.clear();
        layoutButtons();
    }
    invalidate();
}

void FileDialogView::confirm() {
    if (!request_.save) {
        if (selected_ >= 0 && entries_[std::size_t(selected_)].folder) {
            enter(entries_[std::size_t(selected_)].path);
            return;
        }
        if (selected_ < 0) return;
        finish(entries_[std::size_t(selected_)].path.utf8());
        return;
    }
    std::string name = name_;
    while (!name.empty() && name.back() == ' ') name.pop_back();
    if (name.empty()) return;
    if (name.find('/') != std::string::npos || name == "." || name == "..") {
        status_ = "A file name can't contain \"/\".";
        invalidate();
        return;
    }
    if (filter_ < request_.filters.size() && !request_.extension.empty() &&
        !matchesPattern(name, "*." + request_.extension))
        name += "." + request_.extension;
    const OrlFiles::Path path = folder_.child(name);
    const std::string text = path.utf8();
    if (OrlFiles::exists(path) && replacing_ != text) {
        replacing_ = text;
        status_ = "\"" + name + "\" exists. Replace it?";
        layoutButtons();
        invalidate();
        return;
    }
    finish(text);
}

void FileDialogView::cancel() { core_.closeOverlay(*this); }

void FileDialogView::finish(const std::string& path) {
    // Closed first: what the choice starts may open an alert.
    const FileChosen chosen = chosen_;
    core_.closeOverlay(*this);
    if (chosen) chosen(path);
}

OrlPixels::IntRect FileDialogView::rowBox(int row) const {
    return OrlPixels::IntRect(list_.left, list_.top + (row - top_) * ROW_HEIGHT, list_.width, ROW_HEIGHT);
}

int FileDialogView::rowAt(int x, int y) const {
    if (!list_.contains(x, y)) return -1;
    const int row = top_ + (y - list_.top) / ROW_HEIGHT;
    return row < int(entries_.size()) ? row : -1;
}

void FileDialogView::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    const OrlPixels::Font& text = *textFont_.font;
    const int line = text.lineHeight();
    fillBox(surface, rect(), DIALOG_DIMMING);
    fillBox(surface, rectOf(box_), DIALOG_FACE);
    frameBox(surface, box_);
    int y = box_.top + PADDING;
    titleFont_.font->draw(surface, request_.title, box_.left + PADDING, y, DIALOG_INK);
    y += titleFont_.font->lineHeight() + 6;
    text.draw(surface, fitLeft(text, folder_.utf8().empty() ? "/" : folder_.utf8(), box_.width - 2 * PADDING),
              box_.left + PADDING, y, DIALOG_INK);

    fillBox(surface, rectOf(list_), DIALOG_FIELD);
    for (int row = top_; row < int(entries_.size()) && row < top_ + VISIBLE_ROWS; ++row) {
        const OrlPixels::IntRect r = rowBox(row);
        if (row == selected_) fillBox(surface, rectOf(r), SELECTED_COLOR);
        const Entry& e = entries_[std::size_t(row)];
        text.draw(surface, fitRight(text, e.shown, r.width - 8), r.left + 4, r.top + (ROW_HEIGHT - line) / 2,
                  e.folder ? FOLDER_INK : DIALOG_INK);
    }
    frameBox(surface, list_);
    // The scroll bar: the thumb shows which part of the list is in view.
    fillBox(surface, rectOf(scroll_), SCROLL_COLOR);
    if (int(entries_.size()) > VISIBLE_ROWS) {
        const int total = int(entries_.size());
        const int thumbTop = scroll_.top + scroll_.height * top_ / total;
        const int thumbHeight = std::max(8, scroll_.height * VISIBLE_ROWS / total);
        fillBox(surface, rectOf(OrlPixels::IntRect(scroll_.left + 2, thumbTop, scroll_.width - 4, thumbHeight)),
                THUMB_COLOR);
    }
    frameBox(surface, scroll_);

    const int labelX = box_.left + PADDING;
    if (request_.save) {
        text.draw(surface, "File name:", labelX, nameBox_.top + (FIELD_HEIGHT - line) / 2, DIALOG_INK);
        fillBox(surface, rectOf(nameBox_), DIALOG_FIELD);
        frameBox(surface, nameBox_);
        const std::string shown = fitLeft(text, name_ + "|", nameBox_.width - 8);
        text.draw(surface, shown, nameBox_.left + 4, nameBox_.top + (FIELD_HEIGHT - line) / 2, DIALOG_INK);
    }
    const std::vector<FileFilter> all = filters();
    text.draw(surface, "Type:", labelX, typeBox_.top + (FIELD_HEIGHT - line) / 2, DIALOG_INK);
    fillBox(surface, rectOf(typeBox_), DIALOG_BUTTON);
    frameBox(surface, typeBox_);
    text.draw(surface, fitRight(text, filterTitle(all[std::min(filter_, all.size() - 1)]), typeBox_.width - 8),
              typeBox_.left + 4, typeBox_.top + (FIELD_HEIGHT - line) / 2, DIALOG_INK);
    if (!status_.empty())
        text.draw(surface, fitRight(text, status_, box_.width - 2 * PADDING), labelX,
                  int(typeBox_.bottom()) + 6, STATUS_INK);

    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        const Button& b = buttons_[i];
        fillBox(surface, rectOf(b.box), int(i) == pressedButton_ ? DIALOG_BUTTON_PRESSED : DIALOG_BUTTON);
        frameBox(surface, b.box);
        if (i == 0) frameBox(surface, OrlPixels::IntRect(b.box.left + 1, b.box.top + 1, b.box.width - 2, b.box.height - 2));
        const int w = text.measure(b.title).width;
        text.draw(surface, b.title, b.box.left + (b.box.width - w) / 2, b.box.top + (b.box.height - line) / 2,
                  DIALOG_INK);
    }
}

bool FileDialogView::mouseDown(const MouseEvent& e) {
    pressedButton_ = -1;
    for (std::size_t i = 0; i < buttons_.size(); ++i)
        if (buttons_[i].box.contains(e.x, e.y)) pressedButton_ = int(i);
    if (pressedButton_ >= 0) {
        invalidate();
        return true;
    }
    const int row = rowAt(e.x, e.y);
    if (row >= 0) {
        activate(row);
    } else if (scroll_.contains(e.x, e.y)) {
        // A press above the middle pages up, below it pages down.
        const int most = std::max(0, int(entries_.size()) - VISIBLE_ROWS);
        top_ = std::clamp(top_ + (e.y < scroll_.top + scroll_.height / 2 ? -VISIBLE_ROWS : VISIBLE_ROWS), 0, most);
        invalidate();
    } else if (typeBox_.contains(e.x, e.y)) {
        filter_ = (filter_ + 1) % filters().size();
        enter(folder_);
    }
    return true;
}

void FileDialogView::mouseUp(const MouseEvent& e) {
    const int was = pressedButton_;
    pressedButton_ = -1;
    if (was < 0) return;
    invalidate();
    if (!buttons_[std::size_t(was)].box.contains(e.x, e.y)) return;
    if (was == 0) confirm();
    else cancel();
}

bool FileDialogView::keyDown(const KeyEvent& e) {
    const int count = int(entries_.size());
    if (e.name == "escape") {
        cancel();
    } else if (e.name == "return" || e.name == "enter") {
        confirm();
    } else if (e.name == "down" && count > 0) {
        select(std::min(selected_ + 1, count - 1));
    } else if (e.name == "up" && count > 0) {
        select(std::max(selected_ - 1, 0));
    } else if (e.name == "pageDown" && count > 0) {
        select(std::min(selected_ + VISIBLE_ROWS, count - 1));
    } else if (e.name == "pageUp" && count > 0) {
        select(std::max(selected_ - VISIBLE_ROWS, 0));
    } else if (e.name == "backspace") {
        if (request_.save && !name_.empty()) {
            std::string name = name_;
            name.pop_back();
            while (!name.empty() && (static_cast<unsigned char>(name.back()) & 0xC0) == 0x80) name.pop_back();
            editName(name);
        } else if (!folder_.parts().empty()) {
            enter(folder_.parent());
        }
    } else if (request_.save && e.character >= 32 && e.character < 127 && name_.size() < NAME_LIMIT) {
        editName(name_ + char(e.character));
    } else {
        return false;
    }
    return true;
}

bool FileDialogView::choose(std::string_view title) {
    for (std::size_t i = 0; i < buttons_.size(); ++i)
        if (buttons_[i].title == title) {
            if (i == 0) confirm();
            else cancel();
            return true;
        }
    for (std::size_t i = 0; i < entries_.size(); ++i)
        if (entries_[i].shown == title || (entries_[i].folder && entries_[i].shown == std::string(title) + "/")) {
            activate(int(i));
            return true;
        }
    const std::vector<FileFilter> all = filters();
    for (std::size_t i = 0; i < all.size(); ++i)
        if (filterTitle(all[i]) == title) {
            filter_ = i;
            enter(folder_);
            return true;
        }
    return false;
}

}  // namespace Fomal
