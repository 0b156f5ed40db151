// The host protocol of the plug-in core: the effect record, names,
// capabilities and the opcodes routed by the dispatcher.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "patch/Chunk.h"
#include "patch/MidiConfigRecord.h"
#include "patch/NorvelleProgram.h"
#include "plugin/PluginCore.h"
#include "tests/plugin/BlockTestEngine.h"

namespace {

int automated = -1;
float automatedValue = -1;
int beginEdits = 0;
int endEdits = 0;

VstIntPtr VST_CALL recordingHost(AEffect*, VstInt32 opcode, VstInt32 index, VstIntPtr, void*, float opt) {
    switch (opcode) {
    case audioMasterVersion:
        return 2400;
    case audioMasterAutomate:
        automated = index;
        automatedValue = opt;
        return 1;
    case audioMasterBeginEdit:
        ++beginEdits;
        return 1;
    case audioMasterEndEdit:
        ++endEdits;
        return 1;
    default:
        return 0;
    }
}

std::unique_ptr<PluginCore> makeCore() {
    return std::make_unique<PluginCore>(&recordingHost, std::make_unique<BlockTestEngine>());
}

VstIntPtr call(PluginCore& core, VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0, void* ptr = nullptr) {
    AEffect* e = core.getAeffect();
    return e->dispatcher(e, opcode, index, value, ptr, 0.0f);
}

}  // namespace

TEST(PluginProtocol, EffectRecordDescribesAStereoSynthWithChunks) {
    auto core = makeCore();
    const AEffect* e = core->getAeffect();
    EXPECT_EQ(e->magic, kEffectMagic);
    EXPECT_EQ(std::memcmp(&e->magic, "PtsV", 4), 0);  // stored little-endian
    EXPECT_EQ(e->numPrograms, 16);
    EXPECT_EQ(e->numParams, 21);
    EXPECT_EQ(e->numInputs, 0);
    EXPECT_EQ(e->numOutputs, 2);
    EXPECT_EQ(e->version, 1);
    EXPECT_EQ(e->initialDelay, 64);
    EXPECT_NE(e->uniqueID, 0);
    // The editor is announced where this build makes its windows.
    EXPECT_EQ(e->flags, effFlagsIsSynth | effFlagsCanReplacing | effFlagsProgramChunks | effFlagsHasEditor);
    EXPECT_NE(e->processReplacing, nullptr);
    EXPECT_EQ(e->object, core.get());
}

TEST(PluginProtocol, NamesOfEffectVendorAndProduct) {
    auto core = makeCore();
    char text[80];
    EXPECT_EQ(call(*core, effGetEffectName, 0, 0, text), 1);
    EXPECT_STREQ(text, "Tendrane");
    EXPECT_EQ(call(*core, effGetVendorString, 0, 0, text), 1);
    EXPECT_STREQ(text, "Korvex Development");
    EXPECT_EQ(call(*core, effGetProductString, 0, 0, text), 1);
    EXPECT_STREQ(text, "Quillbrook Tendrane VST");
}

TEST(PluginProtocol, CanDoAnswersOneForExactlyFiveStrings) {
    auto core = makeCore();
    for (const char* yes : {"conformsToWindowRules", "receiveVstEvents", "receiveVstMidiEvent", "sendVstEvents",
                            "sendVstMidiEvent"}) {
        char text[64];
        std::strcpy(text, yes);
        EXPECT_EQ(call(*core, effCanDo, 0, 0, text), 1) << yes;
    }
    for (const char* no : {"receiveVstTimeInfo", "receivevstevents", "receiveVstEvents ", "", "offline", "bypass"}) {
        char text[64];
        std::strcpy(text, no);
        EXPECT_EQ(call(*core, effCanDo, 0, 0, text), 0) << no;
    }
}

TEST(PluginProtocol, PluginIsAnInstrumentWithMidiChannels) {
    auto core = makeCore();
    EXPECT_EQ(call(*core, effGetPlugCategory), 2);
    EXPECT_EQ(call(*core, effGetVstVersion), 2400);
    EXPECT_EQ(call(*core, effGetNumMidiInputChannels), 16);
    EXPECT_EQ(call(*core, effGetNumMidiOutputChannels), 16);
    EXPECT_EQ(call(*core, effCanBeAutomated, 3), 1);
    EXPECT_EQ(call(*core, effEditGetRect), 0);
}

TEST(PluginProtocol, ProgramsAreSwitchedAndNamedThroughTheDispatcher) {
    auto core = makeCore();
    char name[32] = "Deep Root";
    call(*core, effSetProgram, 0, 3);
    EXPECT_EQ(call(*core, effGetProgram), 3);
    call(*core, effSetProgramName, 0, 0, name);
    char back[32] = {};
    call(*core, effGetProgramName, 0, 0, back);
    EXPECT_STREQ(back, "Deep Root");
    char indexed[32] = {};
    EXPECT_EQ(call(*core, effGetProgramNameIndexed, 3, 0, indexed), 1);
    EXPECT_STREQ(indexed, "Deep Root");
    EXPECT_EQ(call(*core, effGetProgramNameIndexed, 16, 0, indexed), 0);
    call(*core, effSetProgram, 0, 99);
    EXPECT_EQ(call(*core, effGetProgram), 3);
}

TEST(PluginProtocol, AutomatedParameterTellsTheHost) {
    auto core = makeCore();
    core->setParameterAutomated(5, 0.4f);
    EXPECT_EQ(automated, 5);
    EXPECT_FLOAT_EQ(automatedValue, 0.4f);
    EXPECT_FLOAT_EQ(core->getParameter(5), 0.4f);
    const int b = beginEdits, en = endEdits;
    core->beginEdit(5);
    core->endEdit(5);
    EXPECT_EQ(beginEdits, b + 1);
    EXPECT_EQ(endEdits, en + 1);
}

TEST(PluginProtocol, ChunkRoundTripsByteForByte) {
    auto core = makeCore();
    core->setParameter(3, 0.3f);
    char name[32] = "Held Bell";
    core->setProgramName(name);
    for (bool preset : {true, false}) {
        void* data = nullptr;
        const VstInt32 size = core->getChunk(&data, preset);
        ASSERT_GT(size, 0);
        const std::vector<uint8_t> first(static_cast<uint8_t*>(data), static_cast<uint8_t*>(data) + size);
        auto other = makeCore();
        EXPECT_EQ(other->setChunk(const_cast<uint8_t*>(first.data()), size, preset), size) << "every byte is consumed";
        void* again = nullptr;
        const VstInt32 size2 = other->getChunk(&again, preset);
        ASSERT_EQ(size2, size);
        EXPECT_EQ(std::memcmp(again, first.data(), first.size()), 0);
        EXPECT_FLOAT_EQ(other->getParameter(3), 0.3f);
    }
}

TEST(PluginProtocol, BadChunksAreRefusedAndChangeNothing) {
    auto core = makeCore();
    void* data = nullptr;
    const VstInt32 size = core->getChunk(&data, false);
    std::vector<uint8_t> good(static_cast<uint8_t*>(data), static_cast<uint8_t*>(data) + size);
    core->setParameter(3, 0.9f);
    EXPECT_EQ(core->setChunk(good.data(), 0, false), 0);
    EXPECT_EQ(core->setChunk(nullptr, size, false), 0);
    EXPECT_EQ(core->setChunk(good.data(), size / 2, false), 0);
    std::vector<uint8_t> flipped = good;
    flipped[flipped.size() / 2] ^= 0x10;
    EXPECT_EQ(core->setChunk(flipped.data(), static_cast<VstInt32>(flipped.size()), false), 0);
    // A bank chunk offered as a single program is refused too.
    EXPECT_EQ(core->setChunk(good.data(), size, true), 0);
    EXPECT_FLOAT_EQ(core->getParameter(3), 0.9f);
}

TEST(PluginProtocol, ABankFailingHalfwayKeepsTheSlotsReadBeforeTheFailure) {
    // A well-formed bank whose fourth block carries an implementation from
    // the future: the first three slots are stored before the block fails,
    // and they keep their new contents while the rest stay as they were.
    std::vector<NorvelleProgram> slots(PROGRAM_SLOT_COUNT);
    for (int i = 0; i < PROGRAM_SLOT_COUNT; ++i) slots[i].setName(u"Song " + std::u16string(1, char16_t(u'A' + i)));
    slots[3].implementation = CURRENT_IMPLEMENTATION + 1;
    std::vector<uint8_t> bank;
    writeChunk(bank, false, slots, 0, MidiConfigRecord{});

    auto core = makeCore();
    EXPECT_EQ(core->setChunk(bank.data(), static_cast<VstInt32>(bank.size()), false), 0);
    char name[64] = {};
    ASSERT_TRUE(core->getProgramNameIndexed(0, 0, name));
    EXPECT_STREQ(name, "Song A");
    ASSERT_TRUE(core->getProgramNameIndexed(0, 2, name));
    EXPECT_STREQ(name, "Song C");
    ASSERT_TRUE(core->getProgramNameIndexed(0, 3, name));
    EXPECT_STRNE(name, "Song D");
    ASSERT_TRUE(core->getProgramNameIndexed(0, 15, name));
    EXPECT_STRNE(name, "Song P");
}
