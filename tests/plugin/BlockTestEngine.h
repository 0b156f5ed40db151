// An engine for testing the block path: its output is a deterministic
// function of the absolute engine sample and of the notes it has received,
// so any slip in cutting blocks or timing events shows in the samples.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/RenderInterface.h"
#include "patch/MidiConfigRecord.h"
#include "patch/NorvelleProgram.h"

class BlockTestEngine : public RenderInterface {
public:
    struct Seen {
        int64_t block;  // engine block index since init
        TimedEvent event;
    };

    void init(float sampleRate, uint32_t seed) override {
        ++inits;
        rate = sampleRate;
        noiseSeed = seed;
        blocks = 0;
        level = 0.0f;
        notes = 0;
        lastNote = -1;
    }

    void render(const NorvelleProgram& program, const MidiConfigRecord& config, int eventCount,
                const TimedEvent* events, float* left, float* right, bool& silentFlag) override {
        lastSeed = program.seed;
        lastProgram = &program;
        lastVolume = program.param(Param::Volume);
        lastOutputChannel = config.outputMidiChannel;
        int next = 0;
        silentFlag = true;
        for (int i = 0; i < BLOCK; ++i) {
            while (next < eventCount && events[next].time <= i) {
                apply(events[next]);
                ++next;
            }
            const int64_t t = blocks * BLOCK + i;
            const float s = level > 0.0f ? level + 0.001f * static_cast<float>(t % 97) : 0.0f;
            left[i] = s;
            right[i] = -s;
            if (s != 0.0f) silentFlag = false;
        }
        while (next < eventCount) apply(events[next++]);
        for (int k = 0; k < eventCount; ++k) seen.push_back({blocks, events[k]});
        ++blocks;
    }

    void copyVisualState(VisualState& target) const override {
        target = VisualState{};
        target.noteCount = static_cast<uint32_t>(notes);
        target.lastBranch = lastNote < 0 ? -1 : lastNote % 12;
        if (lastNote >= 0) target.flash[lastNote % 12] = 1.0f;
        target.clip = level;
    }

    int inits = 0;
    float rate = 0.0f;
    uint32_t noiseSeed = 0;
    int64_t blocks = 0;
    float level = 0.0f;
    int notes = 0;
    int lastNote = -1;
    uint32_t lastSeed = 0;
    const NorvelleProgram* lastProgram = nullptr;
    float lastVolume = -1.0f;
    int32_t lastOutputChannel = -2;
    std::vector<Seen> seen;

private:
    void apply(const TimedEvent& e) {
        if ((e.status & 0xF0) == 0x90 && e.data2 > 0) {
            level = static_cast<float>(e.data1) / 128.0f;
            ++notes;
            lastNote = e.data1;
        } else if ((e.status & 0xF0) == 0x80 || (e.status & 0xF0) == 0x90) {
            level = 0.0f;
        }
    }
};
