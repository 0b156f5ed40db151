// The MIDI configuration a new instance starts with when the host gives it
// none: the text stored under the preference defaultMidiConfig ("Make
// Default"), or the record's own defaults.
#pragma once

#include "patch/MidiConfigRecord.h"
#include "patch/PreferencesStore.h"

constexpr const char* DEFAULT_MIDI_CONFIG_KEY = "defaultMidiConfig";

// The defaults when nothing is stored or the store can't be read.
MidiConfigRecord loadDefaultMidiConfig(PreferenceBackend& backend = machinePreferenceBackend());

// Stores the configuration's text without its path; the store's failures pass.
void makeMidiConfigDefault(const MidiConfigRecord& config, PreferenceBackend& backend = machinePreferenceBackend());
