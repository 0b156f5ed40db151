// The 21 host parameters of PluginCore: reading, setting and showing them.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "patch/ChangeStamp.h"
#include "plugin/ParameterText.h"
#include "plugin/PluginCore.h"

namespace {

constexpr std::size_t DISPLAY_LIMIT = 24;  // bytes, the terminating zero included

void copyText(char* target, const std::string& text, std::size_t limit) {
    const std::size_t n = std::min(text.size(), limit - 1);
    std::memcpy(target, text.data(), n);
    target[n] = 0;
}

bool validIndex(VstInt32 index) { return index >= 0 && index < PluginCore::PARAMETER_COUNT; }

// Steps 1 to 3 on one slot: false when the slot held the value already.
bool storeParameter(VersionedCell<NorvelleProgram>& cell, int index, float value) {
    NorvelleProgram* record = cell.acquire();
    const float old = record->params[index].exchange(value);
    if (old == value) {
        cell.release(record);
        return false;
    }
    record->changeStamp.exchange(nextChangeStamp());
    // Moving the mod wheel doesn't dirty a patch.
    if (index != 0) record->modified = true;
    cell.release(record);
    return true;
}

}  // namespace

bool PluginCore::parameterChanged(int index, float value) {
    if (!validIndex(index)) return false;
    if (!storeParameter(programs_[currentProgram_.load()], index, value)) return false;
    if (previewing_.load()) storeParameter(preview_, index, value);
    int32_t expected = 0;
    guiRefresh_.compare_exchange_strong(expected, 1);
    return true;
}

void PluginCore::replaceCurrentProgram(const NorvelleProgram& record) {
    programs_[currentProgram_.load()].publish(record);
    if (previewing_.load()) preview_.publish(record);
    revision_.fetch_add(1);
    guiRefresh_.exchange(2);
    programEntered();
}

NorvelleProgram PluginCore::currentProgramRecord() {
    VersionedCell<NorvelleProgram>& cell = programs_[currentProgram_.load()];
    NorvelleProgram* record = cell.acquire();
    NorvelleProgram copy(*record);
    cell.release(record);
    return copy;
}

void PluginCore::setParameter(VstInt32 index, float value) {
    // A host may send anything; the records hold 0 to 1.
    if (!(value >= 0.0f)) value = 0.0f;
    value = std::min(value, 1.0f);
    parameterChanged(index, value);
}

float PluginCore::getParameter(VstInt32 index) {
    if (!validIndex(index)) return 0.0f;
    VersionedCell<NorvelleProgram>& cell = programs_[currentProgram_.load()];
    NorvelleProgram* record = cell.acquire();
    const float value = record->params[index].load();
    cell.release(record);
    return value;
}

void PluginCore::getParameterName(VstInt32 index, char* text) {
    copyText(text, ParameterText::name(index), DISPLAY_LIMIT);
}

void PluginCore::getParameterLabel(VstInt32 index, char* label) {
    copyText(label, ParameterText::label(index), DISPLAY_LIMIT);
}

void PluginCore::getParameterDisplay(VstInt32 index, char* text) {
    if (!validIndex(index)) {
        *text = 0;
        return;
    }
    const float value = getParameter(index);
    copyText(text, ParameterText::display(index, value), DISPLAY_LIMIT);
}
