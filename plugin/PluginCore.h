// The object a host creates: it owns the sound engine, the sixteen program
// slots, the MIDI configuration and the queues between the interface threads
// and the audio thread. It cuts the host's free-sized blocks into the
// engine's 64-sample blocks, with a constant delay of 64 samples, and hands
// the engine the events due in each block. Nothing on the audio path waits on
// a lock: records cross in VersionedCells, events in EventRings.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "engine/EventRing.h"
#include "engine/RenderInterface.h"
#include "engine/TimedEvent.h"
#include "engine/VersionedCell.h"
#include "engine/VisualState.h"
#include "patch/MidiConfigRecord.h"
#include "fomal/ViewEvents.h"
#include "patch/NorvelleProgram.h"
#include "plugin/AudioEffectX.h"

class Jingle;
class PluginEditor;
class StartupBankLink;
class PluginBankSlots;
namespace OrlThreads {
class TimerService;
}

class PluginCore : public AudioEffectX {
public:
    static constexpr int BLOCK = RenderInterface::BLOCK;
    static constexpr int PROGRAM_COUNT = 16;
    static constexpr int PARAMETER_COUNT = 21;
    static constexpr int PENDING_CAPACITY = 4096;
    static constexpr int OUTPUT_COUNT = 2;
    // Up to this many events go on from a jingle that stops.
    static constexpr int JINGLE_HANDOFF = 256;

    // With no engine given, the plug-in's own SoundEngine.
    explicit PluginCore(audioMasterCallback audioMaster, std::unique_ptr<RenderInterface> engine = nullptr);
    ~PluginCore() override;

    // Host operations.
    void suspend() override;
    void resume() override;
    void setSampleRate(float rate) override;
    void setBlockSize(VstInt32 size) override;
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void setProgram(VstInt32 program) override;
    VstInt32 getProgram() override { return currentProgram_.load(); }
    void setProgramName(char* name) override;
    void getProgramName(char* name) override;
    bool getProgramNameIndexed(VstInt32 category, VstInt32 index, char* text) override;

    // Host parameters.
    void setParameter(VstInt32 index, float value) override;
    float getParameter(VstInt32 index) override;
    void getParameterName(VstInt32 index, char* text) override;
    void getParameterLabel(VstInt32 index, char* label) override;
    void getParameterDisplay(VstInt32 index, char* text) override;
    // Any thread: stores one parameter in the current program (and in the
    // preview slot while previewing). False when the value was already there.
    bool parameterChanged(int index, float value);

    // Interface thread: the current program becomes record as a whole (an
    // undo, a redo, a patch edited by the interface), in the preview slot
    // too while previewing; the editor shows it again.
    void replaceCurrentProgram(const NorvelleProgram& record);
    // Interface thread: a copy of the current program.
    NorvelleProgram currentProgramRecord();

    // The song's state: the current program alone, or the bank with the MIDI
    // configuration. A chunk that doesn't read whole changes nothing and
    // answers 0.
    VstInt32 getChunk(void** data, bool isPreset) override;
    VstInt32 setChunk(void* data, VstInt32 byteSize, bool isPreset) override;

    // The open editor's keys: the host forwards them through the dispatcher;
    // true when the editor used the key (the host then keeps it from its
    // own shortcuts). Set by the editor while it is open.
    std::function<bool(const Fomal::KeyEvent&)> editorKeyDown;

    // The editor's opcodes: its size, open, close, idle; keys go to it.
    VstIntPtr editorCall(VstInt32 opcode, void* ptr);

    // Names and capabilities.
    VstIntPtr dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) override;
    bool getEffectName(char* name) override;
    bool getVendorString(char* text) override;
    bool getProductString(char* text) override;
    VstInt32 getVendorVersion() override { return 1; }
    VstInt32 canDo(char* text) override;
    VstInt32 getNumMidiInputChannels() override { return 16; }
    VstInt32 getNumMidiOutputChannels() override { return 16; }

    // Audio thread: the host's MIDI for the next host call.
    VstInt32 processEvents(VstEvents* events) override;
    // The interface's audition of a note: key "down" or "up". Throws
    // ::Exception for a note out of range or another key.
    void preview(const std::string& key, int note, int velocity);

    // Slots from the startup bank (or the factory patches), the MIDI
    // configuration from the preferences; for instances a host creates.
    void lateConstruction();

    // Audio thread: one host block of frames samples into outputs[0] and
    // outputs[1], added to what is there when accumulate.
    void renderBlock(float** outputs, int32_t frames, bool accumulate);
    // Audio thread: the engine starts again at the host's sample rate.
    void prepareEngine();

    // Audio thread: a MIDI event from the host for the next host call, time
    // relative to its start. Dropped (false) when the pending queue is full.
    // Runs a reset that is due first, as any audio call does.
    bool queueHostEvent(const TimedEvent& event);
    // Any thread: an event played into the next host call, at the time given
    // relative to its start. Throws Kvx::xCircularFIFOOverrun when full.
    void injectEvent(const TimedEvent& event);

    // A MIDI program change: the switch of setProgram, with the whole program
    // to be shown again.
    void programChangeFromMidi(int program);
    // Looks at the name of the current program: the jingle starts or stops.
    void programEntered();
    // The end of construction, once the slots are filled.
    void finishConstruction() { programEntered(); }

    VersionedCell<NorvelleProgram>& programSlot(int i) { return programs_[i]; }
    VersionedCell<NorvelleProgram>& previewSlot() { return preview_; }
    VersionedCell<MidiConfigRecord>& midiConfig() { return midiConfig_; }
    VersionedCell<VisualState>& visualState() { return visualState_; }
    void setPreviewing(bool on) { previewing_.store(on); }
    bool previewing() const { return previewing_.load(); }

    int32_t currentProgram() const { return currentProgram_.load(); }
    int32_t previousProgram() const { return previousProgram_.load(); }
    int32_t revision() const { return revision_.load(); }
    // 0 nothing, 1 parameters changed, 2 the whole program changed; the
    // editor's idle takes it with an exchange.
    std::atomic<int32_t>& guiRefresh() { return guiRefresh_; }
    std::atomic<int32_t>& learnTarget() { return learnTarget_; }
    EventRing<int32_t, 256>& triggerRing() { return triggerRing_; }

    // For tests and diagnostics.
    bool needsReset() const { return needsReset_.load(); }
    bool resumed() const { return resumed_.load(); }
    bool blockSilent() const { return blockSilent_; }
    bool engineSilent() const { return engineSilent_; }
    int32_t stagingPos() const { return stagingPos_; }
    int32_t pendingCount() const { return pendingCount_; }
    const TimedEvent& pendingEvent(int i) const { return pending_[i]; }
    int32_t blockClock() const { return blockClock_; }
    int32_t hostClock() const { return hostClock_; }
    bool hasJingle() const { return jingle_.load() != nullptr; }
    RenderInterface& engine() { return *engine_; }
    // Fixes the noise seed instead of taking it from the clock (offline renders).
    void fixNoiseSeed(uint32_t seed) {
        fixedSeed_ = seed;
        seedFixed_ = true;
    }

private:
    void switchProgram(int program, bool fromMidi);
    // The controllers and program changes of a run about to be rendered.
    void actOnRun(const TimedEvent* run, int count, const MidiConfigRecord& config);
    void sendMidiOut(const TimedEvent* events, int count);
    void sortPending();
    uint32_t noiseSeed() const;

    std::atomic<float> rate_{44100.0f};
    std::atomic<bool> needsReset_{false};
    std::atomic<bool> resumed_{false};
    bool blockSilent_ = true;
    alignas(16) float staging_[OUTPUT_COUNT][BLOCK] = {};
    int32_t stagingPos_ = BLOCK;
    bool engineSilent_ = true;
    std::atomic<int32_t> currentProgram_{0};
    std::atomic<int32_t> previousProgram_{0};
    VersionedCell<NorvelleProgram> programs_[PROGRAM_COUNT];
    VersionedCell<NorvelleProgram> preview_;
    std::atomic<bool> previewing_{false};
    VersionedCell<MidiConfigRecord> midiConfig_;
    std::atomic<int32_t> learnTarget_{-1};
    std::unique_ptr<RenderInterface> engine_;
    VersionedCell<VisualState> visualState_;
    int32_t pendingCount_ = 0;
    TimedEvent pending_[PENDING_CAPACITY];
    TimedEvent sortScratch_[PENDING_CAPACITY];
    EventRing<TimedEvent, PENDING_CAPACITY> eventRing_;
    int32_t blockClock_ = 0;
    int32_t hostClock_ = 0;
    EventRing<int32_t, 256> triggerRing_;
    std::atomic<int32_t> revision_{0};
    std::atomic<int32_t> guiRefresh_{0};
    // The MIDI-out block: a header with PENDING_CAPACITY pointers, and the events.
    std::unique_ptr<VstIntPtr[]> outgoingBlock_;
    std::unique_ptr<VstMidiEvent[]> outgoingEvents_;
    VstEvents* outgoing_ = nullptr;
    // The jingle is made and ended on whichever thread enters a program; the
    // audio thread marks the time it uses it, and an ending waits for that.
    std::atomic<Jingle*> jingle_{nullptr};
    std::atomic<int> jingleInUse_{0};
    uint32_t fixedSeed_ = 1;
    bool seedFixed_ = false;
    // The bytes last handed to the host by getChunk.
    std::vector<uint8_t> chunk_;
    std::unique_ptr<PluginBankSlots> bankSlots_;
    // The instance's own timer for the bank link: it ends with the instance,
    // never in the loader's teardown of the binary, where a thread can no
    // longer be joined.
    std::unique_ptr<OrlThreads::TimerService> bankTimer_;
    std::unique_ptr<StartupBankLink> bankLink_;
    // The host's editor while it is open, and the size the host is told.
    std::unique_ptr<PluginEditor> editor_;
    ERect editorRect_ = {};
};
