// The render self-test: a seeded random patch plays seeded random notes
// through the engine offline; the sound is written to a file the first time
// and compared with it, within a tolerance, every time after. It proves that
// a change to the engine didn't alter the sound of stored seeds.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/TimedEvent.h"
#include "patch/NorvelleProgram.h"
#include "platform/OrlAudioFiles/AudioData.h"

namespace engine {

struct SelfTestSpec {
    uint32_t seed = 1;
    double time = 1.0;         // seconds
    float sampleRate = 44100.0f;
    double density = 4.0;      // notes per second
    float tolerance = 1e-4f;   // largest difference per sample
    std::string file;
};

// A MIDI event at a sample position.
struct SelfTestEvent {
    int64_t sample;
    TimedEvent event;
};

struct SelfTestMaterial {
    NorvelleProgram program;
    std::vector<SelfTestEvent> events;  // sorted by sample
};

// The patch and the events of a test, all from the seed.
SelfTestMaterial selfTestMaterial(const SelfTestSpec& spec);

// Renders the test. A block that claims silence but holds sound fails with
// "outputIsSilent == true with non-silent data".
OrlAudioFiles::AudioData renderSelfTest(const SelfTestSpec& spec);

enum class SelfTestOutcome { Created, Matched };

// Writes the file when it doesn't exist, else compares; a difference fails
// with "Audio data mismatch at offset N, file NAME".
SelfTestOutcome createTest(const SelfTestSpec& spec);

// Compares a render with the audio of a file (the same rule as createTest).
void compareWithFile(const OrlAudioFiles::AudioData& rendered, const SelfTestSpec& spec);

}  // namespace engine
