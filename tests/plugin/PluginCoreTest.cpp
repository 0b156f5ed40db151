// The block path of the plug-in core, driven through a test engine: block
// cutting and its constant delay, event timing, the queues, resets, MIDI out,
// program switches, the jingle and what is published for the plant.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "plugin/PluginCore.h"
#include "tests/plugin/BlockTestEngine.h"

namespace {

struct HostLog {
    int versionQueries = 0;
    int wantMidi = 0;
    std::vector<std::vector<VstMidiEvent>> midiOut;
};
HostLog host;

VstIntPtr VST_CALL testHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void* ptr, float) {
    switch (opcode) {
    case audioMasterVersion:
        ++host.versionQueries;
        return 2400;
    case audioMasterWantMidi:
        ++host.wantMidi;
        return 1;
    case audioMasterProcessEvents: {
        auto* events = static_cast<VstEvents*>(ptr);
        std::vector<VstMidiEvent> block;
        for (int i = 0; i < events->numEvents; ++i)
            block.push_back(*reinterpret_cast<VstMidiEvent*>(events->events[i]));
        host.midiOut.push_back(block);
        return 1;
    }
    default:
        return 0;
    }
}

TimedEvent ev(int32_t time, int status, int d1, int d2) {
    TimedEvent e;
    e.time = time;
    e.status = static_cast<uint8_t>(status);
    e.data1 = static_cast<uint8_t>(d1);
    e.data2 = static_cast<uint8_t>(d2);
    return e;
}

struct Rig {
    Rig() {
        host = HostLog{};
        auto e = std::make_unique<BlockTestEngine>();
        engine = e.get();
        core = std::make_unique<PluginCore>(&testHost, std::move(e));
        core->fixNoiseSeed(1);
        core->resume();
        call(0);  // the first audio call after resume resets
    }
    // One host call of n samples; returns the left channel.
    std::vector<float> call(int n, bool accumulate = false, float preset = 0.0f) {
        left.assign(static_cast<size_t>(n) + 1, preset);
        right.assign(static_cast<size_t>(n) + 1, preset);
        float* outs[2] = {left.data(), right.data()};
        if (accumulate)
            core->process(nullptr, outs, n);
        else
            core->processReplacing(nullptr, outs, n);
        return std::vector<float>(left.begin(), left.begin() + n);
    }
    void setName(const char* name) {
        std::vector<char> text(name, name + std::strlen(name) + 1);
        core->setProgramName(text.data());
    }
    VisualState shown() {
        VisualState* v = core->visualState().acquire();
        VisualState copy = *v;
        core->visualState().release(v);
        return copy;
    }
    BlockTestEngine* engine;
    std::unique_ptr<PluginCore> core;
    std::vector<float> left;
    std::vector<float> right;
};

// Plays the same notes, at the same absolute times, with host calls of one
// size; returns the left channel.
std::vector<float> playWithBlockSize(int blockSize, int total) {
    struct Note {
        int at;
        int status;
        int note;
        int velocity;
    };
    const Note notes[] = {{0, 0x90, 60, 100},    {37, 0x80, 60, 0},   {100, 0x90, 72, 90},
                          {130, 0x90, 48, 90},   {191, 0x80, 48, 0},  {192, 0x90, 50, 80},
                          {1000, 0x90, 67, 100}, {4095, 0x90, 70, 1}, {4096, 0x80, 70, 0},
                          {4200, 0x90, 64, 127}, {7000, 0x80, 64, 0}};
    Rig r;
    std::vector<float> out;
    for (int start = 0; start < total; start += blockSize) {
        const int n = std::min(blockSize, total - start);
        for (const Note& note : notes)
            if (note.at >= start && note.at < start + n)
                r.core->queueHostEvent(ev(note.at - start, note.status, note.note, note.velocity));
        const std::vector<float> part = r.call(n);
        out.insert(out.end(), part.begin(), part.end());
    }
    return out;
}

}  // namespace

TEST(PluginCore, EffectRecordHasItsShape) {
    Rig r;
    AEffect* e = r.core->getAeffect();
    EXPECT_EQ(e->magic, kEffectMagic);
    EXPECT_EQ(e->version, 1);
    EXPECT_EQ(e->numPrograms, 16);
    EXPECT_EQ(e->numParams, 21);
    EXPECT_EQ(e->numOutputs, 2);
    EXPECT_EQ(e->object, r.core.get());
    EXPECT_NE(e->flags & effFlagsIsSynth, 0);
    EXPECT_NE(e->flags & effFlagsCanReplacing, 0);
    EXPECT_EQ(r.core->getSampleRate(), 44100.0f);
}

TEST(PluginCore, HostBlockSizesGiveTheSameAudio) {
    const int total = 9000;
    const std::vector<float> reference = playWithBlockSize(64, total);
    // Something sounds, and nothing before the constant delay.
    EXPECT_NE(reference[64], 0.0f);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(reference[i], 0.0f);
    for (int size : {1, 63, 65, 4096, 100, 777}) {
        const std::vector<float> out = playWithBlockSize(size, total);
        ASSERT_EQ(out.size(), reference.size());
        int differences = 0;
        for (size_t i = 0; i < out.size(); ++i) differences += out[i] != reference[i];
        EXPECT_EQ(differences, 0) << "block size " << size;
    }
}

TEST(PluginCore, HostBlockSizesGiveTheSameSoundFromTheSoundEngine) {
    auto play = [](int blockSize) {
        PluginCore core(&testHost);
        core.fixNoiseSeed(1);
        core.resume();
        std::vector<float> out, outRight;
        std::vector<float> l(4096), r(4096);
        float* outs[2] = {l.data(), r.data()};
        const int total = 12000;
        for (int start = 0; start < total; start += blockSize) {
            const int n = std::min(blockSize, total - start);
            for (int at : {0, 700, 3000, 3001, 5000})
                if (at >= start && at < start + n) core.queueHostEvent(ev(at - start, 0x90, 48 + at % 37, 100));
            // All notes off.
            if (8000 >= start && 8000 < start + n) core.queueHostEvent(ev(8000 - start, 0xB0, 122, 0));
            core.processReplacing(nullptr, outs, n);
            out.insert(out.end(), l.begin(), l.begin() + n);
            outRight.insert(outRight.end(), r.begin(), r.begin() + n);
        }
        out.insert(out.end(), outRight.begin(), outRight.end());
        return out;
    };
    const std::vector<float> reference = play(64);
    float peak = 0.0f;
    for (float s : reference) peak = std::max(peak, std::fabs(s));
    EXPECT_GT(peak, 0.0f);
    for (int size : {1, 63, 65, 4096}) {
        const std::vector<float> out = play(size);
        ASSERT_EQ(out.size(), reference.size());
        int differences = 0;
        for (size_t i = 0; i < out.size(); ++i) differences += out[i] != reference[i];
        EXPECT_EQ(differences, 0) << "block size " << size;
    }
}

TEST(PluginCore, EventsSoundSixtyFourSamplesLater) {
    Rig r;
    r.core->queueHostEvent(ev(10, 0x90, 64, 100));
    const std::vector<float> out = r.call(200);
    for (int i = 0; i < 74; ++i) ASSERT_EQ(out[i], 0.0f) << i;
    EXPECT_NE(out[74], 0.0f);
    EXPECT_FLOAT_EQ(out[74], 0.5f + 0.001f * 10);
    EXPECT_FLOAT_EQ(r.right[74], -out[74]);
}

TEST(PluginCore, FirstSixtyFourSamplesAfterAResetAreSilence) {
    for (int size : {1, 17, 64, 300}) {
        Rig r;
        r.core->queueHostEvent(ev(0, 0x90, 64, 100));
        std::vector<float> out;
        while (static_cast<int>(out.size()) < 128) {
            if (!out.empty() && static_cast<int>(out.size()) < 64) {
                EXPECT_EQ(r.core->stagingPos(), static_cast<int>(out.size()));
            }
            const auto part = r.call(size);
            out.insert(out.end(), part.begin(), part.end());
        }
        for (int i = 0; i < 64; ++i) EXPECT_EQ(out[i], 0.0f) << size;
        EXPECT_NE(out[64], 0.0f) << size;
    }
}

TEST(PluginCore, InterfaceEventsArriveAtTheStartOfTheNextHostCall) {
    Rig r;
    r.call(100);
    r.core->injectEvent(ev(0, 0x90, 64, 100));
    const std::vector<float> out = r.call(300);
    // The call starts at host sample 100: the note sounds from 164 on, which
    // is 64 into this call.
    EXPECT_EQ(out[63], 0.0f);
    EXPECT_NE(out[64], 0.0f);
    ASSERT_EQ(r.engine->seen.size(), 1u);
    EXPECT_EQ(r.engine->seen[0].block, 1);      // engine samples 64..127
    EXPECT_EQ(r.engine->seen[0].event.time, 36);  // 100 - 64
}

TEST(PluginCore, ZeroFramesRendersNothingAndKeepsEventsPending) {
    Rig r;
    r.call(64);
    const int64_t blocks = r.engine->blocks;
    r.core->injectEvent(ev(5, 0x90, 60, 100));
    r.core->queueHostEvent(ev(9, 0x90, 61, 100));
    r.call(0);
    EXPECT_EQ(r.engine->blocks, blocks);
    EXPECT_EQ(r.core->pendingCount(), 2);
    EXPECT_EQ(r.core->hostClock(), 64);
    // Drained from the ring and made absolute; sorted.
    EXPECT_EQ(r.core->pendingEvent(0).time, 64 + 5);
    EXPECT_EQ(r.core->pendingEvent(1).time, 64 + 9);
    r.call(128);
    EXPECT_EQ(r.core->pendingCount(), 0);
    EXPECT_EQ(r.engine->notes, 2);
}

TEST(PluginCore, AccumulateAddsToWhatTheHostLeft) {
    Rig r;
    r.core->queueHostEvent(ev(0, 0x90, 64, 100));
    std::vector<float> out = r.call(128, true, 0.25f);
    EXPECT_FLOAT_EQ(out[0], 0.25f);
    EXPECT_FLOAT_EQ(out[64], 0.25f + 0.5f);
    EXPECT_FLOAT_EQ(r.right[64], 0.25f - 0.5f);
    Rig s;
    s.core->queueHostEvent(ev(0, 0x90, 64, 100));
    out = s.call(128, false, 0.25f);
    EXPECT_FLOAT_EQ(out[0], 0.0f);
    EXPECT_FLOAT_EQ(out[64], 0.5f);
    // Past the frames asked for, nothing is touched.
    EXPECT_FLOAT_EQ(s.left[128], 0.25f);
}

TEST(PluginCore, SampleRateChangeResetsEngineQueuesAndClocks) {
    Rig r;
    r.core->queueHostEvent(ev(0, 0x90, 64, 100));
    r.call(200);
    ASSERT_EQ(r.engine->inits, 1);
    ASSERT_NE(r.shown().lastBranch, -1);
    r.core->queueHostEvent(ev(500, 0x90, 65, 100));  // far ahead: still pending
    r.core->injectEvent(ev(0, 0x90, 66, 100));
    r.core->setSampleRate(48000.0f);
    EXPECT_TRUE(r.core->needsReset());
    const std::vector<float> out = r.call(64);
    EXPECT_EQ(r.engine->inits, 2);
    EXPECT_EQ(r.engine->rate, 48000.0f);
    EXPECT_FALSE(r.core->needsReset());
    EXPECT_EQ(r.core->pendingCount(), 0);
    EXPECT_EQ(r.core->hostClock(), 64);
    EXPECT_EQ(r.core->blockClock(), 0);
    for (float s : out) EXPECT_EQ(s, 0.0f);
    EXPECT_EQ(r.shown().lastBranch, -1);
    EXPECT_EQ(r.shown().noteCount, 0u);
    // The same rate again is no change.
    r.core->setSampleRate(48000.0f);
    EXPECT_FALSE(r.core->needsReset());
}

TEST(PluginCore, ResumeResetsOnceAndAsksForMidi) {
    host = HostLog{};
    auto e = std::make_unique<BlockTestEngine>();
    BlockTestEngine* engine = e.get();
    PluginCore core(&testHost, std::move(e));
    EXPECT_FALSE(core.needsReset());
    core.resume();
    EXPECT_TRUE(core.resumed());
    EXPECT_TRUE(core.needsReset());
    EXPECT_EQ(host.wantMidi, 1);
    EXPECT_EQ(core.guiRefresh().load(), 1);
    core.resume();
    EXPECT_EQ(host.wantMidi, 1);
    float l[10], rr[10];
    float* outs[2] = {l, rr};
    core.processReplacing(nullptr, outs, 10);
    EXPECT_EQ(engine->inits, 1);
    core.resume();
    EXPECT_FALSE(core.needsReset());
}

TEST(PluginCore, HostEventsQueuedRightAfterResumeSurviveTheReset) {
    host = HostLog{};
    auto e = std::make_unique<BlockTestEngine>();
    BlockTestEngine* engine = e.get();
    PluginCore core(&testHost, std::move(e));
    core.resume();
    EXPECT_TRUE(core.queueHostEvent(ev(0, 0x90, 60, 100)));
    EXPECT_FALSE(core.needsReset());
    float l[128], rr[128];
    float* outs[2] = {l, rr};
    core.processReplacing(nullptr, outs, 128);
    EXPECT_EQ(engine->inits, 1);
    EXPECT_EQ(engine->notes, 1);
    EXPECT_EQ(l[63], 0.0f);
    EXPECT_NE(l[64], 0.0f);
}

TEST(PluginCore, SuspendStillsThePlant) {
    Rig r;
    r.core->queueHostEvent(ev(0, 0x90, 62, 100));
    r.call(200);
    EXPECT_EQ(r.shown().lastBranch, 2);
    EXPECT_EQ(r.shown().flash[2], 1.0f);
    r.core->suspend();
    EXPECT_FALSE(r.core->resumed());
    EXPECT_EQ(r.shown().lastBranch, -1);
    EXPECT_EQ(r.shown().flash[2], 0.0f);
    EXPECT_EQ(r.shown().noteCount, 0u);
    // Resume resets again.
    r.core->resume();
    EXPECT_TRUE(r.core->needsReset());
}

TEST(PluginCore, BeforeAnyResumeTheEngineRendersAtOnce) {
    host = HostLog{};
    auto e = std::make_unique<BlockTestEngine>();
    BlockTestEngine* engine = e.get();
    PluginCore core(&testHost, std::move(e));
    EXPECT_EQ(core.stagingPos(), 64);
    float l[10], rr[10];
    float* outs[2] = {l, rr};
    core.processReplacing(nullptr, outs, 10);
    EXPECT_EQ(engine->blocks, 1);
    EXPECT_EQ(engine->inits, 0);
}

TEST(PluginCore, PendingOverflowDropsSilently) {
    Rig r;
    int accepted = 0;
    for (int i = 0; i < 5000; ++i) accepted += r.core->queueHostEvent(ev(i % 300, 0x90, 60, 100));
    EXPECT_EQ(accepted, 4096);
    EXPECT_EQ(r.core->pendingCount(), 4096);
    // The ring waits until the pending queue has room.
    r.core->injectEvent(ev(0, 0x90, 61, 100));
    r.call(0);
    EXPECT_EQ(r.core->pendingCount(), 4096);
    r.call(1000);
    // The ring event waits in the ring for the next call.
    EXPECT_EQ(r.core->pendingCount(), 0);
    EXPECT_EQ(r.engine->notes, 4096);
    r.call(1000);
    EXPECT_EQ(r.core->pendingCount(), 0);
    EXPECT_EQ(r.engine->notes, 4097);
}

TEST(PluginCore, RingOverrunThrowsAtTheWriter) {
    Rig r;
    for (int i = 0; i < 4096; ++i) r.core->injectEvent(ev(0, 0x90, 60, 100));
    EXPECT_THROW(r.core->injectEvent(ev(0, 0x90, 60, 100)), Kvx::xCircularFIFOOverrun);
}

TEST(PluginCore, EqualTimesKeepTheirOrderThroughTheSort) {
    Rig r;
    r.core->queueHostEvent(ev(20, 0x90, 60, 100));
    r.core->queueHostEvent(ev(10, 0x80, 60, 0));
    r.core->queueHostEvent(ev(20, 0x90, 61, 100));
    r.core->injectEvent(ev(20, 0x90, 62, 100));
    r.core->injectEvent(ev(10, 0x90, 63, 100));
    r.call(128);
    const auto& seen = r.engine->seen;
    ASSERT_EQ(seen.size(), 5u);
    EXPECT_EQ(seen[0].event.data1, 60);  // the note-off at 10
    EXPECT_EQ(seen[0].event.status, 0x80);
    EXPECT_EQ(seen[1].event.data1, 63);
    EXPECT_EQ(seen[2].event.data1, 60);
    EXPECT_EQ(seen[3].event.data1, 61);
    EXPECT_EQ(seen[4].event.data1, 62);
    EXPECT_EQ(seen[4].event.time, 20);
}

TEST(PluginCore, InterfaceEventsGoOutAsMidi) {
    Rig r;
    r.core->queueHostEvent(ev(3, 0x90, 50, 100));  // host MIDI is not echoed
    r.core->injectEvent(ev(7, 0x91, 64, 99));
    r.call(64);
    ASSERT_EQ(host.midiOut.size(), 1u);
    ASSERT_EQ(host.midiOut[0].size(), 1u);
    const VstMidiEvent& m = host.midiOut[0][0];
    EXPECT_EQ(m.type, 1);
    EXPECT_EQ(m.byteSize, 24);
    EXPECT_EQ(m.deltaFrames, 7);
    EXPECT_EQ(static_cast<unsigned char>(m.midiData[0]), 0x91);
    EXPECT_EQ(m.midiData[1], 64);
    EXPECT_EQ(m.midiData[2], 99);
    EXPECT_EQ(m.flags, 0);
    EXPECT_EQ(m.noteLength, 0);
    // Nothing added: nothing sent.
    r.call(64);
    EXPECT_EQ(host.midiOut.size(), 1u);
}

TEST(PluginCore, NoMidiOutWithoutAnOutputChannel) {
    Rig r;
    MidiConfigRecord config;
    config.outputMidiChannel = -1;
    r.core->midiConfig().publish(config);
    r.core->injectEvent(ev(7, 0x90, 64, 99));
    r.call(200);
    EXPECT_TRUE(host.midiOut.empty());
    EXPECT_EQ(r.engine->notes, 1);  // still played
    EXPECT_EQ(r.engine->lastOutputChannel, -1);
}

TEST(PluginCore, BlockSilentFollowsTheEngine) {
    Rig r;
    r.call(128);
    EXPECT_TRUE(r.core->blockSilent());
    r.core->queueHostEvent(ev(0, 0x90, 60, 100));
    r.call(128);
    EXPECT_FALSE(r.core->blockSilent());
}

TEST(PluginCore, ProgramSwitchRaisesRevisionAndRefresh) {
    Rig r;
    r.core->guiRefresh().store(0);
    r.core->setProgram(3);
    EXPECT_EQ(r.core->currentProgram(), 3);
    EXPECT_EQ(r.core->previousProgram(), 0);
    EXPECT_EQ(r.core->getProgram(), 3);
    EXPECT_EQ(r.core->revision(), 1);
    EXPECT_EQ(r.core->guiRefresh().load(), 1);
    r.core->setProgram(3);
    EXPECT_EQ(r.core->revision(), 1);
    r.core->setProgram(16);
    EXPECT_EQ(r.core->currentProgram(), 3);
    r.core->programChangeFromMidi(5);
    EXPECT_EQ(r.core->previousProgram(), 3);
    EXPECT_EQ(r.core->revision(), 2);
    EXPECT_EQ(r.core->guiRefresh().load(), 2);
    // From setProgram, a pending 2 stays 2.
    r.core->setProgram(6);
    EXPECT_EQ(r.core->guiRefresh().load(), 2);
}

TEST(PluginCore, TheCurrentProgramSounds) {
    Rig r;
    NorvelleProgram p;
    p.seed = 4242;
    r.core->programSlot(7).publish(p);
    r.call(128);
    EXPECT_EQ(r.engine->lastSeed, 1u);
    r.core->setProgram(7);
    r.call(64);
    EXPECT_EQ(r.engine->lastSeed, 4242u);
}

TEST(PluginCore, TheEngineReadsTheLiveRecordInPlace) {
    Rig r;
    r.call(128);
    const NorvelleProgram* first = r.engine->lastProgram;
    EXPECT_FLOAT_EQ(r.engine->lastVolume, 0.5f);
    // One parameter changes inside the live record: no copy, no publish.
    NorvelleProgram* live = r.core->programSlot(0).acquire();
    live->setParam(Param::Volume, 0.9f);
    r.core->programSlot(0).release(live);
    r.call(64);
    EXPECT_EQ(r.engine->lastProgram, first);
    EXPECT_EQ(r.engine->lastProgram, live);
    EXPECT_FLOAT_EQ(r.engine->lastVolume, 0.9f);
    // A published record replaces it from the next block on.
    NorvelleProgram next;
    next.seed = 5;
    r.core->programSlot(0).publish(next);
    r.call(64);
    EXPECT_NE(r.engine->lastProgram, first);
    EXPECT_EQ(r.engine->lastSeed, 5u);
    // Between blocks the audio thread holds nothing.
    NorvelleProgram* held = r.core->programSlot(0).acquire();
    r.core->programSlot(0).release(held);
    int readers = 0;
    for (int i = 0; i < r.core->programSlot(0).poolSize(); ++i)
        readers += r.core->programSlot(0).stateOf(i) > 2;
    EXPECT_EQ(readers, 0);
}

TEST(PluginCore, PreviewSoundsWithoutShowingOnThePlant) {
    Rig r;
    NorvelleProgram p;
    p.seed = 77;
    r.core->previewSlot().publish(p);
    r.core->setPreviewing(true);
    r.core->injectEvent(ev(0, 0x90, 62, 100));
    r.call(200);
    EXPECT_EQ(r.engine->lastSeed, 77u);
    VisualState v = r.shown();
    EXPECT_EQ(v.noteCount, 1u);
    EXPECT_EQ(v.lastBranch, -1);
    EXPECT_EQ(v.flash[2], 0.0f);
    EXPECT_EQ(v.clip, 0.0f);
    r.core->setPreviewing(false);
    r.call(64);
    EXPECT_EQ(r.engine->lastSeed, 1u);
    EXPECT_EQ(r.shown().lastBranch, 2);
}

TEST(PluginCore, ProgramNameGoesThroughTheCurrentSlot) {
    Rig r;
    char name[kVstMaxProgNameLen];
    r.core->getProgramName(name);
    EXPECT_STREQ(name, "Init");
    r.setName("A rather long name for a program slot");
    r.core->getProgramName(name);
    EXPECT_STREQ(name, "A rather long name for ");
    NorvelleProgram* p = r.core->programSlot(0).acquire();
    EXPECT_EQ(p->getName(), u"A rather long name for a program slot");
    r.core->programSlot(0).release(p);
}

TEST(PluginCore, RenamingToJingleBallsStartsTheJingleAtOnce) {
    Rig r;
    EXPECT_FALSE(r.core->hasJingle());
    r.setName("Jingle Balls");
    EXPECT_TRUE(r.core->hasJingle());
    r.setName("Jingle Balls");  // one is enough
    EXPECT_TRUE(r.core->hasJingle());
    // It plays on the output channel and goes out as MIDI: the whole chorus
    // takes 136 eighths of 0.2 s, and then it begins again.
    const int calls = static_cast<int>(27.1 * 44100 / 512);
    for (int i = 0; i < calls; ++i) r.call(512);
    std::vector<int> ons;
    int offs = 0;
    for (const auto& block : host.midiOut)
        for (const auto& m : block) {
            if (static_cast<unsigned char>(m.midiData[0]) == 0x90) ons.push_back(m.midiData[1]);
            if (static_cast<unsigned char>(m.midiData[0]) == 0x80) ++offs;
        }
    EXPECT_EQ(ons.size(), 51u);
    EXPECT_EQ(offs, 51);
    EXPECT_EQ(r.engine->notes, 51);
    // "Jingle bells, jingle bells, jingle all the way": E E E, E E E, E G C D E.
    const std::vector<int> opening = {76, 76, 76, 76, 76, 76, 76, 79, 72, 74, 76};
    ASSERT_GE(ons.size(), opening.size());
    EXPECT_EQ(std::vector<int>(ons.begin(), ons.begin() + 11), opening);
    EXPECT_EQ(ons.back(), 72);  // ends on C
    EXPECT_EQ(host.midiOut[0][0].deltaFrames, 0);
    for (int i = 0; i < 400; ++i) r.call(512);
    EXPECT_GT(r.engine->notes, 51);  // and again
    r.setName("Something else");
    EXPECT_FALSE(r.core->hasJingle());
}

TEST(PluginCore, EndingTheJingleReleasesItsSoundingNote) {
    Rig r;
    r.setName("Jingle Balls");
    r.call(100);  // the first note has started
    ASSERT_GT(r.engine->level, -1.0f);
    r.call(100);
    ASSERT_NE(r.engine->level, 0.0f);
    r.core->setProgram(1);
    EXPECT_FALSE(r.core->hasJingle());
    host.midiOut.clear();
    r.call(128);
    ASSERT_EQ(host.midiOut.size(), 1u);
    EXPECT_EQ(static_cast<unsigned char>(host.midiOut[0][0].midiData[0]), 0x80);
    EXPECT_EQ(host.midiOut[0][0].midiData[1], 76);
    EXPECT_EQ(r.engine->level, 0.0f);
}

TEST(PluginCore, JinglePlaysOnTheConfiguredChannel) {
    Rig r;
    MidiConfigRecord config;
    config.outputMidiChannel = 5;
    r.core->midiConfig().publish(config);
    NorvelleProgram* p = r.core->programSlot(2).acquire();
    p->setName(u"Jingle Balls");
    r.core->programSlot(2).release(p);
    r.core->setProgram(2);
    EXPECT_TRUE(r.core->hasJingle());
    r.call(64);
    ASSERT_FALSE(host.midiOut.empty());
    EXPECT_EQ(static_cast<unsigned char>(host.midiOut[0][0].midiData[0]), 0x95);
}
