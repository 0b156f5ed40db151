// What the MIDI configuration dialog shows and how its controls change the
// instance's configuration, written once for every window that shows it:
// the dialog the panel draws and the platform's own. Top to bottom: four
// choices (the channels, the pitch wheel range, the velocity curve), two
// check boxes, a note of how many controllers are reassigned, and the
// buttons Reset, Load..., Save..., Make Default, Cancel and OK.
//
// A choice has its values in order; its position is the index of the value
// the settings hold. Every change goes to the host at once, so the running
// instance hears it; Cancel puts back the text the dialog opened with.
#pragma once

#include <string>
#include <string_view>

#include "fomal/ActionDispatcher.h"
#include "fomal/EditorHost.h"

namespace Fomal::MidiConfigForm {

constexpr std::string_view TITLE = "MIDI Config";

enum Stepper { inputChannel, outputChannel, pitchWheel, velocityCurve, STEPPER_COUNT };
constexpr std::string_view STEPPER_LABELS[STEPPER_COUNT] = {"Input channel:", "Output channel:", "Pitch wheel:",
                                                            "Velocity curve:"};

enum Check { programChanges, selectWithNotes, CHECK_COUNT };
// '&' marks the access key.
constexpr std::string_view CHECK_TITLES[CHECK_COUNT] = {"&Enable MIDI program changes",
                                                        "Select &branches with MIDI notes"};

// Four in the upper row, Cancel and OK below them.
enum Button { resetButton, loadButton, saveButton, defaultButton, cancelButton, okButton, BUTTON_COUNT };
constexpr std::string_view BUTTON_TITLES[BUTTON_COUNT] = {"&Reset",         "&Load...", "&Save...",
                                                          "&Make Default", "&Cancel",  "OK"};

// How many values a choice has, the position of the one the settings
// hold, and the text of a position ("none" for no channel).
int valueCount(int stepper);
int positionOf(const MidiSettings& settings, int stepper);
std::string positionText(int stepper, int position);

bool isChecked(const MidiSettings& settings, int check);

// "(There are 3 MIDI controllers reassigned in this configuration.)"
std::string reassignedNote(const MidiSettings& settings);

// The changes, each heard by the instance at once: a choice set to a
// position, a choice stepped by `by` (coming round past either end), a
// check box turned over.
void setPosition(EditorHost& host, int stepper, int position);
void step(EditorHost& host, int stepper, int by);
void toggle(EditorHost& host, int check);

// Cancel: the configuration as it was when the dialog opened. A text that
// no longer reads throws and leaves the configuration as it is.
void restore(EditorHost& host, const std::string& opened);

// The alert after Make Default.
AlertRequest madeDefaultAlert();

}  // namespace Fomal::MidiConfigForm
