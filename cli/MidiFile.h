// Standard MIDI File reader: formats 0 and 1, running status, tempo changes,
// both kinds of time division. The channel messages of all tracks come out
// merged in time order, with their times in seconds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace cli {

struct MidiFileEvent {
    double seconds = 0;
    uint8_t status = 0;  // 0x80 to 0xEF
    uint8_t data1 = 0;
    uint8_t data2 = 0;   // 0 for messages with one data byte
};

struct MidiFileContents {
    int format = 0;
    int trackCount = 0;
    std::vector<MidiFileEvent> events;  // sorted by time; ties keep track, then file order
    double lengthSeconds = 0;           // time of the last event of any kind
};

// Throws FormatException with a message "Invalid MIDI file (...)".
MidiFileContents readMidiFile(const uint8_t* bytes, std::size_t size);
MidiFileContents readMidiFilePath(const std::string& path);

}  // namespace cli
