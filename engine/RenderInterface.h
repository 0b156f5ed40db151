// What the plug-in core needs of a sound engine: set-up at a sample rate, one
// 64-sample block from a record and a run of events, and the state shown on
// the plant. The core holds its engine through this, so that block cutting
// can be driven by any engine.
#pragma once

#include <cstdint>

#include "engine/TimedEvent.h"
#include "engine/VisualState.h"

class NorvelleProgram;
struct MidiConfigRecord;

class RenderInterface {
public:
    static constexpr int BLOCK = 64;

    virtual ~RenderInterface() = default;

    // Audio thread: forget everything and start at this rate; seed varies
    // the noise.
    virtual void init(float sampleRate, uint32_t seed) = 0;
    // Audio thread: BLOCK samples into left and right. Event times are
    // samples from the block start, 0 to BLOCK - 1, in order. silentFlag is
    // set when the block is digital silence.
    virtual void render(const NorvelleProgram& program, const MidiConfigRecord& midiConfig,
                        int eventCount, const TimedEvent* events, float* left, float* right,
                        bool& silentFlag) = 0;
    // Audio thread: what the plant shows of the sound.
    virtual void copyVisualState(VisualState& target) const = 0;
};
