#include "fomal/MidiConfigForm.h"

#include <algorithm>

namespace Fomal::MidiConfigForm {

namespace {

constexpr std::string_view VELOCITY_CURVES[] = {"soft", "standard", "hard"};
constexpr std::string_view NOTE = "(There are ^n MIDI controllers reassigned in this configuration.)";
constexpr std::string_view MADE_DEFAULT = "The current MIDI configuration has been made default.";

}  // namespace

int valueCount(int stepper) {
    switch (stepper) {
        case inputChannel:
        case outputChannel: return 17;
        case pitchWheel: return 13;
        default: return 3;
    }
}

// Channels start with none.
int positionOf(const MidiSettings& s, int stepper) {
    switch (stepper) {
        case inputChannel: return std::clamp(s.inputChannel, -1, 15) + 1;
        case outputChannel: return std::clamp(s.outputChannel, -1, 15) + 1;
        case pitchWheel: return std::clamp(s.pitchWheelRange, 0, 12);
        default: return std::clamp(s.velocityCurve, 0, 2);
    }
}

std::string positionText(int stepper, int position) {
    if (stepper == velocityCurve) return std::string(VELOCITY_CURVES[std::clamp(position, 0, 2)]);
    if (stepper == pitchWheel) return std::to_string(position);
    return position == 0 ? "none" : std::to_string(position);
}

bool isChecked(const MidiSettings& s, int check) { return check == programChanges ? s.programChanges : s.selectWithNotes; }

std::string reassignedNote(const MidiSettings& s) {
    std::string text(NOTE);
    text.replace(text.find("^n"), 2, std::to_string(s.reassignedControllers));
    return text;
}

void setPosition(EditorHost& host, int stepper, int position) {
    MidiSettings s = host.midiSettings();
    switch (stepper) {
        case inputChannel: s.inputChannel = position - 1; break;
        case outputChannel: s.outputChannel = position - 1; break;
        case pitchWheel: s.pitchWheelRange = position; break;
        default: s.velocityCurve = position; break;
    }
    host.changeMidiSettings(s);
}

void step(EditorHost& host, int stepper, int by) {
    const int count = valueCount(stepper);
    const int position = positionOf(host.midiSettings(), stepper);
    setPosition(host, stepper, ((position + by) % count + count) % count);
}

void toggle(EditorHost& host, int check) {
    MidiSettings s = host.midiSettings();
    bool& flag = check == programChanges ? s.programChanges : s.selectWithNotes;
    flag = !flag;
    host.changeMidiSettings(s);
}

void restore(EditorHost& host, const std::string& opened) {
    if (host.midiConfigText() != opened) host.setMidiConfigText(opened);
}

AlertRequest madeDefaultAlert() {
    AlertRequest alert;
    alert.type = "info";
    alert.title = "Tendrane";
    alert.text = std::string(MADE_DEFAULT);
    alert.buttons = {"ok"};
    alert.defaultButton = "ok";
    return alert;
}

}  // namespace Fomal::MidiConfigForm
