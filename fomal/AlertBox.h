// An alert as the panel draws it where the platform has no message box of
// its own: the panel dimmed, a box with the title, the text broken into
// lines, and a row of buttons. It is modal: every press is its own. The
// chosen button closes it, then its reaction runs on the target.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "fomal/ActionDispatcher.h"
#include "fomal/View.h"
#include "pixels/FontSpecification.h"

namespace Fomal {

class EditorCore;

class AlertBox : public View {
public:
    AlertBox(EditorCore& editor, View* target, const AlertRequest& alert, std::string shownText);

    bool takesMouse() const override { return true; }
    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    bool mouseDown(const MouseEvent& e) override;
    void mouseUp(const MouseEvent& e) override;
    // Return is the default button, escape the one that backs out.
    bool keyDown(const KeyEvent& e) override;

    // The button with that title ("OK", "Cancel", ...) or word ("ok").
    bool choose(std::string_view title);
    const AlertRequest& request() const { return alert_; }
    const std::string& shownText() const { return shownText_; }

private:
    struct Button {
        std::string word;
        OrlPixels::IntRect box;
    };
    void answer(const std::string& word);
    const Button* buttonAt(int x, int y) const;

    EditorCore& core_;
    View* target_;
    std::weak_ptr<const char> targetLife_;
    AlertRequest alert_;
    std::string shownText_;
    OrlPixels::FontSpecification titleFont_, textFont_;
    std::vector<std::string> lines_;
    OrlPixels::IntRect box_;
    std::vector<Button> buttons_;
    int pressed_ = -1;
};

// The title a button word shows: "ok" is "OK", "cancel" "Cancel", ...
std::string alertButtonTitle(std::string_view word);

// A text broken into lines no wider than `width`: at line ends, and at
// blanks where a line would grow too wide (a word wider than the line
// stands alone).
std::vector<std::string> wrapText(const OrlPixels::Font& font, std::string_view text, int width);

}  // namespace Fomal
