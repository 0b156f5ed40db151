// The render self-test: a seeded random patch plays seeded random notes
// through the engine offline; the sound is written to a file the first time
// and compared with it, within a tolerance, every time after. It proves that
// a change to the engine didn't alter the sound of stored seeds.
#pragma once

#include <cstdint>
#include <functional>
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

// The random-noise set: a row of self-test recordings of growing density for
// listening to the engine and for comparing later builds with. File i (from
// 0) renders the material of seed firstSeed + i at 44100 Hz with density
// (i / 10)^2 + 1 notes per second, and is named noise000.wav, noise001.wav...
// (three digits at least). The files are 32-bit float WAV, exactly what
// createTest records for the same test, so createTest can compare with them.
constexpr float kRandomNoiseRate = 44100.0f;
constexpr double kRandomNoiseSeconds = 20.0;
constexpr int kRandomNoiseCount = 100;

double randomNoiseDensity(int index);
std::string randomNoiseFileName(int index);
// The test that file `index` in the folder `dir` records.
SelfTestSpec randomNoiseSpec(const std::string& dir, int index, double seconds = kRandomNoiseSeconds,
                             uint32_t firstSeed = 1);

// Told before each file is rendered: its index (from 0), the count, its test.
using RandomNoiseProgress = std::function<void(int index, int count, const SelfTestSpec& spec)>;

// Renders and writes `count` files into the existing folder `dir`, replacing
// files of the same names. Returns the paths written. A file that cannot be
// written fails with "Cannot create file PATH".
std::vector<std::string> generateRandomNoises(const std::string& dir, int count = kRandomNoiseCount,
                                              double seconds = kRandomNoiseSeconds,
                                              const RandomNoiseProgress& progress = {}, uint32_t firstSeed = 1);

}  // namespace engine
