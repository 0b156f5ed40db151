// The text form of a MIDI configuration: the `.qbmc` files, the bank chunk's
// configuration and the preference defaultMidiConfig.
#pragma once

#include <string>
#include <string_view>

#include "patch/MidiConfigRecord.h"

// The seventeen functions a controller can drive, in record order.
extern const std::string_view MIDI_FUNCTION_NAMES[MidiConfigRecord::FUNCTION_COUNT];
extern const int8_t MIDI_DEFAULT_CONTROLLERS[MidiConfigRecord::FUNCTION_COUNT];

// Starts from the defaults; missing keys keep them. Channels are the written
// number less one, limited to -1 to 15 ("none" and any other text that is no
// number read as -1); the pitch wheel range is limited to 0 to 12; controller
// numbers are limited to -1 to 127, unreadable ones are -1. The record keeps
// path and text as its source.
MidiConfigRecord readMidiConfig(std::u16string_view sourcePath, std::string_view text);

// Path only when includePath and the record has one; one `_CC` line for each
// controller that differs from its default.
std::string writeMidiConfig(const MidiConfigRecord& config, bool includePath);

// Points a function at a controller number (-1 for none) and keeps the
// inverse map in step: the controller's previous function loses it.
void assignController(MidiConfigRecord& config, int function, int controller);

// How many controllers differ from their defaults.
int reassignedControllerCount(const MidiConfigRecord& config);
