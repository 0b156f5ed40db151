// The MIDI configuration dialog as the panel draws it: the panel dimmed, a
// box with the channels, the pitch wheel range and the velocity curve as
// steppers, two check boxes, a note of how many controllers are
// reassigned, and the buttons Reset, Load..., Save..., Make Default,
// Cancel and OK. It is modal, like the panel's alerts.
//
// Every change goes to the host at once, so the running instance hears it
// and the host's chunk keeps it; Cancel puts back the configuration as it
// was when the dialog opened, OK closes it keeping what is there. A
// stepper's arrows step its value down or up, a click on the value steps
// it up; past an end it comes round to the other. Return is OK, escape
// Cancel.
#pragma once

#include <string>
#include <vector>

#include "fomal/EditorHost.h"
#include "fomal/MidiConfigForm.h"
#include "fomal/View.h"
#include "pixels/FontSpecification.h"

namespace Fomal {

class EditorCore;

class MidiConfigDialog : public View {
public:
    static constexpr std::string_view TITLE = MidiConfigForm::TITLE;

    explicit MidiConfigDialog(EditorCore& editor);

    bool takesMouse() const override { return true; }
    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    bool mouseDown(const MouseEvent& e) override;
    void mouseUp(const MouseEvent& e) override;
    bool keyDown(const KeyEvent& e) override;

    // As a click, for windows without a mouse: a button or a check box by
    // its title ("OK", "Make Default", "Enable MIDI program changes"; the
    // access key's "&" may stand in it), or a stepper by its label: the
    // label alone steps the value up, the label and "<" or ">" steps it
    // down or up, the label and a value ("Input channel: none",
    // "Velocity curve: hard", "Pitch wheel: 7") sets it.
    bool choose(std::string_view title);

    // The texts the dialog shows now, for tests: a stepper's value, the
    // note of the reassigned controllers.
    std::string shownValue(int stepper) const;
    std::string note() const;
    // The configuration's text when the dialog opened.
    const std::string& openedText() const { return opened_; }

    // The steppers, in order from the top.
    using enum MidiConfigForm::Stepper;
    // Where a stepper stands: its down arrow, its value, its up arrow; a
    // check box's row (0 program changes, 1 branches); a button's box
    // (Reset, Load..., Save..., Make Default, Cancel, OK).
    OrlPixels::IntRect stepperBox(int stepper) const;
    OrlPixels::IntRect checkRow(int check) const;
    OrlPixels::IntRect buttonBox(int button) const { return buttons_.at(std::size_t(button)); }

private:
    enum class Part { none, stepDown, stepValue, stepUp, check, button };
    struct Hit {
        Part part = Part::none;
        int index = -1;
        bool operator==(const Hit&) const = default;
    };

    void step(int stepper, int by);
    void setValue(int stepper, int value);
    void toggle(int check);
    void press(int button);
    void ok();
    void cancel();
    Hit hitAt(int x, int y) const;

    EditorCore& core_;
    std::string opened_;
    OrlPixels::FontSpecification titleFont_, textFont_;
    OrlPixels::IntRect box_;
    int rowsTop_ = 0;
    int noteTop_ = 0;
    std::vector<OrlPixels::IntRect> buttons_;
    Hit pressed_;
};

}  // namespace Fomal
