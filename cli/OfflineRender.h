// Plays timed MIDI through PluginCore exactly as a host would: the same block
// cutting (host blocks of a chosen size), the same event path, the same 64
// samples of delay. The result is stereo float audio.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "cli/MidiFile.h"
#include "patch/NorvelleProgram.h"
#include "platform/OrlAudioFiles/AudioData.h"

namespace cli {

struct OfflineRenderSettings {
    float rate = 44100.0f;
    int block = 512;          // host block size, 1 or more
    uint32_t noiseSeed = 1;   // the engine's noise seed
    double tailSeconds = 2.0; // after the last event
};

// One note of a --notes list: NOTE:START:DUR:VEL, times in seconds.
struct NoteSpec {
    int note = 60;
    double start = 0;
    double duration = 1;
    int velocity = 100;
};

// Parses "60:0:1:100,64:0.5:1:90". Throws UsageError naming the bad item.
std::vector<NoteSpec> parseNoteList(const std::string& text);

// Note-ons and note-offs of the list, in time order (an off before an on
// at the same time).
std::vector<MidiFileEvent> noteEvents(const std::vector<NoteSpec>& notes);

// Renders the events (sorted by time) and the tail after the last of them
// (or after endSeconds, whichever is later). progress, when given, is called
// now and then with the seconds done and the total.
OrlAudioFiles::AudioData renderOffline(const NorvelleProgram& program, const std::vector<MidiFileEvent>& events,
                                       double endSeconds, const OfflineRenderSettings& settings,
                                       const std::function<void(double, double)>& progress = {});

}  // namespace cli
