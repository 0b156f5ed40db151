#include "patch/MidiConfigText.h"

#include <algorithm>

#include "notation/Notation.h"
#include "patch/ProgramTextEscape.h"
#include "notation/LeadingNumbers.h"

const std::string_view MIDI_FUNCTION_NAMES[MidiConfigRecord::FUNCTION_COUNT] = {
    "ModWheel", "Rotation", "Tuning",   "Atonality", "Effect",   "Release",  "WheelScale", "VelSens", "Volume",
    "TriggerA", "TriggerB", "TriggerC", "TriggerD",  "TriggerE", "TriggerF", "TriggerG",   "TriggerH"};

const int8_t MIDI_DEFAULT_CONTROLLERS[MidiConfigRecord::FUNCTION_COUNT] = {1,  16, 17, 70, 91, 72, 18, 19, 7,
                                                                           80, 81, 82, 83, 85, 86, 87, 88};

namespace {

std::string valueText(std::string_view raw) { return narrowForDisplay(unescapeWide(raw)); }

std::string lowerCase(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

int32_t integerOr(const std::string* raw, int32_t fallback) {
    if (!raw) return fallback;
    return leadingLong(valueText(*raw)).value_or(fallback);
}

void readBoolean(const notation::Object& object, std::string_view key, bool& field) {
    const std::string* raw = object.find(key);
    if (!raw) return;
    std::string text = valueText(*raw);
    if (text == "true") field = true;
    if (text == "false") field = false;
}

void readChannel(const notation::Object& object, std::string_view key, int32_t& field) {
    const std::string* raw = object.find(key);
    if (!raw) return;
    // A text that isn't a number reads as 0, and so as -1.
    int64_t channel = static_cast<int64_t>(integerOr(raw, 0)) - 1;
    field = static_cast<int32_t>(std::clamp<int64_t>(channel, -1, 15));
}

std::string channelText(int32_t channel) { return channel < 0 ? "\"none\"" : std::to_string(channel + 1); }

}  // namespace

void assignController(MidiConfigRecord& config, int function, int controller) {
    const int old = config.controllers[function];
    if (old >= 0 && config.inverseMap[old] == function) config.inverseMap[old] = -1;
    config.controllers[function] = static_cast<int8_t>(controller);
    if (controller >= 0) config.inverseMap[controller] = static_cast<int8_t>(function);
}

int reassignedControllerCount(const MidiConfigRecord& config) {
    int count = 0;
    for (int f = 0; f < MidiConfigRecord::FUNCTION_COUNT; ++f)
        if (config.controllers[f] != MIDI_DEFAULT_CONTROLLERS[f]) ++count;
    return count;
}

MidiConfigRecord readMidiConfig(std::u16string_view sourcePath, std::string_view text) {
    MidiConfigRecord config;
    const notation::Object top = notation::parseObject(text);
    const notation::Object o = notation::parseObject(top.get("TendraneMIDIConfig"));

    readChannel(o, "MIDIReceiveChannel", config.inputMidiChannel);
    readChannel(o, "MIDITransmitChannel", config.outputMidiChannel);
    if (const std::string* raw = o.find("PitchWheelRange"))
        config.pitchWheelRange = std::clamp<int32_t>(integerOr(raw, 0), 0, 12);
    if (const std::string* raw = o.find("VelocityCurve")) {
        std::string curve = lowerCase(valueText(*raw));
        config.velocityCurve = curve == "soft"   ? MidiConfigRecord::Soft
                               : curve == "hard" ? MidiConfigRecord::Hard
                                                 : MidiConfigRecord::Standard;
    }
    readBoolean(o, "SupportProgramChanges", config.supportMidiProgramChange);
    readBoolean(o, "SelectWithMIDI", config.autoSelect);
    for (int f = 0; f < MidiConfigRecord::FUNCTION_COUNT; ++f) {
        const std::string* raw = o.find(std::string(MIDI_FUNCTION_NAMES[f]) + "_CC");
        if (!raw) continue;
        assignController(config, f, std::clamp<int32_t>(integerOr(raw, -1), -1, 127));
    }
    config.sourcePath = std::u16string(sourcePath);
    config.sourceText = std::string(text);
    return config;
}

std::string writeMidiConfig(const MidiConfigRecord& config, bool includePath) {
    static const char* const curves[] = {"\"soft\"", "\"standard\"", "\"hard\""};
    std::string t = "TendraneMIDIConfig: {\n";
    if (includePath && !config.sourcePath.empty()) t += "\tPath: " + escapeWide(config.sourcePath) + "\n";
    t += "\tMIDIReceiveChannel: " + channelText(config.inputMidiChannel) + "\n";
    t += "\tMIDITransmitChannel: " + channelText(config.outputMidiChannel) + "\n";
    t += "\tPitchWheelRange: " + std::to_string(config.pitchWheelRange) + "\n";
    const int curve = config.velocityCurve >= 0 && config.velocityCurve <= 2 ? config.velocityCurve : 1;
    t += std::string("\tVelocityCurve: ") + curves[curve] + "\n";
    t += std::string("\tSupportProgramChanges: ") + (config.supportMidiProgramChange ? "true" : "false") + "\n";
    t += std::string("\tSelectWithMIDI: ") + (config.autoSelect ? "true" : "false") + "\n";
    for (int f = 0; f < MidiConfigRecord::FUNCTION_COUNT; ++f) {
        if (config.controllers[f] == MIDI_DEFAULT_CONTROLLERS[f]) continue;
        t += '\t';
        t += MIDI_FUNCTION_NAMES[f];
        t += "_CC: ";
        t += config.controllers[f] < 0 ? std::string("\"none\"") : std::to_string(config.controllers[f]);
        t += '\n';
    }
    t += "}\n";
    return t;
}
