// How an instance listens to MIDI: channels, the pitch wheel range, the
// velocity curve and which controller number drives which function. A plain
// value; new objects hold the defaults.
#pragma once

#include <cstdint>
#include <string>

struct MidiConfigRecord {
    enum VelocityCurve : int32_t { Soft = 0, Standard = 1, Hard = 2 };
    static constexpr int FUNCTION_COUNT = 17;

    // The file this came from, and the text it was read from.
    std::u16string sourcePath;
    std::string sourceText;
    // 0 to 15, -1 for none (all channels on input).
    int32_t inputMidiChannel = -1;
    int32_t outputMidiChannel = 0;
    // Semitones, 0 to 12.
    int32_t pitchWheelRange = 12;
    int32_t velocityCurve = Standard;
    bool supportMidiProgramChange = false;
    // Select branches with MIDI notes.
    bool autoSelect = true;
    // The controller number of each function, -1 for none: ModWheel,
    // Rotation, Tuning, Atonality, Effect, Release, WheelScale, VelSens,
    // Volume, TriggerA to TriggerH.
    int8_t controllers[FUNCTION_COUNT] = {1, 16, 17, 70, 91, 72, 18, 19, 7, 80, 81, 82, 83, 85, 86, 87, 88};
    // Per controller number, the function it drives, or -1.
    int8_t inverseMap[128];

    MidiConfigRecord() { rebuildInverseMap(); }

    void rebuildInverseMap() {
        for (auto& f : inverseMap) f = -1;
        for (int f = 0; f < FUNCTION_COUNT; ++f)
            if (controllers[f] >= 0) inverseMap[static_cast<int>(controllers[f])] = static_cast<int8_t>(f);
    }
};
