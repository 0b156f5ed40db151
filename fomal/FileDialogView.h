// The open and save dialog as the panel draws it where the platform has
// none of its own: the panel dimmed, a box with the title, the folder, a
// list of its folders and matching files, the file name to save under, the
// file types, and the buttons. It is modal, like the panel's alerts.
//
// A click on a folder enters it, ".." goes up; a click on a file selects
// it, a second click on it takes it. The keys: up and down move the
// selection, return takes it, escape cancels, and when saving, typed
// characters and backspace edit the name. Saving over a file asks first:
// the status line says so and the button reads "Replace".
#pragma once

#include <string>
#include <vector>

#include "fomal/FileDialog.h"
#include "fomal/View.h"
#include "pixels/FontSpecification.h"
#include "platform/OrlFiles/Path.h"

namespace Fomal {

class EditorCore;

class FileDialogView : public View {
public:
    // Rows the list shows at once.
    static constexpr int VISIBLE_ROWS = 14;

    FileDialogView(EditorCore& editor, FileDialogRequest request, FileChosen chosen);

    bool takesMouse() const override { return true; }
    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    bool mouseDown(const MouseEvent& e) override;
    void mouseUp(const MouseEvent& e) override;
    bool keyDown(const KeyEvent& e) override;

    // As a click: a button by its title ("Open", "Save", "Replace",
    // "Cancel"), an entry of the list by the name it shows, or a file type.
    bool choose(std::string_view title);

    // What the dialog shows now, for tests.
    const OrlFiles::Path& folder() const { return folder_; }
    const std::string& fileName() const { return name_; }
    const std::string& status() const { return status_; }
    std::vector<std::string> entryNames() const;

private:
    struct Entry {
        std::string shown;  // "..", "Folder/", "Deep Sea.tdrn"
        OrlFiles::Path path;
        bool folder = false;
    };
    struct Button {
        std::string title;
        OrlPixels::IntRect box;
    };

    void enter(const OrlFiles::Path& folder);
    void select(int index);
    void activate(int index);
    void confirm();
    void cancel();
    void finish(const std::string& path);
    void editName(std::string name);
    void layoutButtons();
    std::vector<FileFilter> filters() const;
    int rowAt(int x, int y) const;
    OrlPixels::IntRect rowBox(int row) const;

    EditorCore& core_;
    FileDialogRequest request_;
    FileChosen chosen_;
    OrlPixels::FontSpecification titleFont_, textFont_;
    OrlPixels::IntRect box_, list_, scroll_, nameBox_, typeBox_;
    OrlFiles::Path folder_;
    std::vector<Entry> entries_;
    std::vector<Button> buttons_;
    std::size_t filter_ = 0;
    int selected_ = -1;
    int top_ = 0;
    int pressedButton_ = -1;
    std::string name_;
    std::string status_;
    std::string replacing_;  // the path a second "Save" replaces
};

}  // namespace Fomal
