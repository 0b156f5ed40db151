#include <gtest/gtest.h>

#include <random>
#include <string>

#include "patch/MidiConfigText.h"

namespace {

MidiConfigRecord read(const std::string& fields) {
    return readMidiConfig(u"", "TendraneMIDIConfig: {\n" + fields + "\n}\n");
}

void expectSame(const MidiConfigRecord& a, const MidiConfigRecord& b) {
    EXPECT_EQ(a.inputMidiChannel, b.inputMidiChannel);
    EXPECT_EQ(a.outputMidiChannel, b.outputMidiChannel);
    EXPECT_EQ(a.pitchWheelRange, b.pitchWheelRange);
    EXPECT_EQ(a.velocityCurve, b.velocityCurve);
    EXPECT_EQ(a.supportMidiProgramChange, b.supportMidiProgramChange);
    EXPECT_EQ(a.autoSelect, b.autoSelect);
    for (int f = 0; f < MidiConfigRecord::FUNCTION_COUNT; ++f) EXPECT_EQ(a.controllers[f], b.controllers[f]) << f;
    for (int c = 0; c < 128; ++c) EXPECT_EQ(a.inverseMap[c], b.inverseMap[c]) << c;
}

}  // namespace

TEST(MidiConfigTextTest, DefaultsWriteNoControllerLines) {
    MidiConfigRecord config;
    EXPECT_EQ(writeMidiConfig(config, true),
              "TendraneMIDIConfig: {\n"
              "\tMIDIReceiveChannel: \"none\"\n"
              "\tMIDITransmitChannel: 1\n"
              "\tPitchWheelRange: 12\n"
              "\tVelocityCurve: \"standard\"\n"
              "\tSupportProgramChanges: false\n"
              "\tSelectWithMIDI: true\n"
              "}\n");
    EXPECT_EQ(reassignedControllerCount(config), 0);
}

TEST(MidiConfigTextTest, NewRecordHoldsTheDefaults) {
    MidiConfigRecord config;
    EXPECT_EQ(config.inputMidiChannel, -1);
    EXPECT_EQ(config.outputMidiChannel, 0);
    EXPECT_EQ(config.pitchWheelRange, 12);
    EXPECT_EQ(config.velocityCurve, 1);
    EXPECT_FALSE(config.supportMidiProgramChange);
    EXPECT_TRUE(config.autoSelect);
    for (int f = 0; f < MidiConfigRecord::FUNCTION_COUNT; ++f) {
        EXPECT_EQ(config.controllers[f], MIDI_DEFAULT_CONTROLLERS[f]);
        EXPECT_EQ(config.inverseMap[MIDI_DEFAULT_CONTROLLERS[f]], f);
    }
    EXPECT_EQ(config.inverseMap[0], -1);
    EXPECT_EQ(config.inverseMap[91], 4);  // Effect
}

TEST(MidiConfigTextTest, ChangedFieldsAndControllersAreWritten) {
    MidiConfigRecord config;
    config.sourcePath = u"/home/me/live.qbmc";
    config.inputMidiChannel = 9;
    config.outputMidiChannel = -1;
    config.pitchWheelRange = 2;
    config.velocityCurve = MidiConfigRecord::Hard;
    config.supportMidiProgramChange = true;
    config.autoSelect = false;
    assignController(config, 0, 2);   // ModWheel
    assignController(config, 16, -1); // TriggerH
    EXPECT_EQ(writeMidiConfig(config, true),
              "TendraneMIDIConfig: {\n"
              "\tPath: '/home/me/live.qbmc'\n"
              "\tMIDIReceiveChannel: 10\n"
              "\tMIDITransmitChannel: \"none\"\n"
              "\tPitchWheelRange: 2\n"
              "\tVelocityCurve: \"hard\"\n"
              "\tSupportProgramChanges: true\n"
              "\tSelectWithMIDI: false\n"
              "\tModWheel_CC: 2\n"
              "\tTriggerH_CC: \"none\"\n"
              "}\n");
    EXPECT_EQ(writeMidiConfig(config, false).find("Path"), std::string::npos);
    EXPECT_EQ(reassignedControllerCount(config), 2);
}

TEST(MidiConfigTextTest, ControllerNumbersAreLimited) {
    MidiConfigRecord config = read("\tVolume_CC: 200\n\tEffect_CC: -5\n\tTuning_CC: \"none\"\n\tRelease_CC: junk");
    EXPECT_EQ(config.controllers[8], 127);
    EXPECT_EQ(config.controllers[4], -1);
    EXPECT_EQ(config.controllers[2], -1);
    EXPECT_EQ(config.controllers[5], -1);
    EXPECT_EQ(config.inverseMap[127], 8);
    EXPECT_EQ(config.inverseMap[7], -1);   // Volume's old controller is free
    EXPECT_EQ(config.inverseMap[91], -1);  // so is Effect's
    EXPECT_EQ(config.inverseMap[17], -1);
}

TEST(MidiConfigTextTest, ChannelsAreNumberLessOneAndLimited) {
    EXPECT_EQ(read("MIDIReceiveChannel: 1").inputMidiChannel, 0);
    EXPECT_EQ(read("MIDIReceiveChannel: 16").inputMidiChannel, 15);
    EXPECT_EQ(read("MIDIReceiveChannel: 17").inputMidiChannel, 15);
    EXPECT_EQ(read("MIDIReceiveChannel: 0").inputMidiChannel, -1);
    EXPECT_EQ(read("MIDIReceiveChannel: -40").inputMidiChannel, -1);
    EXPECT_EQ(read("MIDIReceiveChannel: 'none'").inputMidiChannel, -1);
    EXPECT_EQ(read("MIDITransmitChannel: \"none\"").outputMidiChannel, -1);
    EXPECT_EQ(read("MIDITransmitChannel: 0x10").outputMidiChannel, 15);
    EXPECT_EQ(read("").outputMidiChannel, 0);
}

TEST(MidiConfigTextTest, PitchWheelCurveAndBooleans) {
    EXPECT_EQ(read("PitchWheelRange: 24").pitchWheelRange, 12);
    EXPECT_EQ(read("PitchWheelRange: -2").pitchWheelRange, 0);
    EXPECT_EQ(read("PitchWheelRange: 7").pitchWheelRange, 7);
    EXPECT_EQ(read("VelocityCurve: \"SOFT\"").velocityCurve, MidiConfigRecord::Soft);
    EXPECT_EQ(read("VelocityCurve: Hard").velocityCurve, MidiConfigRecord::Hard);
    EXPECT_EQ(read("VelocityCurve: \"steep\"").velocityCurve, MidiConfigRecord::Standard);
    EXPECT_TRUE(read("SupportProgramChanges: true").supportMidiProgramChange);
    EXPECT_FALSE(read("SelectWithMIDI: false").autoSelect);
    EXPECT_TRUE(read("SelectWithMIDI: no").autoSelect);
}

TEST(MidiConfigTextTest, KeepsItsSource) {
    std::string text = "TendraneMIDIConfig: { PitchWheelRange: 3 }";
    MidiConfigRecord config = readMidiConfig(u"/x/y.qbmc", text);
    EXPECT_EQ(config.sourcePath, u"/x/y.qbmc");
    EXPECT_EQ(config.sourceText, text);
}

TEST(MidiConfigTextTest, ReassigningAControllerTakesItFromItsFunction) {
    MidiConfigRecord config = read("ModWheel_CC: 16");
    EXPECT_EQ(config.controllers[0], 16);
    EXPECT_EQ(config.inverseMap[16], 0);
    EXPECT_EQ(config.inverseMap[1], -1);
}

TEST(MidiConfigTextTest, RandomConfigurationsSurviveTheirText) {
    std::mt19937 rng(7);
    for (int round = 0; round < 300; ++round) {
        MidiConfigRecord config;
        config.inputMidiChannel = static_cast<int32_t>(rng() % 17) - 1;
        config.outputMidiChannel = static_cast<int32_t>(rng() % 17) - 1;
        config.pitchWheelRange = static_cast<int32_t>(rng() % 13);
        config.velocityCurve = static_cast<int32_t>(rng() % 3);
        config.supportMidiProgramChange = rng() & 1;
        config.autoSelect = rng() & 1;
        for (int n = rng() % 5; n > 0; --n)
            assignController(config, static_cast<int>(rng() % 17), static_cast<int>(rng() % 129) - 1);
        MidiConfigRecord read = readMidiConfig(u"", writeMidiConfig(config, false));
        // Equal controllers; the inverse map follows the written order, so
        // compare it with a map rebuilt the same way.
        MidiConfigRecord expected = config;
        MidiConfigRecord fresh;
        for (int f = 0; f < MidiConfigRecord::FUNCTION_COUNT; ++f)
            if (config.controllers[f] != MIDI_DEFAULT_CONTROLLERS[f]) assignController(fresh, f, config.controllers[f]);
        for (int c = 0; c < 128; ++c) expected.inverseMap[c] = fresh.inverseMap[c];
        expectSame(read, expected);
    }
}

#include "patch/MidiConfigDefaults.h"
#include "patch/Preferences.h"

namespace {

class MemoryPrefs : public PreferenceBackend {
public:
    void lock() override {}
    void unlock() override {}
    std::string read() override { return value; }
    void write(std::string_view bytes) override { value = std::string(bytes); }
    std::string value;
};

}  // namespace

TEST(MidiConfigTextTest, MadeDefaultConfigurationIsWhatNewInstancesRead) {
    MemoryPrefs store;
    MidiConfigRecord none = loadDefaultMidiConfig(store);
    EXPECT_EQ(writeMidiConfig(none, false), writeMidiConfig(MidiConfigRecord(), false));

    MidiConfigRecord config;
    config.sourcePath = u"/a/b.qbmc";
    config.pitchWheelRange = 4;
    assignController(config, 2, 55);
    makeMidiConfigDefault(config, store);
    const std::string stored = Preferences::read("defaultMidiConfig", store).value_or("");
    EXPECT_EQ(stored, writeMidiConfig(config, false));
    EXPECT_EQ(stored.find("Path"), std::string::npos);
    MidiConfigRecord back = loadDefaultMidiConfig(store);
    EXPECT_EQ(back.pitchWheelRange, 4);
    EXPECT_EQ(back.controllers[2], 55);

    store.value = "damaged";
    EXPECT_EQ(loadDefaultMidiConfig(store).pitchWheelRange, 12);
}
