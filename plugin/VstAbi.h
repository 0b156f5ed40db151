// The binary interface between a VST 2 host and a plug-in, declared from the
// public knowledge of its layout: the effect record, the two callback
// directions with their opcodes, and the event blocks. Only what this
// plug-in uses or answers is named.
#pragma once

#include <cstdint>

#if defined(_WIN32) && !defined(_WIN64)
#define VST_CALL __cdecl
#else
#define VST_CALL
#endif

struct AEffect;

using VstIntPtr = intptr_t;
using VstInt32 = int32_t;

// Host -> plug-in.
using AEffectDispatcherProc = VstIntPtr(VST_CALL*)(AEffect* effect, VstInt32 opcode, VstInt32 index,
                                                   VstIntPtr value, void* ptr, float opt);
using AEffectProcessProc = void(VST_CALL*)(AEffect* effect, float** inputs, float** outputs,
                                           VstInt32 sampleFrames);
using AEffectProcessDoubleProc = void(VST_CALL*)(AEffect* effect, double** inputs, double** outputs,
                                                 VstInt32 sampleFrames);
using AEffectSetParameterProc = void(VST_CALL*)(AEffect* effect, VstInt32 index, float parameter);
using AEffectGetParameterProc = float(VST_CALL*)(AEffect* effect, VstInt32 index);

// Plug-in -> host.
using audioMasterCallback = VstIntPtr(VST_CALL*)(AEffect* effect, VstInt32 opcode, VstInt32 index,
                                                 VstIntPtr value, void* ptr, float opt);

constexpr VstInt32 kEffectMagic = ('V' << 24) | ('s' << 16) | ('t' << 8) | 'P';

struct AEffect {
    VstInt32 magic;
    AEffectDispatcherProc dispatcher;
    AEffectProcessProc process;  // accumulating; old hosts only
    AEffectSetParameterProc setParameter;
    AEffectGetParameterProc getParameter;
    VstInt32 numPrograms;
    VstInt32 numParams;
    VstInt32 numInputs;
    VstInt32 numOutputs;
    VstInt32 flags;
    VstIntPtr resvd1;
    VstIntPtr resvd2;
    VstInt32 initialDelay;
    VstInt32 realQualities;
    VstInt32 offQualities;
    float ioRatio;
    void* object;  // the plug-in object
    void* user;
    VstInt32 uniqueID;
    VstInt32 version;
    AEffectProcessProc processReplacing;
    AEffectProcessDoubleProc processDoubleReplacing;
    char future[56];
};

enum AEffectFlags : VstInt32 {
    effFlagsHasEditor = 1 << 0,
    effFlagsCanReplacing = 1 << 4,
    effFlagsProgramChunks = 1 << 5,
    effFlagsIsSynth = 1 << 8,
    effFlagsNoSoundInStop = 1 << 9,
};

// Dispatcher opcodes.
enum AEffectOpcodes : VstInt32 {
    effOpen = 0,
    effClose = 1,
    effSetProgram = 2,
    effGetProgram = 3,
    effSetProgramName = 4,
    effGetProgramName = 5,
    effGetParamLabel = 6,
    effGetParamDisplay = 7,
    effGetParamName = 8,
    effSetSampleRate = 10,
    effSetBlockSize = 11,
    effMainsChanged = 12,
    effEditGetRect = 13,
    effEditOpen = 14,
    effEditClose = 15,
    effEditIdle = 19,
    effGetChunk = 23,
    effSetChunk = 24,
    // From here on the extended set.
    effProcessEvents = 25,
    effCanBeAutomated = 26,
    effString2Parameter = 27,
    effGetProgramNameIndexed = 29,
    effGetInputProperties = 33,
    effGetOutputProperties = 34,
    effGetPlugCategory = 35,
    effSetSpeakerArrangement = 42,
    effGetEffectName = 45,
    effGetVendorString = 47,
    effGetProductString = 48,
    effGetVendorVersion = 49,
    effVendorSpecific = 50,
    effCanDo = 51,
    effGetTailSize = 52,
    effGetParameterProperties = 56,
    effGetVstVersion = 58,
    effEditKeyDown = 59,
    effEditKeyUp = 60,
    effSetEditKnobMode = 61,
    effStartProcess = 71,
    effStopProcess = 72,
    effSetProcessPrecision = 77,
    effGetNumMidiInputChannels = 78,
    effGetNumMidiOutputChannels = 79,
};

// Host callback opcodes.
enum AudioMasterOpcodes : VstInt32 {
    audioMasterAutomate = 0,
    audioMasterVersion = 1,
    audioMasterCurrentId = 2,
    audioMasterIdle = 3,
    audioMasterWantMidi = 6,
    audioMasterGetTime = 7,
    audioMasterProcessEvents = 8,
    audioMasterIOChanged = 13,
    audioMasterSizeWindow = 15,
    audioMasterGetSampleRate = 16,
    audioMasterGetBlockSize = 17,
    audioMasterGetInputLatency = 18,
    audioMasterGetOutputLatency = 19,
    audioMasterGetCurrentProcessLevel = 23,
    audioMasterGetAutomationState = 24,
    audioMasterGetVendorString = 32,
    audioMasterGetProductString = 33,
    audioMasterGetVendorVersion = 34,
    audioMasterCanDo = 37,
    audioMasterUpdateDisplay = 42,
    audioMasterBeginEdit = 43,
    audioMasterEndEdit = 44,
};

// String limits of the interface, terminating zero included.
constexpr int kVstMaxProgNameLen = 24;
constexpr int kVstMaxParamStrLen = 8;
constexpr int kVstMaxEffectNameLen = 32;
constexpr int kVstMaxVendorStrLen = 64;
constexpr int kVstMaxProductStrLen = 64;

enum VstEventTypes : VstInt32 { kVstMidiType = 1, kVstSysExType = 6 };

// The keys a host forwards to an editor (effEditKeyDown and effEditKeyUp:
// index the character, value the virtual key, opt the modifiers).
enum VstVirtualKey : VstInt32 {
    VKEY_BACK = 1, VKEY_TAB, VKEY_CLEAR, VKEY_RETURN, VKEY_PAUSE, VKEY_ESCAPE, VKEY_SPACE, VKEY_NEXT, VKEY_END,
    VKEY_HOME, VKEY_LEFT, VKEY_UP, VKEY_RIGHT, VKEY_DOWN, VKEY_PAGEUP, VKEY_PAGEDOWN, VKEY_SELECT, VKEY_PRINT,
    VKEY_ENTER, VKEY_SNAPSHOT, VKEY_INSERT, VKEY_DELETE, VKEY_HELP, VKEY_NUMPAD0, VKEY_NUMPAD1, VKEY_NUMPAD2,
    VKEY_NUMPAD3, VKEY_NUMPAD4, VKEY_NUMPAD5, VKEY_NUMPAD6, VKEY_NUMPAD7, VKEY_NUMPAD8, VKEY_NUMPAD9, VKEY_MULTIPLY,
    VKEY_ADD, VKEY_SEPARATOR, VKEY_SUBTRACT, VKEY_DECIMAL, VKEY_DIVIDE, VKEY_F1, VKEY_F2, VKEY_F3, VKEY_F4, VKEY_F5,
    VKEY_F6, VKEY_F7, VKEY_F8, VKEY_F9, VKEY_F10, VKEY_F11, VKEY_F12, VKEY_NUMLOCK, VKEY_SCROLL, VKEY_SHIFT,
    VKEY_CONTROL, VKEY_ALT, VKEY_EQUALS
};

enum VstModifierKey : VstInt32 {
    MODIFIER_SHIFT = 1 << 0,
    MODIFIER_ALTERNATE = 1 << 1,
    MODIFIER_COMMAND = 1 << 2,  // the control key on the other platform
    MODIFIER_CONTROL = 1 << 3,  // the control key here
};

// The common head of every event.
struct VstEvent {
    VstInt32 type;
    VstInt32 byteSize;  // bytes after type and byteSize
    VstInt32 deltaFrames;
    VstInt32 flags;
    char data[16];
};

struct VstMidiEvent {
    VstInt32 type;       // kVstMidiType
    VstInt32 byteSize;   // 24
    VstInt32 deltaFrames;
    VstInt32 flags;
    VstInt32 noteLength;
    VstInt32 noteOffset;
    char midiData[4];
    char detune;
    char noteOffVelocity;
    char reserved1;
    char reserved2;
};

// The editor's size, as effEditGetRect hands it to the host.
struct ERect {
    std::int16_t top;
    std::int16_t left;
    std::int16_t bottom;
    std::int16_t right;
};

// A block of events; the array runs on past its declared two entries.
struct VstEvents {
    VstInt32 numEvents;
    VstIntPtr reserved;
    VstEvent* events[2];
};

static_assert(sizeof(VstMidiEvent) == 32, "MIDI event layout");
static_assert(sizeof(VstEvent) == 32, "event layout");
static_assert(sizeof(AEffect) == (sizeof(void*) == 8 ? 192 : 144), "effect record layout");
