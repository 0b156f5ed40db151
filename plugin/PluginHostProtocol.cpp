// PluginCore's side of the host protocol: names, capabilities, the opcodes
// the base classes leave open, and the song chunk.
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "patch/Chunk.h"
#include "patch/StartupBank.h"
#include "plugin/EditorKeys.h"
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

// Applies a chunk to the instance as it is read: each slot is published as
// soon as its block has been read, so slots stored before a failure keep
// their new contents.
class LiveChunkTarget : public ChunkTarget {
public:
    using Apply = std::function<void(int slot, const NorvelleProgram& record, bool fromBank)>;
    LiveChunkTarget(int current, Apply store, std::function<void(const MidiConfigRecord&)> config,
                    std::function<void()> changed)
        : current_(current), store_(std::move(store)), config_(std::move(config)), changed_(std::move(changed)) {}
    int currentSlot() const override { return current_; }
    void storeProgram(int slot, const NorvelleProgram& record, bool fromBank) override {
        store_(slot, record, fromBank);
    }
    void setMidiConfig(const MidiConfigRecord& config) override { config_(config); }
    void everythingChanged() override { changed_(); }

private:
    int current_;
    Apply store_;
    std::function<void(const MidiConfigRecord&)> config_;
    std::function<void()> changed_;
};

}  // namespace

VstIntPtr PluginCore::dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) {
    switch (opcode) {
    case effGetPlugCategory:
        return PLUG_CATEGORY_SYNTH;
    case effEditKeyDown: {
        if (!editorKeyDown) return 0;
        const std::optional<Fomal::KeyEvent> key = keyEventFromHost(index, value, opt);
        return key && editorKeyDown(*key) ? 1 : 0;
    }
    case effEditKeyUp:
        // The editor acts on presses; a release is the host's.
        return 0;
    case effEditGetRect:
    case effEditOpen:
    case effEditClose:
    case effEditIdle:
        return editorCall(opcode, ptr);
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
        LiveChunkTarget target(
            currentProgram_.load(),
            [this](int slot, const NorvelleProgram& record, bool fromBank) {
                if (bankLink_ && fromBank) bankLink_->remember(slot, record.stamp());
                programs_[slot].publish(record);
            },
            [this](const MidiConfigRecord& config) { midiConfig_.publish(config); },
            [this] {
                revision_.fetch_add(1);
                guiRefresh_.exchange(2);
                programEntered();
            });
        const std::size_t consumed =
            readChunk(static_cast<const uint8_t*>(data), static_cast<std::size_t>(byteSize), isPreset, target);
        return static_cast<VstInt32>(consumed);
    } catch (...) {
        return 0;
    }
}
