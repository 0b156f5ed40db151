// MIDI into the plug-in core: processEvents' filters and timing, the channel
// filter, learning, controllers driving parameters and triggers, program
// changes and the interface's audition notes.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/Exceptions.h"
#include "plugin/PluginCore.h"
#include "tests/plugin/BlockTestEngine.h"

namespace {

std::vector<std::vector<VstMidiEvent>> midiOut;

VstIntPtr VST_CALL midiHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void* ptr, float) {
    if (opcode == audioMasterVersion) return 2400;
    if (opcode == audioMasterProcessEvents) {
        auto* events = static_cast<VstEvents*>(ptr);
        std::vector<VstMidiEvent> block;
        for (int i = 0; i < events->numEvents; ++i)
            block.push_back(*reinterpret_cast<VstMidiEvent*>(events->events[i]));
        midiOut.push_back(block);
        return 1;
    }
    return 0;
}

// A block of host events, built as a host builds it.
struct HostEvents {
    std::vector<VstMidiEvent> midi;
    std::vector<VstEvent> sysex;
    std::vector<VstIntPtr> block;

    void add(int delta, int status, int d1, int d2) {
        VstMidiEvent m{};
        m.type = kVstMidiType;
        m.byteSize = 24;
        m.deltaFrames = delta;
        m.midiData[0] = static_cast<char>(status);
        m.midiData[1] = static_cast<char>(d1);
        m.midiData[2] = static_cast<char>(d2);
        midi.push_back(m);
    }
    VstEvents* events() {
        block.assign(2 + midi.size() + sysex.size(), 0);
        auto* e = reinterpret_cast<VstEvents*>(block.data());
        int n = 0;
        for (auto& s : sysex) e->events[n++] = &s;
        for (auto& m : midi) e->events[n++] = reinterpret_cast<VstEvent*>(&m);
        e->numEvents = n;
        return e;
    }
};

struct Rig {
    Rig() {
        midiOut.clear();
        auto e = std::make_unique<BlockTestEngine>();
        engine = e.get();
        core = std::make_unique<PluginCore>(&midiHost, std::move(e));
        core->resume();
    }
    void setConfig(const MidiConfigRecord& c) { core->midiConfig().publish(c); }
    void send(HostEvents& h) {
        AEffect* e = core->getAeffect();
        e->dispatcher(e, effProcessEvents, 0, 0, h.events(), 0);
    }
    void run(int frames) {
        std::vector<float> l(static_cast<std::size_t>(frames)), r(static_cast<std::size_t>(frames));
        float* outs[2] = {l.data(), r.data()};
        AEffect* e = core->getAeffect();
        e->processReplacing(e, nullptr, outs, frames);
    }
    BlockTestEngine* engine;
    std::unique_ptr<PluginCore> core;
};

}  // namespace

TEST(PluginMidiInput, EventsAreTimedFromTheHostCall) {
    Rig rig;
    rig.run(100);
    HostEvents h;
    h.add(10, 0x90, 60, 100);
    h.add(-5, 0x80, 61, 0);
    rig.send(h);
    ASSERT_EQ(rig.core->pendingCount(), 2);
    EXPECT_EQ(rig.core->pendingEvent(0).time, 110);
    EXPECT_EQ(rig.core->pendingEvent(1).time, 100);
}

TEST(PluginMidiInput, SysexSystemAndBadDataBytesAreDropped) {
    Rig rig;
    HostEvents h;
    VstEvent sysex{};
    sysex.type = kVstSysExType;
    h.sysex.push_back(sysex);
    h.add(0, 0xF8, 0, 0);
    h.add(0, 0xF0, 1, 2);
    h.add(0, 0x90, 128, 1);
    h.add(0, 0x90, 60, 200);
    h.add(0, 0x40, 60, 100);
    h.add(0, 0xE0, 0, 64);
    rig.send(h);
    ASSERT_EQ(rig.core->pendingCount(), 1);
    EXPECT_EQ(rig.core->pendingEvent(0).status, 0xE0);
}

TEST(PluginMidiInput, ChannelFilterKeepsOnlyTheInputChannel) {
    Rig rig;
    MidiConfigRecord c;
    c.inputMidiChannel = 3;
    rig.setConfig(c);
    HostEvents h;
    h.add(0, 0x93, 60, 100);
    h.add(0, 0x92, 61, 100);
    h.add(0, 0x90, 62, 100);
    rig.send(h);
    ASSERT_EQ(rig.core->pendingCount(), 1);
    EXPECT_EQ(rig.core->pendingEvent(0).data1, 60);
}

TEST(PluginMidiInput, PendingStopsAtItsCapacity) {
    Rig rig;
    HostEvents h;
    for (int i = 0; i < 5000; ++i) h.add(i % 64, 0x90, i % 128, 1 + i % 127);
    rig.send(h);
    EXPECT_EQ(rig.core->pendingCount(), PluginCore::PENDING_CAPACITY);
}

TEST(PluginMidiInput, LearnMapsTheControllerAndTheEventMakesNoSound) {
    Rig rig;
    rig.core->learnTarget().store(3);  // Atonality
    HostEvents h;
    h.add(0, 0xB0, 44, 127);
    h.add(0, 0xB0, 44, 0);
    rig.send(h);
    EXPECT_EQ(rig.core->learnTarget().load(), -1);
    EXPECT_EQ(rig.core->guiRefresh().load(), 1);
    MidiConfigRecord* c = rig.core->midiConfig().acquire();
    EXPECT_EQ(c->controllers[3], 44);
    EXPECT_EQ(c->inverseMap[44], 3);
    EXPECT_EQ(c->inverseMap[70], -1);  // Atonality's old controller
    rig.core->midiConfig().release(c);
    // The learning event is gone; the one after it stays and acts.
    ASSERT_EQ(rig.core->pendingCount(), 1);
    EXPECT_EQ(rig.core->pendingEvent(0).data2, 0);
    rig.run(128);
    EXPECT_FLOAT_EQ(rig.core->getParameter(3), 0.0f);
}

TEST(PluginMidiInput, LearnTakesAControllerFromTheFunctionThatHadIt) {
    Rig rig;
    rig.core->learnTarget().store(5);
    HostEvents h;
    h.add(0, 0xB0, 7, 10);  // Volume's controller
    rig.send(h);
    MidiConfigRecord* c = rig.core->midiConfig().acquire();
    EXPECT_EQ(c->controllers[5], 7);
    EXPECT_EQ(c->controllers[8], -1);
    rig.core->midiConfig().release(c);
}

TEST(PluginMidiInput, FilteredChannelDoesNotLearn) {
    Rig rig;
    MidiConfigRecord c;
    c.inputMidiChannel = 0;
    rig.setConfig(c);
    rig.core->learnTarget().store(1);
    HostEvents h;
    h.add(0, 0xB5, 20, 64);
    rig.send(h);
    EXPECT_EQ(rig.core->learnTarget().load(), 1);
    EXPECT_EQ(rig.core->pendingCount(), 0);
}

TEST(PluginMidiInput, ControllersSetParametersWithCentreDetents) {
    Rig rig;
    HostEvents h;
    h.add(0, 0xB0, 17, 64);   // Tuning, detented
    h.add(0, 0xB0, 16, 127);  // Rotation
    h.add(0, 0xB0, 7, 1);     // Volume, detented: 1 is 0
    h.add(0, 0xB0, 91, 127);  // Effect, detented: 127 is 1
    h.add(0, 0xB0, 1, 64);    // ModWheel, plain
    rig.send(h);
    rig.run(128);
    EXPECT_EQ(rig.core->getParameter(2), 0.5f);
    EXPECT_EQ(rig.core->getParameter(1), 1.0f);
    EXPECT_EQ(rig.core->getParameter(8), 0.0f);
    EXPECT_EQ(rig.core->getParameter(4), 1.0f);
    EXPECT_FLOAT_EQ(rig.core->getParameter(0), 64.0f / 127.0f);
}

TEST(PluginMidiInput, ControllersActWhenTheirBlockRendersNotBefore) {
    Rig rig;
    HostEvents h;
    h.add(100, 0xB0, 16, 127);
    rig.send(h);
    // The first engine block (samples 0 to 63) renders once the delay has
    // passed; the controller belongs to the second.
    rig.run(128);
    EXPECT_EQ(rig.core->getParameter(1), 0.0f);
    rig.run(64);
    EXPECT_EQ(rig.core->getParameter(1), 1.0f);
}

TEST(PluginMidiInput, TriggerFiresOnPressAndNotOnRelease) {
    Rig rig;
    HostEvents h;
    h.add(0, 0xB0, 80, 127);  // TriggerA
    h.add(1, 0xB0, 80, 0);
    h.add(2, 0xB0, 88, 5);  // TriggerH
    rig.send(h);
    rig.run(128);
    int32_t got[4] = {};
    ASSERT_EQ(rig.core->triggerRing().read(got, 4), 2u);
    EXPECT_EQ(got[0], 9);
    EXPECT_EQ(got[1], 16);
}

TEST(PluginMidiInput, FullTriggerRingLosesTriggers) {
    Rig rig;
    HostEvents h;
    for (int i = 0; i < 300; ++i) h.add(0, 0xB0, 81, 1);
    rig.send(h);
    rig.run(128);
    EXPECT_EQ(rig.core->triggerRing().available(), 256u);
}

TEST(PluginMidiInput, ProgramChangeOnlyWhenSupported) {
    Rig rig;
    HostEvents h;
    h.add(0, 0xC0, 5, 0);
    rig.send(h);
    rig.run(128);
    EXPECT_EQ(rig.core->currentProgram(), 0);

    MidiConfigRecord c;
    c.supportMidiProgramChange = true;
    rig.setConfig(c);
    const int32_t revision = rig.core->revision();
    HostEvents h2;
    h2.add(0, 0xC0, 5, 0);
    h2.add(1, 0xC0, 16, 0);  // beyond the bank: ignored
    rig.send(h2);
    rig.run(128);
    EXPECT_EQ(rig.core->currentProgram(), 5);
    EXPECT_EQ(rig.core->revision(), revision + 1);
    EXPECT_EQ(rig.core->guiRefresh().load(), 2);
}

TEST(PluginMidiInput, NoteOnWithVelocityZeroEndsTheNote) {
    Rig rig;
    HostEvents h;
    h.add(0, 0x90, 60, 100);
    h.add(32, 0x90, 60, 0);
    rig.send(h);
    rig.run(128);
    EXPECT_EQ(rig.engine->notes, 1);
    EXPECT_EQ(rig.engine->level, 0.0f);
}

TEST(PluginMidiInput, PreviewNotesGoOutAsMidiAndSound) {
    Rig rig;
    rig.run(64);  // the reset after resume drops what waits in the ring
    rig.core->preview("down", 60, 100);
    rig.run(128);
    ASSERT_EQ(midiOut.size(), 1u);
    ASSERT_EQ(midiOut[0].size(), 1u);
    EXPECT_EQ(static_cast<uint8_t>(midiOut[0][0].midiData[0]), 0x90);
    EXPECT_EQ(midiOut[0][0].midiData[1], 60);
    EXPECT_EQ(midiOut[0][0].midiData[2], 100);
    EXPECT_EQ(rig.engine->notes, 1);
    rig.core->preview("up", 60, 100);
    rig.run(128);
    ASSERT_EQ(midiOut.size(), 2u);
    EXPECT_EQ(static_cast<uint8_t>(midiOut[1][0].midiData[0]), 0x80);
}

TEST(PluginMidiInput, PreviewRefusesBadNotesAndKeys) {
    Rig rig;
    try {
        rig.core->preview("down", 128, 100);
        FAIL() << "no exception";
    } catch (const Exception& e) {
        EXPECT_STREQ(e.what(), "Note out of range: 128");
    }
    try {
        rig.core->preview("sideways", 60, 100);
        FAIL() << "no exception";
    } catch (const Exception& e) {
        EXPECT_STREQ(e.what(), "Unknown key param: sideways (should be \"up\" or \"down\")");
    }
}
