// The controller number of one MIDI function on the controller overlay.
// The label names the function ("ccTuning" for Tuning). A click clears the
// function's controller and listens: the plate lights up and a question
// mark blinks until a controller is moved; dragging up or down changes the
// number by one every few pixels. The number is written with `font` on
// the `film`'s plate (frames: at rest, listening), aligned and offset as a
// caption.
#pragma once

#include <optional>
#include <string>

#include "fomal/View.h"
#include "pixels/Film.h"
#include "pixels/FontSpecification.h"
#include "pixels/TextLayout.h"

namespace views {

class MidiCCView : public Fomal::View {
public:
    // Pixels of vertical movement for one step of the number.
    static constexpr int DRAG_STEP = 4;

    explicit MidiCCView(const Fomal::ViewBuild& build);

    bool takesMouse() const override { return true; }
    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    bool mouseDown(const Fomal::MouseEvent& e) override;
    void mouseMove(const Fomal::MouseEvent& e) override;
    void mouseUp(const Fomal::MouseEvent& e) override;
    void idle(std::int64_t now) override;
    void refreshState() override;
    std::string valueText() const override;

    int function() const { return function_; }
    bool learning() const;
    // The text on the plate now: the number, "-" for none, "?" (blinking)
    // while listening.
    std::string shownText() const;

private:
    int function_ = -1;
    std::optional<OrlPixels::Film> film_;
    double blinkRate_ = 500;  // ms a blink phase lasts
    OrlPixels::FontSpecification font_;
    OrlPixels::TextAlign align_ = OrlPixels::TextAlign::center;
    Fomal::PointF offset_{0, 0};

    bool blinkOn_ = true;
    bool shownLearning_ = false;
    int shownController_ = -1;
    // A press: where it began and the number then; whether it has moved far
    // enough to be a drag.
    int pressY_ = 0;
    int pressController_ = -1;
    bool dragged_ = false;
};

// The index of a MIDI function from a `midiCC` label; fails with the
// layout messages.
int midiFunctionOfLabel(std::string_view label);

}  // namespace views
