// What the sound shows on the plant: per-branch flash and levels, the clip
// meter and the last branch played. Published by the audio thread after every
// host block and read by the interface.
#pragma once

#include <cstdint>

struct VisualState {
    static constexpr int BRANCHES = 12;

    float flash[BRANCHES] = {};
    float levelLow[BRANCHES] = {};
    float levelHigh[BRANCHES] = {};
    float clip = 0.0f;
    uint32_t noteCount = 0;
    // -1 until the first note.
    int32_t lastBranch = -1;
};
