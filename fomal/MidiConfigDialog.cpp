#include "fomal/MidiConfigDialog.h"

#include <algorithm>

#include "fomal/AlertBox.h"
#include "fomal/EditorCore.h"
#include "fomal/LayoutValues.h"
#include "fomal/PanelDrawing.h"
#include "fomal/PopupMenu.h"
#include "fomal/RectangleView.h"

namespace Fomal {

namespace {

using namespace MidiConfigForm;

// The box's measures, in pixels.
constexpr int BOX_WIDTH = 312;
constexpr int PADDING = 14;
constexpr int ROW_HEIGHT = 22;
constexpr int ROW_GAP = 4;
constexpr int CHECK_ROW = 20;
constexpr int CHECK_SIZE = 11;
constexpr int VALUE_LEFT = 130;  // from the box's left
constexpr int VALUE_WIDTH = 150;
constexpr int ARROW_WIDTH = 20;
constexpr int BUTTON_HEIGHT = 22;
constexpr int BUTTON_GAP = 6;
constexpr int WIDE_BUTTON = 60;
constexpr int NARROW_BUTTON = 72;
constexpr int NOTE_LINES = 2;


}  // namespace

MidiConfigDialog::MidiConfigDialog(EditorCore& editor)
    : View(ViewBuild{Object(), RectF{0, 0, float(EditorCore::WIDTH), float(EditorCore::HEIGHT)}, editor}),
      core_(editor),
      opened_(editor.host().midiConfigText()),
      titleFont_(readFont("{ fnt: \"segoe14b\" }")),
      textFont_(readFont("{ size: 9 }")) {
    titleFont_.color = DIALOG_INK;
    textFont_.color = DIALOG_INK;
    const int line = textFont_.font->lineHeight();
    const int titleHeight = titleFont_.font->lineHeight() + 10;
    rowsTop_ = PADDING + titleHeight;
    noteTop_ = rowsTop_ + STEPPER_COUNT * (ROW_HEIGHT + ROW_GAP) + 4 + 2 * CHECK_ROW + 6;
    const int buttonsTop = noteTop_ + NOTE_LINES * (line + 2) + 10;
    const int height = buttonsTop + 2 * BUTTON_HEIGHT + 10 + PADDING;
    box_ = OrlPixels::IntRect((EditorCore::WIDTH - BOX_WIDTH) / 2, (EditorCore::HEIGHT - height) / 2, BOX_WIDTH,
                              height);
    rowsTop_ += box_.top;
    noteTop_ += box_.top;
    const int upper = box_.top + buttonsTop;
    int x = box_.left + PADDING;
    for (int b = resetButton; b <= defaultButton; ++b) {
        buttons_.emplace_back(x, upper, WIDE_BUTTON + (b == defaultButton ? 26 : 0), BUTTON_HEIGHT);
        x += buttons_.back().width + BUTTON_GAP;
    }
    const int lower = upper + BUTTON_HEIGHT + 10;
    const int right = box_.right() - PADDING;
    buttons_.emplace_back(right - 2 * NARROW_BUTTON - BUTTON_GAP, lower, NARROW_BUTTON, BUTTON_HEIGHT);
    buttons_.emplace_back(right - NARROW_BUTTON, lower, NARROW_BUTTON, BUTTON_HEIGHT);
}

OrlPixels::IntRect MidiConfigDialog::stepperBox(int stepper) const {
    return OrlPixels::IntRect(box_.left + VALUE_LEFT, rowsTop_ + stepper * (ROW_HEIGHT + ROW_GAP), VALUE_WIDTH,
                              ROW_HEIGHT);
}

OrlPixels::IntRect MidiConfigDialog::checkRow(int check) const {
    const int top = rowsTop_ + STEPPER_COUNT * (ROW_HEIGHT + ROW_GAP) + 4 + check * CHECK_ROW;
    return OrlPixels::IntRect(box_.left + PADDING, top, BOX_WIDTH - 2 * PADDING, CHECK_ROW);
}

std::string MidiConfigDialog::shownValue(int stepper) const {
    return positionText(stepper, positionOf(core_.host().midiSettings(), stepper));
}

std::string MidiConfigDialog::note() const { return reassignedNote(core_.host().midiSettings()); }

void MidiConfigDialog::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    const MidiSettings settings = core_.host().midiSettings();
    const OrlPixels::Font& font = *textFont_.font;
    const int line = font.lineHeight();
    const auto centred = [&](const std::string& text, const OrlPixels::IntRect& r) {
        const int w = font.measure(text).width;
        font.draw(surface, text, r.left + (r.width - w) / 2, r.top + (r.height - line) / 2, DIALOG_INK);
    };
    fillBox(surface, rect(), DIALOG_DIMMING);
    fillBox(surface, rectOf(box_), DIALOG_FACE);
    frameBox(surface, box_);
    titleFont_.font->draw(surface, TITLE, box_.left + PADDING, box_.top + PADDING, DIALOG_INK);

    for (int s = 0; s < STEPPER_COUNT; ++s) {
        const OrlPixels::IntRect r = stepperBox(s);
        font.draw(surface, STEPPER_LABELS[s], box_.left + PADDING, r.top + (r.height - line) / 2, DIALOG_INK);
        const OrlPixels::IntRect down(r.left, r.top, ARROW_WIDTH, r.height);
        const OrlPixels::IntRect up(r.right() - ARROW_WIDTH, r.top, ARROW_WIDTH, r.height);
        const OrlPixels::IntRect value(down.right(), r.top, r.width - 2 * ARROW_WIDTH, r.height);
        fillBox(surface, rectOf(down), pressed_ == Hit{Part::stepDown, s} ? DIALOG_BUTTON_PRESSED : DIALOG_BUTTON);
        fillBox(surface, rectOf(up), pressed_ == Hit{Part::stepUp, s} ? DIALOG_BUTTON_PRESSED : DIALOG_BUTTON);
        fillBox(surface, rectOf(value), pressed_ == Hit{Part::stepValue, s} ? DIALOG_BUTTON_PRESSED : DIALOG_FIELD);
        frameBox(surface, down);
        frameBox(surface, up);
        frameBox(surface, r);
        centred("<", down);
        centred(">", up);
        centred(positionText(s, positionOf(settings, s)), value);
    }

    for (int c = 0; c < CHECK_COUNT; ++c) {
        const OrlPixels::IntRect row = checkRow(c);
        const OrlPixels::IntRect square(row.left, row.top + (row.height - CHECK_SIZE) / 2, CHECK_SIZE, CHECK_SIZE);
        fillBox(surface, rectOf(square), pressed_ == Hit{Part::check, c} ? DIALOG_BUTTON_PRESSED : DIALOG_FIELD);
        frameBox(surface, square);
        if (isChecked(settings, c))
            fillBox(surface, rectOf(OrlPixels::IntRect(square.left + 3, square.top + 3, CHECK_SIZE - 6, CHECK_SIZE - 6)),
                    DIALOG_INK);
        font.draw(surface, menuTitle(CHECK_TITLES[c]), square.right() + 7, row.top + (row.height - line) / 2,
                  DIALOG_INK);
    }

    int y = noteTop_;
    const std::vector<std::string> lines = wrapText(font, note(), BOX_WIDTH - 2 * PADDING);
    for (std::size_t i = 0; i < lines.size() && i < std::size_t(NOTE_LINES); ++i) {
        font.draw(surface, lines[i], box_.left + PADDING, y, DIALOG_INK);
        y += line + 2;
    }

    for (int b = 0; b < BUTTON_COUNT; ++b) {
        const OrlPixels::IntRect& r = buttons_[std::size_t(b)];
        fillBox(surface, rectOf(r), pressed_ == Hit{Part::button, b} ? DIALOG_BUTTON_PRESSED : DIALOG_BUTTON);
        frameBox(surface, r);
        // OK, the button of the return key, has a heavier edge.
        if (b == okButton) frameBox(surface, OrlPixels::IntRect(r.left + 1, r.top + 1, r.width - 2, r.height - 2));
        centred(menuTitle(BUTTON_TITLES[b]), r);
    }
}

MidiConfigDialog::Hit MidiConfigDialog::hitAt(int x, int y) const {
    for (int s = 0; s < STEPPER_COUNT; ++s) {
        const OrlPixels::IntRect r = stepperBox(s);
        if (!r.contains(x, y)) continue;
        if (x < r.left + ARROW_WIDTH) return {Part::stepDown, s};
        if (x >= r.right() - ARROW_WIDTH) return {Part::stepUp, s};
        return {Part::stepValue, s};
    }
    for (int c = 0; c < CHECK_COUNT; ++c) {
        // The box and its text take the click.
        const OrlPixels::IntRect row = checkRow(c);
        const int width = CHECK_SIZE + 7 + textFont_.font->measure(menuTitle(CHECK_TITLES[c])).width;
        if (OrlPixels::IntRect(row.left, row.top, width, row.height).contains(x, y)) return {Part::check, c};
    }
    for (int b = 0; b < BUTTON_COUNT; ++b)
        if (buttons_[std::size_t(b)].contains(x, y)) return {Part::button, b};
    return {};
}

bool MidiConfigDialog::mouseDown(const MouseEvent& e) {
    pressed_ = hitAt(e.x, e.y);
    invalidate();
    return true;
}

void MidiConfigDialog::mouseUp(const MouseEvent& e) {
    const Hit hit = hitAt(e.x, e.y);
    const Hit was = pressed_;
    pressed_ = Hit();
    invalidate();
    if (hit.part == Part::none || !(hit == was)) return;
    switch (hit.part) {
        case Part::stepDown: step(hit.index, -1); break;
        case Part::stepValue:
        case Part::stepUp: step(hit.index, 1); break;
        case Part::check: toggle(hit.index); break;
        case Part::button: press(hit.index); break;
        case Part::none: break;
    }
}

bool MidiConfigDialog::keyDown(const KeyEvent& e) {
    if (e.name == "return") {
        ok();
        return true;
    }
    if (e.name == "escape") {
        cancel();
        return true;
    }
    // Modal: no other key reaches the panel below.
    return true;
}

bool MidiConfigDialog::choose(std::string_view title) {
    const std::string shown = menuTitle(title);
    for (int b = 0; b < BUTTON_COUNT; ++b)
        if (menuTitle(BUTTON_TITLES[b]) == shown) {
            press(b);
            return true;
        }
    for (int c = 0; c < CHECK_COUNT; ++c)
        if (menuTitle(CHECK_TITLES[c]) == shown) {
            toggle(c);
            return true;
        }
    for (int s = 0; s < STEPPER_COUNT; ++s) {
        const std::string_view label = STEPPER_LABELS[s];
        if (shown.compare(0, label.size(), label) != 0) continue;
        std::string rest = shown.substr(label.size());
        rest.erase(0, rest.find_first_not_of(' '));
        if (rest.empty() || rest == ">") {
            step(s, 1);
            return true;
        }
        if (rest == "<") {
            step(s, -1);
            return true;
        }
        for (int p = 0; p < valueCount(s); ++p)
            if (positionText(s, p) == rest) {
                setValue(s, p);
                return true;
            }
        return false;
    }
    return false;
}

void MidiConfigDialog::step(int stepper, int by) {
    MidiConfigForm::step(core_.host(), stepper, by);
    invalidate();
}

void MidiConfigDialog::setValue(int stepper, int position) {
    setPosition(core_.host(), stepper, position);
    invalidate();
}

void MidiConfigDialog::toggle(int check) {
    MidiConfigForm::toggle(core_.host(), check);
    invalidate();
}

void MidiConfigDialog::press(int button) {
    EditorCore& core = core_;
    switch (button) {
        case resetButton:
            core.host().resetMidiConfig();
            invalidate();
            break;
        case loadButton:
            core.actions().dialogs().showFileDialog(
                core.host().midiConfigDialog(false),
                [&core](const std::string& path) { core.host().loadMidiConfig(path); });
            break;
        case saveButton:
            core.actions().dialogs().showFileDialog(
                core.host().midiConfigDialog(true),
                [&core](const std::string& path) { core.host().saveMidiConfig(path); });
            break;
        case defaultButton: {
            core.host().makeMidiConfigDefault();
            if (core.root() != nullptr) core.actions().dialogs().showAlert(*core.root(), madeDefaultAlert());
            break;
        }
        case cancelButton: cancel(); break;
        default: ok(); break;
    }
}

void MidiConfigDialog::ok() { core_.closeOverlay(*this); }

void MidiConfigDialog::cancel() {
    // Closed first, so that a text that no longer reads shows its alert
    // over the panel.
    const std::string opened = opened_;
    EditorCore& core = core_;
    core.closeOverlay(*this);
    restore(core.host(), opened);
}

}  // namespace Fomal
