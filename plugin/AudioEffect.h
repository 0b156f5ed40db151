// The plug-in side of the basic VST 2 protocol: an object that owns the
// AEffect record the host sees, routes the host's calls to virtual
// operations, and wraps the host callback. Exceptions never leave through
// the entry points.
#pragma once

#include "plugin/VstAbi.h"

class AudioEffect {
public:
    AudioEffect(audioMasterCallback audioMaster, VstInt32 numPrograms, VstInt32 numParams);
    virtual ~AudioEffect();
    AudioEffect(const AudioEffect&) = delete;
    AudioEffect& operator=(const AudioEffect&) = delete;

    // Routes a host call to the operations below; opcodes it doesn't know
    // answer 0.
    virtual VstIntPtr dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt);

    virtual void open() {}
    virtual void close() {}
    virtual void suspend() {}
    virtual void resume() {}
    virtual void setSampleRate(float rate) { sampleRate = rate; }
    virtual void setBlockSize(VstInt32 size) { blockSize = size; }
    virtual void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) = 0;
    // Adds into the outputs.
    virtual void process(float** inputs, float** outputs, VstInt32 sampleFrames) = 0;
    virtual void setParameter(VstInt32 index, float value);
    virtual float getParameter(VstInt32 index);
    virtual void setProgram(VstInt32 program) { curProgram = program; }
    virtual VstInt32 getProgram() { return curProgram; }
    virtual void setProgramName(char* name);
    virtual void getProgramName(char* name);
    virtual void getParameterLabel(VstInt32 index, char* label);
    virtual void getParameterDisplay(VstInt32 index, char* text);
    virtual void getParameterName(VstInt32 index, char* text);
    virtual VstInt32 getChunk(void** data, bool isPreset);
    virtual VstInt32 setChunk(void* data, VstInt32 byteSize, bool isPreset);

    AEffect* getAeffect() { return &cEffect; }
    float getSampleRate() const { return sampleRate; }
    VstInt32 getBlockSize() const { return blockSize; }
    VstInt32 getNumPrograms() const { return numPrograms; }
    VstInt32 getNumParams() const { return numParams; }

    // Record set-up.
    void setUniqueID(VstInt32 id) { cEffect.uniqueID = id; }
    void setNumInputs(VstInt32 n) { cEffect.numInputs = n; }
    void setNumOutputs(VstInt32 n) { cEffect.numOutputs = n; }
    void setInitialDelay(VstInt32 delay) { cEffect.initialDelay = delay; }
    void canProcessReplacing(bool state = true) { setFlag(effFlagsCanReplacing, state); }
    void programsAreChunks(bool state = true) { setFlag(effFlagsProgramChunks, state); }
    void isSynth(bool state = true) { setFlag(effFlagsIsSynth, state); }
    void noTail(bool state = true) { setFlag(effFlagsNoSoundInStop, state); }
    void hasEditor(bool state = true) { setFlag(effFlagsHasEditor, state); }

    // Host callback wrappers.
    VstIntPtr callHost(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0, void* ptr = nullptr,
                       float opt = 0.0f);
    // The host's version; 0 when there is no host.
    VstInt32 getMasterVersion();
    // Sets the parameter and tells the host, for automation recording.
    void setParameterAutomated(VstInt32 index, float value);

protected:
    float sampleRate = 44100.0f;
    VstInt32 blockSize = 1024;
    VstInt32 numPrograms;
    VstInt32 numParams;
    VstInt32 curProgram = 0;
    audioMasterCallback audioMaster;
    AEffect cEffect;

private:
    void setFlag(VstInt32 flag, bool state) {
        cEffect.flags = state ? (cEffect.flags | flag) : (cEffect.flags & ~flag);
    }

    static VstIntPtr VST_CALL dispatchEntry(AEffect* e, VstInt32 opcode, VstInt32 index, VstIntPtr value,
                                            void* ptr, float opt);
    static void VST_CALL processEntry(AEffect* e, float** inputs, float** outputs, VstInt32 frames);
    static void VST_CALL processReplacingEntry(AEffect* e, float** inputs, float** outputs,
                                               VstInt32 frames);
    static void VST_CALL setParameterEntry(AEffect* e, VstInt32 index, float value);
    static float VST_CALL getParameterEntry(AEffect* e, VstInt32 index);
};
