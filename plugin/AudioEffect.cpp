#include "plugin/AudioEffect.h"

#include <cstring>

namespace {

AudioEffect* objectOf(AEffect* e) { return e ? static_cast<AudioEffect*>(e->object) : nullptr; }

}  // namespace

AudioEffect::AudioEffect(audioMasterCallback master, VstInt32 programs, VstInt32 params)
    : numPrograms(programs), numParams(params), audioMaster(master) {
    std::memset(&cEffect, 0, sizeof cEffect);
    cEffect.magic = kEffectMagic;
    cEffect.dispatcher = &AudioEffect::dispatchEntry;
    cEffect.process = &AudioEffect::processEntry;
    cEffect.setParameter = &AudioEffect::setParameterEntry;
    cEffect.getParameter = &AudioEffect::getParameterEntry;
    cEffect.processReplacing = &AudioEffect::processReplacingEntry;
    cEffect.numPrograms = programs;
    cEffect.numParams = params;
    cEffect.numInputs = 1;
    cEffect.numOutputs = 2;
    cEffect.ioRatio = 1.0f;
    cEffect.object = this;
    cEffect.version = 1;
}

AudioEffect::~AudioEffect() = default;

VstIntPtr AudioEffect::dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) {
    switch (opcode) {
    case effOpen:
        open();
        return 0;
    case effClose:
        close();
        return 0;
    case effSetProgram:
        if (value >= 0 && value < numPrograms) setProgram(static_cast<VstInt32>(value));
        return 0;
    case effGetProgram:
        return getProgram();
    case effSetProgramName:
        if (ptr) setProgramName(static_cast<char*>(ptr));
        return 0;
    case effGetProgramName:
        if (ptr) getProgramName(static_cast<char*>(ptr));
        return 0;
    case effGetParamLabel:
        if (ptr) getParameterLabel(index, static_cast<char*>(ptr));
        return 0;
    case effGetParamDisplay:
        if (ptr) getParameterDisplay(index, static_cast<char*>(ptr));
        return 0;
    case effGetParamName:
        if (ptr) getParameterName(index, static_cast<char*>(ptr));
        return 0;
    case effSetSampleRate:
        setSampleRate(opt);
        return 0;
    case effSetBlockSize:
        setBlockSize(static_cast<VstInt32>(value));
        return 0;
    case effMainsChanged:
        if (value)
            resume();
        else
            suspend();
        return 0;
    case effGetChunk:
        return ptr ? getChunk(static_cast<void**>(ptr), index != 0) : 0;
    case effSetChunk:
        return setChunk(ptr, static_cast<VstInt32>(value), index != 0);
    default:
        return 0;
    }
}

void AudioEffect::setParameter(VstInt32, float) {}
float AudioEffect::getParameter(VstInt32) { return 0.0f; }
void AudioEffect::setProgramName(char*) {}
void AudioEffect::getProgramName(char* name) { *name = 0; }
void AudioEffect::getParameterLabel(VstInt32, char* label) { *label = 0; }
void AudioEffect::getParameterDisplay(VstInt32, char* text) { *text = 0; }
void AudioEffect::getParameterName(VstInt32, char* text) { *text = 0; }
VstInt32 AudioEffect::getChunk(void**, bool) { return 0; }
VstInt32 AudioEffect::setChunk(void*, VstInt32, bool) { return 0; }

VstIntPtr AudioEffect::callHost(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) {
    return audioMaster ? audioMaster(&cEffect, opcode, index, value, ptr, opt) : 0;
}

VstInt32 AudioEffect::getMasterVersion() {
    return static_cast<VstInt32>(callHost(audioMasterVersion));
}

void AudioEffect::setParameterAutomated(VstInt32 index, float value) {
    setParameter(index, value);
    callHost(audioMasterAutomate, index, 0, nullptr, value);
}

// Entry points: nothing thrown inside may reach the host.

VstIntPtr VST_CALL AudioEffect::dispatchEntry(AEffect* e, VstInt32 opcode, VstInt32 index, VstIntPtr value,
                                              void* ptr, float opt) {
    AudioEffect* self = objectOf(e);
    if (!self) return 0;
    VstIntPtr result = 0;
    try {
        result = self->dispatcher(opcode, index, value, ptr, opt);
    } catch (...) {
        result = 0;
    }
    if (opcode == effClose) {
        delete self;
        return 1;
    }
    return result;
}

void VST_CALL AudioEffect::processEntry(AEffect* e, float** inputs, float** outputs, VstInt32 frames) {
    try {
        if (AudioEffect* self = objectOf(e)) self->process(inputs, outputs, frames);
    } catch (...) {
    }
}

void VST_CALL AudioEffect::processReplacingEntry(AEffect* e, float** inputs, float** outputs,
                                                 VstInt32 frames) {
    try {
        if (AudioEffect* self = objectOf(e)) self->processReplacing(inputs, outputs, frames);
    } catch (...) {
    }
}

void VST_CALL AudioEffect::setParameterEntry(AEffect* e, VstInt32 index, float value) {
    try {
        if (AudioEffect* self = objectOf(e)) self->setParameter(index, value);
    } catch (...) {
    }
}

float VST_CALL AudioEffect::getParameterEntry(AEffect* e, VstInt32 index) {
    try {
        if (AudioEffect* self = objectOf(e)) return self->getParameter(index);
    } catch (...) {
    }
    return 0.0f;
}
