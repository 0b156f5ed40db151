// The plug-in binary under a strict host: loaded through its two exports,
// opened and closed many times, played at several rates and block sizes,
// fed bad chunks, floods of events and calls from a second thread.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <random>
#include <thread>

#include "tests/host/HostPatch.h"
#include "tests/host/PluginHost.h"
#include "tests/support/AllocationCounter.h"

using testhost::HostRecord;
using testhost::Instance;
using testhost::Library;

namespace {

// The plug-in keeps its startup bank in the machine's preferences: the tests
// keep theirs in the build tree.
const bool privatePreferences = [] {
    return setenv("XDG_CONFIG_HOME", TENDRANE_HOST_CONFIG, 1) == 0;
}();

Library& library() { return Library::get(TENDRANE_PLUGIN_BINARY); }

std::unique_ptr<Instance> open(float rate = 44100.0f, int block = 512) {
    auto instance = std::make_unique<Instance>(library().pluginMain, rate, block);
    if (instance->effect) {
        std::vector<uint8_t> chunk = testhost::programChunk(testhost::quietFactoryProgram());
        instance->call(effSetChunk, 1, static_cast<VstIntPtr>(chunk.size()), chunk.data());
    }
    return instance;
}

std::vector<uint8_t> chunkOf(Instance& in, bool program) {
    void* data = nullptr;
    const auto size = in.call(effGetChunk, program ? 1 : 0, 0, &data);
    if (size <= 0 || !data) return {};
    return std::vector<uint8_t>(static_cast<uint8_t*>(data), static_cast<uint8_t*>(data) + size);
}

float maxDifference(const std::vector<float>& a, const std::vector<float>& b) {
    float d = 0.0f;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) d = std::max(d, std::fabs(a[i] - b[i]));
    return d;
}

float peak(const std::vector<float>& a) {
    float p = 0.0f;
    for (float v : a) p = std::max(p, std::fabs(v));
    return p;
}

// NaN, infinity or a denormal anywhere.
int badSamples(const std::vector<float>& a) {
    int bad = 0;
    for (float v : a)
        if (!std::isfinite(v) || std::fpclassify(v) == FP_SUBNORMAL) ++bad;
    return bad;
}

}  // namespace

class OwnHost : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(privatePreferences);
        ASSERT_TRUE(library().pluginMain) << library().error;
    }
};

TEST_F(OwnHost, ExportsBothEntryPoints) {
    EXPECT_NE(library().pluginMain, nullptr);
    EXPECT_NE(library().legacyMain, nullptr);
}

TEST_F(OwnHost, HostWithoutVersionGetsNoPlugin) {
    HostRecord::get().versionAnswer.store(0);
    AEffect* e = library().pluginMain(&testhost::hostCallback);
    HostRecord::get().versionAnswer.store(2400);
    EXPECT_EQ(e, nullptr);
}

TEST_F(OwnHost, OpensAndClosesAHundredTimes) {
    const int versions = HostRecord::get().count(audioMasterVersion);
    for (int i = 0; i < 100; ++i) {
        Instance in(library().pluginMain, 44100.0f, 256);
        ASSERT_NE(in.effect, nullptr);
        ASSERT_EQ(in.effect->magic, kEffectMagic);
        std::vector<float> l, r;
        in.render({{0, 0x90, 60, 100}}, 512, l, r);
        ASSERT_EQ(badSamples(l), 0);
    }
    EXPECT_GE(HostRecord::get().count(audioMasterVersion) - versions, 100);
}

TEST_F(OwnHost, EffectRecordAsTheHostSeesIt) {
    auto in = open();
    AEffect* e = in->effect;
    EXPECT_EQ(e->numInputs, 0);
    EXPECT_EQ(e->numOutputs, 2);
    EXPECT_EQ(e->numPrograms, 16);
    EXPECT_EQ(e->numParams, 21);
    EXPECT_EQ(e->initialDelay, 64);
    EXPECT_EQ(e->version, 1);
    EXPECT_TRUE(e->flags & effFlagsIsSynth);
    EXPECT_TRUE(e->flags & effFlagsCanReplacing);
    EXPECT_TRUE(e->flags & effFlagsProgramChunks);
    EXPECT_TRUE(e->flags & effFlagsHasEditor);
    char text[80] = {};
    in->call(effGetProductString, 0, 0, text);
    EXPECT_STREQ(text, "Quillbrook Tendrane VST");
    EXPECT_GT(HostRecord::get().count(audioMasterWantMidi), 0);
}

TEST_F(OwnHost, CanDoStrings) {
    auto in = open();
    for (const char* yes : {"receiveVstEvents", "receiveVstMidiEvent", "sendVstEvents", "sendVstMidiEvent",
                            "conformsToWindowRules"}) {
        char text[64];
        std::strcpy(text, yes);
        EXPECT_EQ(in->call(effCanDo, 0, 0, text), 1) << yes;
    }
    for (const char* no : {"receiveVstTimeInfo", "offline", "midiProgramNames", "bypass", "sendVstTimeInfo"}) {
        char text[64];
        std::strcpy(text, no);
        EXPECT_EQ(in->call(effCanDo, 0, 0, text), 0) << no;
    }
}

TEST_F(OwnHost, EveryRateAndBlockSizeGivesTheSameAudio) {
    for (float rate : {44100.0f, 48000.0f, 96000.0f}) {
        const auto events = testhost::phrase(rate);
        const int64_t frames = static_cast<int64_t>(rate);
        std::vector<float> refL, refR;
        {
            auto in = open(rate, 64);
            in->render(events, frames, refL, refR);
        }
        ASSERT_GT(peak(refL), 0.01f) << rate;
        // The first 64 samples are the delay: silence.
        for (int i = 0; i < 64; ++i) ASSERT_EQ(refL[static_cast<std::size_t>(i)], 0.0f);
        EXPECT_EQ(badSamples(refL) + badSamples(refR), 0);
        for (int block : {1, 63, 65, 512, 4096}) {
            auto in = open(rate, block);
            std::vector<float> l, r;
            in->render(events, frames, l, r);
            EXPECT_EQ(maxDifference(l, refL), 0.0f) << rate << " Hz, block " << block;
            EXPECT_EQ(maxDifference(r, refR), 0.0f) << rate << " Hz, block " << block;
            EXPECT_EQ(badSamples(l) + badSamples(r), 0) << rate << " Hz, block " << block;
        }
    }
}

TEST_F(OwnHost, LegacyEntryWithFlushToZeroSoundsTheSame) {
    const auto events = testhost::phrase(44100.0f);
    std::vector<float> viaPluginMain, viaMain, r;
    {
        auto in = open();
        in->render(events, 44100, viaPluginMain, r);
    }
    // main turns on flush-to-zero in its caller: give it a thread of its own.
    std::thread([&] {
        Instance in(library().legacyMain, 44100.0f, 512);
        std::vector<uint8_t> chunk = testhost::programChunk(testhost::quietFactoryProgram());
        in.call(effSetChunk, 1, static_cast<VstIntPtr>(chunk.size()), chunk.data());
        std::vector<float> rr;
        in.render(events, 44100, viaMain, rr);
    }).join();
    ASSERT_EQ(viaMain.size(), viaPluginMain.size());
    EXPECT_LT(maxDifference(viaMain, viaPluginMain), 1e-4f);
}

TEST_F(OwnHost, ZeroSampleBlocksChangeNothing) {
    const auto events = testhost::phrase(44100.0f);
    std::vector<float> refL, refR;
    {
        auto in = open(44100.0f, 128);
        in->render(events, 22050, refL, refR);
    }
    auto in = open(44100.0f, 128);
    std::vector<float> l(22050), r(22050);
    std::size_t next = 0;
    for (int64_t pos = 0; pos < 22050; pos += 128) {
        const int n = static_cast<int>(std::min<int64_t>(128, 22050 - pos));
        std::vector<VstMidiEvent> due;
        while (next < events.size() && events[next].time < pos + n) {
            const auto& e = events[next++];
            due.push_back(Instance::midi(static_cast<int>(e.time - pos), e.status, e.data1, e.data2));
        }
        float* outs[2] = {l.data() + pos, r.data() + pos};
        in->effect->processReplacing(in->effect, nullptr, outs, 0);
        if (!due.empty()) in->sendEvents(due);
        in->effect->processReplacing(in->effect, nullptr, outs, 0);
        in->effect->processReplacing(in->effect, nullptr, outs, n);
    }
    EXPECT_EQ(maxDifference(l, refL), 0.0f);
    EXPECT_EQ(maxDifference(r, refR), 0.0f);
}

TEST_F(OwnHost, RandomParametersReadBackWithTheirTexts) {
    auto in = open();
    std::mt19937 random(7);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    std::vector<float> l, r;
    for (int round = 0; round < 2000; ++round) {
        const int index = static_cast<int>(random() % 21);
        const float value = unit(random);
        in->effect->setParameter(in->effect, index, value);
        ASSERT_EQ(in->effect->getParameter(in->effect, index), value);
        char name[64] = {}, label[64] = {}, display[64] = {};
        std::memset(display, 'x', sizeof display - 1);
        in->call(effGetParamName, index, 0, name);
        in->call(effGetParamLabel, index, 0, label);
        in->call(effGetParamDisplay, index, 0, display);
        ASSERT_GT(std::strlen(name), 0u);
        ASSERT_GT(std::strlen(display), 0u);
        ASSERT_LT(std::strlen(display), 24u);
        if (round % 100 == 0) {
            in->render({{0, 0x90, static_cast<uint8_t>(40 + round / 100), 100}}, 256, l, r);
            ASSERT_EQ(badSamples(l) + badSamples(r), 0);
        }
    }
}

TEST_F(OwnHost, ChunksRoundTripByteForByte) {
    auto in = open();
    in->effect->setParameter(in->effect, 5, 0.33f);
    for (bool program : {true, false}) {
        const std::vector<uint8_t> first = chunkOf(*in, program);
        ASSERT_FALSE(first.empty());
        auto other = std::make_unique<Instance>(library().pluginMain, 44100.0f, 512);
        std::vector<uint8_t> copy = first;
        EXPECT_EQ(other->call(effSetChunk, program ? 1 : 0, static_cast<VstIntPtr>(copy.size()), copy.data()),
                  static_cast<VstIntPtr>(copy.size()));
        EXPECT_EQ(chunkOf(*other, program), first) << (program ? "program" : "bank");
        EXPECT_FLOAT_EQ(other->effect->getParameter(other->effect, 5), 0.33f);
    }
}

TEST_F(OwnHost, BadChunksAreRefusedAndChangeNothing) {
    auto in = open();
    const std::vector<uint8_t> bank = chunkOf(*in, false);
    const std::vector<uint8_t> program = chunkOf(*in, true);
    std::mt19937 random(11);
    std::vector<std::vector<uint8_t>> bad;
    bad.push_back({});
    bad.push_back(std::vector<uint8_t>(bank.begin(), bank.begin() + 19));
    bad.push_back(std::vector<uint8_t>(bank.begin(), bank.end() - 1));
    bad.push_back(std::vector<uint8_t>(bank.begin(), bank.begin() + static_cast<long>(bank.size() / 2)));
    for (int i = 0; i < 20; ++i) {
        std::vector<uint8_t> flipped = bank;
        flipped[random() % flipped.size()] ^= static_cast<uint8_t>(1u << (random() % 8));
        bad.push_back(flipped);
    }
    std::vector<uint8_t> noise(1 << 20);
    for (auto& b : noise) b = static_cast<uint8_t>(random());
    bad.push_back(noise);
    for (bool asProgram : {false, true}) {
        for (auto& chunk : bad) {
            uint8_t none = 0;
            void* data = chunk.empty() ? static_cast<void*>(&none) : chunk.data();
            EXPECT_EQ(in->call(effSetChunk, asProgram ? 1 : 0, static_cast<VstIntPtr>(chunk.size()), data), 0)
                << chunk.size() << " bytes";
        }
    }
    EXPECT_EQ(chunkOf(*in, false), bank);
    EXPECT_EQ(chunkOf(*in, true), program);
}

TEST_F(OwnHost, FiveThousandEventsInOneCall) {
    auto in = open();
    std::vector<VstMidiEvent> flood;
    for (int i = 0; i < 5000; ++i)
        flood.push_back(Instance::midi(i % 512, static_cast<uint8_t>(i % 2 ? 0x80 : 0x90),
                                       static_cast<uint8_t>(36 + i % 60), 100));
    in->sendEvents(flood);
    std::vector<float> l, r;
    in->render({}, 44100, l, r);
    EXPECT_EQ(badSamples(l) + badSamples(r), 0);
    EXPECT_GT(peak(l), 0.0f);
}

TEST_F(OwnHost, SysexIsDropped) {
    auto in = open();
    std::vector<uint8_t> sysexBytes = {0xF0, 0x7E, 0x7F, 0x09, 0x01, 0xF7};
    struct {
        VstInt32 type, byteSize, deltaFrames, flags, dumpBytes;
        VstIntPtr resvd1;
        char* sysexDump;
        VstIntPtr resvd2;
    } sysex{kVstSysExType, 0, 0, 0, 6, 0, reinterpret_cast<char*>(sysexBytes.data()), 0};
    sysex.byteSize = static_cast<VstInt32>(sizeof sysex - 8);
    std::vector<VstIntPtr> block(4, 0);
    auto* events = reinterpret_cast<VstEvents*>(block.data());
    events->numEvents = 1;
    events->events[0] = reinterpret_cast<VstEvent*>(&sysex);
    in->call(effProcessEvents, 0, 0, events);
    std::vector<float> l, r;
    in->render({}, 8192, l, r);
    EXPECT_EQ(peak(l), 0.0f);
    in->render({{0, 0x90, 60, 100}}, 8192, l, r);
    EXPECT_GT(peak(l), 0.0f);
}

TEST_F(OwnHost, ControllerDrivesItsParameter) {
    auto in = open();
    std::vector<float> l, r;
    in->render({{0, 0xB0, 16, 127}, {10, 0xB0, 91, 64}}, 1024, l, r);  // Rotation, Effect
    EXPECT_EQ(in->effect->getParameter(in->effect, 1), 1.0f);
    EXPECT_EQ(in->effect->getParameter(in->effect, 4), 0.5f);
}

TEST_F(OwnHost, ProgramChangeFollowsTheMidiConfiguration) {
    auto in = open();
    std::vector<float> l, r;
    in->render({{0, 0xC0, 5, 0}}, 1024, l, r);
    EXPECT_EQ(in->call(effGetProgram), 0);  // program changes are off by default

    std::vector<NorvelleProgram> slots(16, testhost::quietFactoryProgram());
    MidiConfigRecord config;
    config.supportMidiProgramChange = true;
    std::vector<uint8_t> bank;
    writeChunk(bank, false, slots, 0, config);
    ASSERT_EQ(in->call(effSetChunk, 0, static_cast<VstIntPtr>(bank.size()), bank.data()), static_cast<VstIntPtr>(bank.size()));
    in->render({{0, 0xC0, 5, 0}}, 1024, l, r);
    EXPECT_EQ(in->call(effGetProgram), 5);
    in->call(effSetProgram, 0, 2);
    EXPECT_EQ(in->call(effGetProgram), 2);
}

TEST_F(OwnHost, JingleNotesGoOutAsMidi) {
    auto in = open();
    {
        std::lock_guard<std::mutex> lock(HostRecord::get().midiLock);
        HostRecord::get().midiOut.clear();
    }
    char name[32] = "Jingle Balls";
    in->call(effSetProgramName, 0, 0, name);
    std::vector<float> l, r;
    in->render({}, 3 * 44100, l, r);
    std::lock_guard<std::mutex> lock(HostRecord::get().midiLock);
    int noteOns = 0;
    for (const auto& m : HostRecord::get().midiOut)
        if ((static_cast<uint8_t>(m.midiData[0]) & 0xF0) == 0x90 && m.midiData[2] != 0) ++noteOns;
    EXPECT_GT(noteOns, 0);
    EXPECT_GT(HostRecord::get().count(audioMasterProcessEvents), 0);
}

TEST_F(OwnHost, ParametersAndChunksFromAnotherThreadWhileProcessing) {
    auto in = open(44100.0f, 256);
    const std::vector<uint8_t> program = chunkOf(*in, true);
    std::atomic<bool> done{false};
    std::thread interface([&] {
        std::mt19937 random(3);
        int round = 0;
        while (!done.load()) {
            in->effect->setParameter(in->effect, static_cast<VstInt32>(random() % 21),
                                     static_cast<float>(random() % 1000) / 1000.0f);
            if (++round % 50 == 0) {
                std::vector<uint8_t> copy = program;
                in->call(effSetChunk, 1, static_cast<VstIntPtr>(copy.size()), copy.data());
            }
            std::this_thread::yield();
        }
    });
    std::vector<float> l, r;
    for (int i = 0; i < 20; ++i) {
        in->render({{0, 0x90, static_cast<uint8_t>(50 + i), 100}, {2000, 0x80, static_cast<uint8_t>(50 + i), 0}},
                   4096, l, r);
        EXPECT_EQ(badSamples(l) + badSamples(r), 0);
    }
    done.store(true);
    interface.join();
}

TEST_F(OwnHost, ProcessReplacingAllocatesNothing) {
    auto in = open(44100.0f, 256);
    std::vector<float> l(256), r(256);
    float* outs[2] = {l.data(), r.data()};
    // Warm up: the first blocks after a reset and the reverb's buffer.
    for (int i = 0; i < 50; ++i) in->effect->processReplacing(in->effect, nullptr, outs, 256);
    std::vector<VstMidiEvent> notes = {Instance::midi(0, 0x90, 60, 100), Instance::midi(100, 0x90, 67, 90),
                                       Instance::midi(200, 0xB0, 16, 30)};
    in->sendEvents(notes);
    testhost::Instance* raw = in.get();
    std::size_t allocations = 0;
    {
        testsupport::AllocationCounter counter;
        for (int i = 0; i < 200; ++i) raw->effect->processReplacing(raw->effect, nullptr, outs, 256);
        allocations = counter.count();
    }
    EXPECT_EQ(allocations, 0u);
    // The counter does see the plug-in's own allocations.
    testsupport::AllocationCounter counter;
    void* data = nullptr;
    raw->call(effGetChunk, 0, 0, &data);
    EXPECT_GT(counter.count(), 0u);
}
