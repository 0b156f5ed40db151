// PluginCore's side of the host protocol: names, capabilities, the opcodes
// the base classes leave open, and the song chunk.
#include <cstring>
#include <string>
#include <vector>

#include "patch/Chunk.h"
#include "patch/StartupBank.h"
#include "plugin/PluginCore.h"

namespace {

constexpr VstInt32 PLUG_CATEGORY_SYNTH = 2;

const char* const CAPABILITIES[] = {
    "conformsToWindowRules", "receiveVstEvents", "receiveVstMidiEvent", "sendVstEvents", "sendVstMidiEvent",
};

void copyText(char* target, const char* text, std::size_t limit) {
    const std::size_t n = std::min(std::strlen(text), limit - 1);
    std::memcpy(target, text, n);
    target[n] = 0;
}

// Collects what a chunk holds, so that nothing is applied before all of it
// has read without error.
class StagedChunk : public ChunkTarget {
public:
    explicit StagedChunk(int current) : current_(current) {}
    int currentSlot() const override { return current_; }
    void storeProgram(int slot, const NorvelleProgram& record, bool fromBank) override {
        slots.push_back(slot);
        programs.push_back(record);
        this->fromBank = fromBank;
    }
    void setMidiConfig(const MidiConfigRecord& config) override {
        midiConfig = config;
        hasMidiConfig = true;
    }
    void everythingChanged() override { complete = true; }

    std::vector<int> slots;
    std::vector<NorvelleProgram> programs;
    MidiConfigRecord midiConfig;
    bool hasMidiConfig = false;
    bool fromBank = false;
    bool complete = false;

private:
    int current_;
};

}  // namespace

VstIntPtr PluginCore::dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) {
    switch (opcode) {
    case effGetPlugCategory:
        return PLUG_CATEGORY_SYNTH;
    default:
        return AudioEffectX::dispatcher(opcode, index, value, ptr, opt);
    }
}

bool PluginCore::getEffectName(char* name) {
    copyText(name, "Tendrane", kVstMaxEffectNameLen);
    return true;
}

bool PluginCore::getVendorString(char* text) {
    copyText(text, "Korvex Development", kVstMaxVendorStrLen);
    return true;
}

bool PluginCore::getProductString(char* text) {
    copyText(text, "Quillbrook Tendrane VST", kVstMaxProductStrLen);
    return true;
}

VstInt32 PluginCore::canDo(char* text) {
    for (const char* capability : CAPABILITIES)
        if (std::strcmp(text, capability) == 0) return 1;
    return 0;
}

bool PluginCore::getProgramNameIndexed(VstInt32, VstInt32 index, char* text) {
    if (index < 0 || index >= PROGRAM_COUNT) return false;
    VersionedCell<NorvelleProgram>& cell = programs_[index];
    NorvelleProgram* record = cell.acquire();
    const std::u16string name = record->getName();
    cell.release(record);
    int k = 0;
    for (char16_t c : name) {
        if (k == kVstMaxProgNameLen - 1) break;
        text[k++] = c < 256 ? static_cast<char>(c) : '?';
    }
    text[k] = 0;
    return true;
}

VstInt32 PluginCore::getChunk(void** data, bool isPreset) {
    try {
        std::vector<NorvelleProgram> slots(PROGRAM_COUNT);
        for (int i = 0; i < PROGRAM_COUNT; ++i) {
            NorvelleProgram* record = programs_[i].acquire();
            slots[static_cast<std::size_t>(i)] = *record;
            programs_[i].release(record);
        }
        MidiConfigRecord* config = midiConfig_.acquire();
        const MidiConfigRecord midi = *config;
        midiConfig_.release(config);
        writeChunk(chunk_, isPreset, slots, currentProgram_.load(), midi);
        *data = chunk_.data();
        return static_cast<VstInt32>(chunk_.size());
    } catch (...) {
        *data = nullptr;
        return 0;
    }
}

VstInt32 PluginCore::setChunk(void* data, VstInt32 byteSize, bool isPreset) {
    if (!data || byteSize <= 0) return 0;
    try {
        StagedChunk staged(currentProgram_.load());
        readChunk(static_cast<const uint8_t*>(data), static_cast<std::size_t>(byteSize), isPreset, staged);
        if (!staged.complete) return 0;
        for (std::size_t i = 0; i < staged.programs.size(); ++i) {
            const int slot = staged.slots[i];
            if (bankLink_ && staged.fromBank) bankLink_->remember(slot, staged.programs[i].stamp());
            programs_[slot].publish(staged.programs[i]);
        }
        if (staged.hasMidiConfig) midiConfig_.publish(staged.midiConfig);
        revision_.fetch_add(1);
        guiRefresh_.exchange(2);
        programEntered();
        return 1;
    } catch (...) {
        return 0;
    }
}
