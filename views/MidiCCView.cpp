#include "views/MidiCCView.h"

#include <algorithm>
#include <cstdlib>

#include "fomal/EditorHost.h"
#include "fomal/EditorServices.h"
#include "fomal/LayoutValues.h"
#include "patch/MidiConfigText.h"
#include "platform/Exceptions.h"

namespace views {

int midiFunctionOfLabel(std::string_view label) {
    if (label.substr(0, 2) != "cc") throw Exception("midiCC label must start with 'cc'");
    const std::string_view name = label.substr(2);
    for (int f = 0; f < MidiConfigRecord::FUNCTION_COUNT; ++f)
        if (MIDI_FUNCTION_NAMES[f] == name) return f;
    throw Exception("Unknown MIDI function (label): " + std::string(name));
}

MidiCCView::MidiCCView(const Fomal::ViewBuild& build) : View(build) {
    const Fomal::Object& k = build.keys;
    function_ = midiFunctionOfLabel(label());
    const OrlPixels::IntRect r = pixelRect();
    if (k.has("film")) film_.emplace(Fomal::readImage(k.get("film")), r.width, r.height);
    if (k.has("blinkRate")) blinkRate_ = std::max(1.0f, Fomal::readNumber(k.get("blinkRate"), 500.0f));
    font_ = Fomal::readFont(k.get("font"));
    if (k.has("align")) align_ = OrlPixels::parseTextAlign(Fomal::readString(k.get("align")));
    offset_ = Fomal::tamed(Fomal::readPoint(k.get("offset"), Fomal::PointF{0, 0}));
}

bool MidiCCView::learning() const { return editor().host().learningFunction() == function_; }

std::string MidiCCView::valueText() const {
    const int c = editor().host().controllerOf(function_);
    return c >= 0 ? std::to_string(c) : "-";
}

std::string MidiCCView::shownText() const {
    if (learning()) return blinkOn_ ? "?" : "";
    return valueText();
}

void MidiCCView::refreshState() {
    const bool now = learning();
    const int controller = editor().host().controllerOf(function_);
    if (now == shownLearning_ && controller == shownController_) return;
    if (now != shownLearning_) {
        // Listening blinks; a learned or abandoned listen stops it.
        blinkOn_ = true;
        askForTicks(now ? 1000.0 / blinkRate_ : 0.0);
    }
    shownLearning_ = now;
    shownController_ = controller;
    invalidate();
}

void MidiCCView::idle(std::int64_t) {
    if (!learning()) {
        refreshState();
        return;
    }
    blinkOn_ = !blinkOn_;
    invalidate();
}

bool MidiCCView::mouseDown(const Fomal::MouseEvent& e) {
    pressY_ = e.y;
    pressController_ = editor().host().controllerOf(function_);
    dragged_ = false;
    return true;
}

void MidiCCView::mouseMove(const Fomal::MouseEvent& e) {
    const int rise = pressY_ - e.y;
    if (!dragged_ && std::abs(rise) < DRAG_STEP) return;
    if (!dragged_) {
        // A drag ends any listening of this plate.
        dragged_ = true;
        if (learning()) editor().host().stopLearning();
    }
    const int wanted = std::clamp(pressController_ + rise / DRAG_STEP, -1, 127);
    Fomal::EditorHost& host = editor().host();
    if (wanted != host.controllerOf(function_)) host.assignController(function_, wanted);
    refreshState();
}

void MidiCCView::mouseUp(const Fomal::MouseEvent&) {
    if (!dragged_) editor().host().learnController(function_);
    refreshState();
}

void MidiCCView::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    const OrlPixels::IntRect r = pixelRect();
    shownLearning_ = learning();
    shownController_ = editor().host().controllerOf(function_);
    if (film_) film_->drawFrame(surface, shownLearning_ ? 1 : 0, r.left, r.top);
    const std::string text = shownText();
    if (text.empty()) return;
    const OrlPixels::Font& f = *font_.font;
    const int x = OrlPixels::alignedLeft(align_, r.left, r.width, f.measure(text).width) + int(offset_.x);
    const int baseline = r.bottom() + int(offset_.y);
    f.draw(surface, text, x, baseline - f.ascent(), font_.color);
}

}  // namespace views
