// The extended VST 2 protocol on top of AudioEffect: events in and out,
// names and capabilities, and the host queries of the extended set.
#pragma once

#include "plugin/AudioEffect.h"

class AudioEffectX : public AudioEffect {
public:
    AudioEffectX(audioMasterCallback audioMaster, VstInt32 numPrograms, VstInt32 numParams);

    // Handles the extended opcodes (25 and above); the rest go to AudioEffect.
    VstIntPtr dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) override;

    // Asks the host for MIDI events.
    void resume() override;

    virtual bool getEffectName(char* name);
    virtual bool getVendorString(char* text);
    virtual bool getProductString(char* text);
    virtual VstInt32 getVendorVersion() { return 0; }
    // 1 yes, -1 no, 0 don't know.
    virtual VstInt32 canDo(char* text);
    virtual VstInt32 processEvents(VstEvents* events);
    virtual bool canParameterBeAutomated(VstInt32) { return true; }
    virtual bool getProgramNameIndexed(VstInt32 category, VstInt32 index, char* text);
    virtual VstInt32 getGetTailSize() { return 0; }
    virtual VstInt32 getNumMidiInputChannels() { return 0; }
    virtual VstInt32 getNumMidiOutputChannels() { return 0; }

    // Host wrappers.
    void wantEvents(VstInt32 filter = 1);
    bool sendVstEventsToHost(VstEvents* events);
    bool ioChanged();
    VstInt32 getInputLatency();
    VstInt32 getOutputLatency();
    VstInt32 getCurrentProcessLevel();
    VstInt32 getAutomationState();
    // The host's transport record, or null; filter selects the fields wanted.
    void* getTimeInfo(VstInt32 filter);
    bool beginEdit(VstInt32 index);
    bool endEdit(VstInt32 index);
};
