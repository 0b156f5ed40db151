#include "patch/MidiConfigDefaults.h"

#include <exception>

#include "patch/MidiConfigText.h"
#include "patch/Preferences.h"

MidiConfigRecord loadDefaultMidiConfig(PreferenceBackend& backend) {
    try {
        if (auto text = Preferences::read(DEFAULT_MIDI_CONFIG_KEY, backend)) return readMidiConfig(u"", *text);
    } catch (const std::exception&) {
        // An unreadable store or text: the defaults.
    }
    return MidiConfigRecord();
}

void makeMidiConfigDefault(const MidiConfigRecord& config, PreferenceBackend& backend) {
    Preferences::write(DEFAULT_MIDI_CONFIG_KEY, writeMidiConfig(config, false), backend);
}
