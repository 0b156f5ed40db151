#include "plugin/AudioEffectX.h"

AudioEffectX::AudioEffectX(audioMasterCallback master, VstInt32 programs, VstInt32 params)
    : AudioEffect(master, programs, params) {}

VstIntPtr AudioEffectX::dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) {
    switch (opcode) {
    case effProcessEvents:
        return ptr ? processEvents(static_cast<VstEvents*>(ptr)) : 0;
    case effCanBeAutomated:
        return canParameterBeAutomated(index) ? 1 : 0;
    case effGetProgramNameIndexed:
        return ptr && getProgramNameIndexed(static_cast<VstInt32>(value), index, static_cast<char*>(ptr)) ? 1
                                                                                                        : 0;
    case effGetEffectName:
        return ptr && getEffectName(static_cast<char*>(ptr)) ? 1 : 0;
    case effGetVendorString:
        return ptr && getVendorString(static_cast<char*>(ptr)) ? 1 : 0;
    case effGetProductString:
        return ptr && getProductString(static_cast<char*>(ptr)) ? 1 : 0;
    case effGetVendorVersion:
        return getVendorVersion();
    case effCanDo:
        return ptr ? canDo(static_cast<char*>(ptr)) : 0;
    case effGetTailSize:
        return getGetTailSize();
    case effGetVstVersion:
        return 2400;
    case effGetNumMidiInputChannels:
        return getNumMidiInputChannels();
    case effGetNumMidiOutputChannels:
        return getNumMidiOutputChannels();
    default:
        if (opcode >= effProcessEvents) return 0;
        return AudioEffect::dispatcher(opcode, index, value, ptr, opt);
    }
}

void AudioEffectX::resume() { wantEvents(); }

bool AudioEffectX::getEffectName(char*) { return false; }
bool AudioEffectX::getVendorString(char*) { return false; }
bool AudioEffectX::getProductString(char*) { return false; }
VstInt32 AudioEffectX::canDo(char*) { return 0; }
VstInt32 AudioEffectX::processEvents(VstEvents*) { return 0; }
bool AudioEffectX::getProgramNameIndexed(VstInt32, VstInt32, char*) { return false; }

void AudioEffectX::wantEvents(VstInt32 filter) { callHost(audioMasterWantMidi, 0, filter); }

bool AudioEffectX::sendVstEventsToHost(VstEvents* events) {
    return callHost(audioMasterProcessEvents, 0, 0, events) == 1;
}

bool AudioEffectX::ioChanged() { return callHost(audioMasterIOChanged) != 0; }
VstInt32 AudioEffectX::getInputLatency() { return static_cast<VstInt32>(callHost(audioMasterGetInputLatency)); }
VstInt32 AudioEffectX::getOutputLatency() {
    return static_cast<VstInt32>(callHost(audioMasterGetOutputLatency));
}
VstInt32 AudioEffectX::getCurrentProcessLevel() {
    return static_cast<VstInt32>(callHost(audioMasterGetCurrentProcessLevel));
}
VstInt32 AudioEffectX::getAutomationState() {
    return static_cast<VstInt32>(callHost(audioMasterGetAutomationState));
}
void* AudioEffectX::getTimeInfo(VstInt32 filter) {
    return reinterpret_cast<void*>(callHost(audioMasterGetTime, 0, filter));
}
bool AudioEffectX::beginEdit(VstInt32 index) { return callHost(audioMasterBeginEdit, index) != 0; }
bool AudioEffectX::endEdit(VstInt32 index) { return callHost(audioMasterEndEdit, index) != 0; }
