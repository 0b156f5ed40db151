#include "fomal/AlertBox.h"

#include <algorithm>

#include "fomal/EditorCore.h"
#include "fomal/LayoutValues.h"
#include "fomal/PanelDrawing.h"
#include "fomal/RectangleView.h"

namespace Fomal {

namespace {

struct ButtonTitle {
    std::string_view word, title;
};
constexpr ButtonTitle BUTTON_TITLES[] = {
    {"ok", "OK"},       {"cancel", "Cancel"}, {"yes", "Yes"},       {"no", "No"},
    {"retry", "Retry"}, {"abort", "Abort"},   {"ignore", "Ignore"},
};

// The box's measures, in pixels.
constexpr int BOX_WIDTH = 320;
constexpr int PADDING = 14;
constexpr int BUTTON_WIDTH = 72;
constexpr int BUTTON_HEIGHT = 22;
constexpr int BUTTON_GAP = 8;
constexpr int LINE_GAP = 2;

constexpr OrlPixels::Pixel BOX_COLOR = DIALOG_FACE;
constexpr OrlPixels::Pixel EDGE_COLOR = DIALOG_EDGE;
constexpr OrlPixels::Pixel INK = DIALOG_INK;

}  // namespace

std::string alertButtonTitle(std::string_view word) {
    for (const ButtonTitle& b : BUTTON_TITLES)
        if (b.word == word) return std::string(b.title);
    return std::string(word);
}

std::vector<std::string> wrapText(const OrlPixels::Font& font, std::string_view text, int width) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view paragraph = text.substr(start, end - start);
        std::string line;
        std::size_t i = 0;
        while (i <= paragraph.size()) {
            std::size_t blank = paragraph.find(' ', i);
            if (blank == std::string_view::npos) blank = paragraph.size();
            const std::string_view word = paragraph.substr(i, blank - i);
            std::string longer = line.empty() ? std::string(word) : line + " " + std::string(word);
            if (!line.empty() && font.measure(longer).width > width) {
                lines.push_back(line);
                line = std::string(word);
            } else {
                line = std::move(longer);
            }
            i = blank + 1;
        }
        lines.push_back(line);
        start = end + 1;
    }
    return lines;
}

AlertBox::AlertBox(EditorCore& editor, View* target, const AlertRequest& alert, std::string shownText)
    : View(ViewBuild{Object(), RectF{0, 0, float(EditorCore::WIDTH), float(EditorCore::HEIGHT)}, editor}),
      core_(editor),
      target_(target),
      targetLife_(target != nullptr ? target->lifeToken() : std::weak_ptr<const char>()),
      alert_(alert),
      shownText_(std::move(shownText)),
      titleFont_(readFont("{ fnt: \"segoe14b\" }")),
      textFont_(readFont("{ size: 9 }")) {
    titleFont_.color = INK;
    textFont_.color = INK;
    lines_ = wrapText(*textFont_.font, shownText_, BOX_WIDTH - 2 * PADDING);
    const int lineHeight = textFont_.font->lineHeight() + LINE_GAP;
    const int height = PADDING + titleFont_.font->lineHeight() + 6 + int(lines_.size()) * lineHeight + PADDING +
                       BUTTON_HEIGHT + PADDING;
    const int boxHeight = std::min(height, EditorCore::HEIGHT - 16);
    box_ = OrlPixels::IntRect((EditorCore::WIDTH - BOX_WIDTH) / 2, (EditorCore::HEIGHT - boxHeight) / 2, BOX_WIDTH,
                              boxHeight);
    // Buttons stand at the lower right, in the order of their words.
    int x = box_.right() - PADDING - int(alert_.buttons.size()) * (BUTTON_WIDTH + BUTTON_GAP) + BUTTON_GAP;
    const int y = box_.bottom() - PADDING - BUTTON_HEIGHT;
    for (const std::string& word : alert_.buttons) {
        buttons_.push_back(Button{word, OrlPixels::IntRect(x, y, BUTTON_WIDTH, BUTTON_HEIGHT)});
        x += BUTTON_WIDTH + BUTTON_GAP;
    }
}

void AlertBox::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    fillBox(surface, rect(), DIALOG_DIMMING);
    fillBox(surface, rectOf(box_), BOX_COLOR);
    frameBox(surface, box_, EDGE_COLOR);
    int y = box_.top + PADDING;
    titleFont_.font->draw(surface, alert_.title, box_.left + PADDING, y, titleFont_.color);
    y += titleFont_.font->lineHeight() + 6;
    const int lineHeight = textFont_.font->lineHeight() + LINE_GAP;
    for (const std::string& line : lines_) {
        if (y + lineHeight > box_.bottom() - PADDING - BUTTON_HEIGHT) break;
        textFont_.font->draw(surface, line, box_.left + PADDING, y, textFont_.color);
        y += lineHeight;
    }
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        const Button& b = buttons_[i];
        fillBox(surface, rectOf(b.box), int(i) == pressed_ ? DIALOG_BUTTON_PRESSED : DIALOG_BUTTON);
        // The default button has a heavier edge.
        frameBox(surface, b.box, EDGE_COLOR);
        if (b.word == alert_.defaultButton)
            frameBox(surface, OrlPixels::IntRect(b.box.left + 1, b.box.top + 1, b.box.width - 2, b.box.height - 2),
                     EDGE_COLOR);
        const std::string title = alertButtonTitle(b.word);
        const int w = textFont_.font->measure(title).width;
        const int ty = b.box.top + (b.box.height - textFont_.font->lineHeight()) / 2;
        textFont_.font->draw(surface, title, b.box.left + (b.box.width - w) / 2, ty, textFont_.color);
    }
}

const AlertBox::Button* AlertBox::buttonAt(int x, int y) const {
    for (const Button& b : buttons_)
        if (b.box.contains(x, y)) return &b;
    return nullptr;
}

bool AlertBox::mouseDown(const MouseEvent& e) {
    const Button* b = buttonAt(e.x, e.y);
    pressed_ = b != nullptr ? int(b - buttons_.data()) : -1;
    invalidate();
    return true;
}

void AlertBox::mouseUp(const MouseEvent& e) {
    const Button* b = buttonAt(e.x, e.y);
    const int was = pressed_;
    pressed_ = -1;
    invalidate();
    if (b != nullptr && int(b - buttons_.data()) == was) answer(b->word);
}

bool AlertBox::keyDown(const KeyEvent& e) {
    if (e.name == "return") {
        answer(alert_.defaultButton);
        return true;
    }
    if (e.name == "escape") {
        for (std::string_view out : {"cancel", "no", "abort", "ok"})
            if (std::find(alert_.buttons.begin(), alert_.buttons.end(), out) != alert_.buttons.end()) {
                answer(std::string(out));
                return true;
            }
    }
    return false;
}

bool AlertBox::choose(std::string_view title) {
    for (const Button& b : buttons_)
        if (alertButtonTitle(b.word) == title || b.word == title) {
            answer(b.word);
            return true;
        }
    return false;
}

void AlertBox::answer(const std::string& word) {
    // Closed first: the reaction may open another alert.
    const AlertRequest alert = alert_;
    View* target = !targetLife_.expired() && target_ != nullptr && !target_->retired() ? target_ : core_.root();
    core_.closeOverlay(*this);
    if (target != nullptr) core_.actions().alertAnswered(*target, alert, word);
}

}  // namespace Fomal
