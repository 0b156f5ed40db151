#include "fomal/StillHost.h"

#include <cstdio>

#include "platform/Exceptions.h"

namespace Fomal {

namespace {

[[noreturn]] void unavailable(std::string_view what) {
    throw Exception(std::string(what) + " is not available without the plug-in");
}

}  // namespace

double StillHost::controlValue(std::string_view label) const {
    const auto it = controls_.find(label);
    return it == controls_.end() ? 0.5 : it->second;
}

std::string StillHost::controlText(std::string_view label) const {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", controlValue(label));
    return text;
}

int StillHost::controllerOf(int function) const {
    const auto it = controllers_.find(function);
    return it == controllers_.end() ? -1 : it->second;
}

void StillHost::assignController(int function, int controller) {
    for (auto& [f, c] : controllers_)
        if (c == controller) c = -1;
    controllers_[function] = controller;
    ++revision_;
}

void StillHost::learnController(int function) {
    controllers_[function] = -1;
    learning_ = function;
    ++revision_;
}

FileDialogRequest StillHost::patchDialog(bool save) {
    FileDialogRequest request;
    request.save = save;
    request.title = save ? "Save Patch As" : "Open Patch";
    return request;
}
void StillHost::loadPatch(std::string_view, std::string_view, bool) { unavailable("Opening a patch"); }
void StillHost::savePatch(std::string_view) { unavailable("Saving the patch"); }
void StillHost::launch(std::string_view, std::string_view) { unavailable("Opening a file"); }
void StillHost::openURL(std::string_view) { unavailable("Opening a web page"); }

void StillHost::changeMidiSettings(const MidiSettings& settings) {
    midi_ = settings;
    ++revision_;
}
std::string StillHost::midiConfigText() const { unavailable("The MIDI configuration's text"); }
void StillHost::setMidiConfigText(std::string_view) { unavailable("The MIDI configuration's text"); }
void StillHost::resetMidiConfig() { changeMidiSettings(MidiSettings()); }
FileDialogRequest StillHost::midiConfigDialog(bool save) {
    FileDialogRequest request;
    request.save = save;
    request.title = "Tendrane MIDI Config";
    request.filters = {FileFilter{"Quillbrook MIDI Config", {"*.qbmc"}}};
    request.extension = "qbmc";
    return request;
}
void StillHost::loadMidiConfig(std::string_view) { unavailable("Loading a MIDI configuration"); }
void StillHost::saveMidiConfig(std::string_view) { unavailable("Saving the MIDI configuration"); }
void StillHost::makeMidiConfigDefault() { unavailable("A default MIDI configuration"); }

}  // namespace Fomal
