// The steady audio path allocates nothing: host calls of every size, with
// host notes, interface notes, MIDI out and the jingle, counted by the test
// programs' allocator.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "plugin/PluginCore.h"
#include "tests/plugin/BlockTestEngine.h"
#include "tests/support/AllocationCounter.h"

namespace {

int midiBlocksOut = 0;

VstIntPtr VST_CALL countingHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    if (opcode == audioMasterProcessEvents) ++midiBlocksOut;
    return opcode == audioMasterVersion ? 2400 : 0;
}

TimedEvent note(int32_t time, int channel, int key, int velocity) {
    TimedEvent e;
    e.time = time;
    e.status = static_cast<uint8_t>((velocity ? 0x90 : 0x80) | channel);
    e.data1 = static_cast<uint8_t>(key);
    e.data2 = static_cast<uint8_t>(velocity);
    return e;
}

// Host calls of varied sizes with notes from the host and the interface.
void play(PluginCore& core, int calls, int offset) {
    static float left[4096], right[4096];
    float* outs[2] = {left, right};
    for (int i = 0; i < calls; ++i) {
        const int k = i + offset;
        core.queueHostEvent(note(k % 50, 0, 48 + k % 24, k % 3 ? 100 : 0));
        if (k % 4 == 0) core.injectEvent(note(3, 1, 60 + k % 12, k % 8 ? 0 : 90));
        const int frames = (k * 97) % 700;
        if (k % 2)
            core.processReplacing(nullptr, outs, frames);
        else
            core.process(nullptr, outs, frames);
    }
}

}  // namespace

TEST(SpineAllocation, RenderBlockAllocatesNothingWithTheTestEngine) {
    auto e = std::make_unique<BlockTestEngine>();
    e->seen.reserve(1 << 16);
    PluginCore core(&countingHost, std::move(e));
    core.resume();
    core.setProgramName(const_cast<char*>("Jingle Balls"));
    ASSERT_TRUE(core.hasJingle());
    play(core, 20, 0);
    midiBlocksOut = 0;
    testsupport::AllocationCounter counter;
    play(core, 500, 20);
    EXPECT_EQ(counter.count(), 0u);
    EXPECT_GT(midiBlocksOut, 0);
}

TEST(SpineAllocation, RenderBlockAllocatesNothingWithTheSoundEngine) {
    PluginCore core(&countingHost);
    core.resume();
    play(core, 50, 0);
    testsupport::AllocationCounter counter;
    play(core, 300, 50);
    EXPECT_EQ(counter.count(), 0u);
}

TEST(SpineAllocation, TheCounterSeesAnAllocation) {
    testsupport::AllocationCounter counter;
    auto probe = std::make_unique<std::vector<int>>(100);
    EXPECT_GE(counter.count(), 2u);
}
