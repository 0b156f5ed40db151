// MIDI configuration text from arbitrary bytes: every field read stays in its
// range, the inverse map agrees with the controllers, and the written text
// reads back to the same configuration.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "patch/MidiConfigText.h"
#include "platform/Exceptions.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    MidiConfigRecord config;
    try {
        config = readMidiConfig(u"", text);
    } catch (const Exception&) {
        return 0;
    }
    if (config.inputMidiChannel < -1 || config.inputMidiChannel > 15) std::abort();
    if (config.outputMidiChannel < -1 || config.outputMidiChannel > 15) std::abort();
    if (config.pitchWheelRange < 0 || config.pitchWheelRange > 12) std::abort();
    if (config.velocityCurve < 0 || config.velocityCurve > 2) std::abort();
    for (int c = 0; c < 128; ++c) {
        const int f = config.inverseMap[c];
        if (f < -1 || f >= MidiConfigRecord::FUNCTION_COUNT) std::abort();
        if (f >= 0 && config.controllers[f] != c) std::abort();
    }
    const std::string written = writeMidiConfig(config, false);
    MidiConfigRecord again = readMidiConfig(u"", written);
    for (int f = 0; f < MidiConfigRecord::FUNCTION_COUNT; ++f)
        if (again.controllers[f] != config.controllers[f]) std::abort();
    if (writeMidiConfig(again, false) != written) std::abort();
    return 0;
}
