// MIDI into PluginCore: the host's events through processEvents, learning of
// controllers, the controllers and program changes of each engine block's
// run, and the interface's audition notes.
#include <string>

#include "platform/Exceptions.h"
#include "plugin/PluginCore.h"

namespace {

constexpr int LAST_TRIGGER = 16;
constexpr int LAST_PARAMETER_FUNCTION = 8;

// Tuning, Effect and Volume have a centre detent: 64 lands on 0.5 exactly.
bool centreDetented(int function) { return function == 2 || function == 4 || function == 8; }

float controllerValue(int function, int value) {
    if (centreDetented(function)) return static_cast<float>(value > 1 ? value - 1 : 0) / 126.0f;
    return static_cast<float>(value) / 127.0f;
}

}  // namespace

VstInt32 PluginCore::processEvents(VstEvents* events) {
    if (needsReset_.load()) prepareEngine();
    if (!events) return 0;
    MidiConfigRecord* config = midiConfig_.acquire();
    const int32_t inputChannel = config->inputMidiChannel;
    int32_t target = learnTarget_.load();
    for (VstInt32 i = 0; i < events->numEvents; ++i) {
        const VstEvent* event = events->events[i];
        if (!event || event->type != kVstMidiType) continue;
        if (pendingCount_ >= PENDING_CAPACITY) break;
        const auto* midi = reinterpret_cast<const VstMidiEvent*>(event);
        const auto status = static_cast<uint8_t>(midi->midiData[0]);
        const auto data1 = static_cast<uint8_t>(midi->midiData[1]);
        const auto data2 = static_cast<uint8_t>(midi->midiData[2]);
        if (status < 0x80 || status > 0xEF || data1 > 127 || data2 > 127) continue;
        if (inputChannel >= 0 && (status & 0x0F) != inputChannel) continue;

        if (target >= 0 && (status & 0xF0) == 0xB0) {
            // This controller now drives the function waiting to learn; the
            // event itself makes no sound.
            MidiConfigRecord learned = *config;
            for (auto& number : learned.controllers)
                if (number == static_cast<int8_t>(data1)) number = -1;
            if (target < MidiConfigRecord::FUNCTION_COUNT) learned.controllers[target] = static_cast<int8_t>(data1);
            learned.rebuildInverseMap();
            learnTarget_.store(-1);
            target = -1;
            midiConfig_.publish(learned);
            int32_t expected = 0;
            guiRefresh_.compare_exchange_strong(expected, 1);
            continue;
        }

        TimedEvent e;
        e.time = (midi->deltaFrames > 0 ? midi->deltaFrames : 0) + hostClock_;
        e.status = status;
        e.data1 = data1;
        e.data2 = data2;
        pending_[pendingCount_++] = e;
    }
    midiConfig_.release(config);
    return 1;
}

void PluginCore::actOnRun(const TimedEvent* run, int count, const MidiConfigRecord& config) {
    for (int i = 0; i < count; ++i) {
        const TimedEvent& e = run[i];
        switch (e.status & 0xF0) {
        case 0xB0: {
            const int function = config.inverseMap[e.data1 & 0x7F];
            if (function < 0) break;
            if (function <= LAST_PARAMETER_FUNCTION) {
                parameterChanged(function, controllerValue(function, e.data2));
            } else if (function <= LAST_TRIGGER && e.data2 != 0) {
                // A full ring loses the trigger.
                if (triggerRing_.freeSpace() > 0) triggerRing_.write(function);
            }
            break;
        }
        case 0xC0:
            if (config.supportMidiProgramChange && e.data1 < PROGRAM_COUNT && e.data1 != currentProgram_.load())
                programChangeFromMidi(e.data1);
            break;
        default:
            break;
        }
    }
}

void PluginCore::preview(const std::string& key, int note, int velocity) {
    MidiConfigRecord* config = midiConfig_.acquire();
    const int32_t channel = config->outputMidiChannel > 0 ? config->outputMidiChannel : 0;
    midiConfig_.release(config);
    TimedEvent e;
    e.data1 = static_cast<uint8_t>(note);
    if (key == "down") {
        if (note < 0 || note > 127) throw Exception("Note out of range: " + std::to_string(note));
        e.status = static_cast<uint8_t>(0x90 | channel);
        e.data2 = static_cast<uint8_t>(velocity < 1 ? 1 : velocity > 127 ? 127 : velocity);
    } else if (key == "up") {
        if (note < 0 || note > 127) throw Exception("Note out of range: " + std::to_string(note));
        e.status = static_cast<uint8_t>(0x80 | channel);
        e.data2 = 0;
    } else {
        throw Exception("Unknown key param: " + key + " (should be \"up\" or \"down\")");
    }
    injectEvent(e);
}
