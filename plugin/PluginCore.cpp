#include "plugin/PluginCore.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <string>
#include <thread>

#include "engine/SoundEngine.h"
#include "patch/StartupBank.h"
#include "platform/OrlThreads/TimerService.h"
#include "plugin/PluginBankSlots.h"
#include "platform/Exceptions.h"
#include "plugin/Jingle.h"
#include "plugin/PluginEditor.h"

namespace {

const std::u16string JINGLE_NAME = u"Jingle Balls";

constexpr VstInt32 UNIQUE_ID = ('T' << 24) | ('d' << 16) | ('r' << 8) | 'n';

uint32_t rotateLeft16(uint32_t x) { return (x << 16) | (x >> 16); }

}  // namespace

PluginCore::PluginCore(audioMasterCallback audioMaster, std::unique_ptr<RenderInterface> engine)
    : AudioEffectX(audioMaster, PROGRAM_COUNT, PARAMETER_COUNT),
      engine_(engine ? std::move(engine) : std::make_unique<SoundEngine>()) {
    setNumInputs(0);
    setNumOutputs(OUTPUT_COUNT);
    setUniqueID(UNIQUE_ID);
    isSynth();
    canProcessReplacing();
    programsAreChunks();
    setInitialDelay(BLOCK);
    hasEditor(editorWindowsExist());

    // The VstEvents header holds numEvents, a reserved word and the pointers.
    const std::size_t headerWords = offsetof(VstEvents, events) / sizeof(VstIntPtr);
    outgoingBlock_ = std::make_unique<VstIntPtr[]>(headerWords + PENDING_CAPACITY);
    outgoing_ = reinterpret_cast<VstEvents*>(outgoingBlock_.get());
    outgoingEvents_ = std::make_unique<VstMidiEvent[]>(PENDING_CAPACITY);
    for (int i = 0; i < PENDING_CAPACITY; ++i)
        outgoing_->events[i] = reinterpret_cast<VstEvent*>(&outgoingEvents_[i]);
}

PluginCore::~PluginCore() {
    // An editor the host left open closes with its instance.
    editorKeyDown = nullptr;
    editor_.reset();
    // The bank link reads the slots from its timer: it goes first.
    bankLink_.reset();
    bankTimer_.reset();
    delete jingle_.exchange(nullptr);
}

// ---------------------------------------------------------------------------
// Host life cycle.

void PluginCore::resume() {
    if (resumed_.load()) return;
    AudioEffectX::resume();
    resumed_.store(true);
    needsReset_.store(true);
    int32_t expected = 0;
    guiRefresh_.compare_exchange_strong(expected, 1);
}

void PluginCore::suspend() {
    if (!resumed_.load()) return;
    visualState_.publish(VisualState{});
    resumed_.store(false);
}

void PluginCore::setSampleRate(float rate) {
    if (rate != rate_.load()) needsReset_.store(true);
    rate_.store(rate);
    AudioEffectX::setSampleRate(rate);
}

// The engine always works in 64-sample blocks, so the host's block size
// changes nothing: it is only remembered.
void PluginCore::setBlockSize(VstInt32 size) { AudioEffectX::setBlockSize(size); }

void PluginCore::processReplacing(float**, float** outputs, VstInt32 sampleFrames) {
    try {
        renderBlock(outputs, sampleFrames, false);
        hostClock_ += sampleFrames;
    } catch (...) {
    }
}

void PluginCore::process(float**, float** outputs, VstInt32 sampleFrames) {
    try {
        renderBlock(outputs, sampleFrames, true);
        hostClock_ += sampleFrames;
    } catch (...) {
    }
}

uint32_t PluginCore::noiseSeed() const {
    if (seedFixed_) return fixedSeed_;
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const auto ticks = static_cast<uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
    const auto instance = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(this));
    return ticks + rotateLeft16(instance);
}

void PluginCore::prepareEngine() {
    needsReset_.store(false);
    const float rate = rate_.load();
    engine_->init(rate, noiseSeed());
    jingleInUse_.store(1);
    if (Jingle* j = jingle_.load()) j->setTiming(rate);
    jingleInUse_.store(0);
    blockClock_ = 0;
    hostClock_ = 0;
    stagingPos_ = 0;
    pendingCount_ = 0;
    std::memset(staging_, 0, sizeof staging_);
    engineSilent_ = true;
    eventRing_.discard();
}

// ---------------------------------------------------------------------------
// Events in.

bool PluginCore::queueHostEvent(const TimedEvent& event) {
    // This is an audio call too: a reset due must not wipe what comes now.
    if (needsReset_.load()) prepareEngine();
    if (pendingCount_ >= PENDING_CAPACITY) return false;
    TimedEvent e = event;
    if (e.time < 0) e.time = 0;
    e.time += hostClock_;
    pending_[pendingCount_++] = e;
    return true;
}

void PluginCore::injectEvent(const TimedEvent& event) { eventRing_.write(event); }

void PluginCore::sendMidiOut(const TimedEvent* events, int count) {
    for (int i = 0; i < count; ++i) {
        VstMidiEvent& m = outgoingEvents_[i];
        std::memset(&m, 0, sizeof m);
        m.type = kVstMidiType;
        m.byteSize = 24;
        m.deltaFrames = events[i].time;
        m.midiData[0] = static_cast<char>(events[i].status);
        m.midiData[1] = static_cast<char>(events[i].data1);
        m.midiData[2] = static_cast<char>(events[i].data2);
    }
    outgoing_->numEvents = count;
    outgoing_->reserved = 0;
    sendVstEventsToHost(outgoing_);
}

// Stable merge sort by time, bottom-up through the scratch array: events of
// equal time keep the order they came in.
void PluginCore::sortPending() {
    const int n = pendingCount_;
    TimedEvent* from = pending_;
    TimedEvent* to = sortScratch_;
    for (int width = 1; width < n; width *= 2) {
        for (int lo = 0; lo < n; lo += 2 * width) {
            const int mid = std::min(lo + width, n);
            const int hi = std::min(lo + 2 * width, n);
            int a = lo;
            int b = mid;
            int k = lo;
            while (a < mid && b < hi) to[k++] = (from[b].time < from[a].time) ? from[b++] : from[a++];
            while (a < mid) to[k++] = from[a++];
            while (b < hi) to[k++] = from[b++];
        }
        std::swap(from, to);
    }
    if (from != pending_) std::copy(from, from + n, pending_);
}

// ---------------------------------------------------------------------------
// The block path.

void PluginCore::renderBlock(float** outputs, int32_t frames, bool accumulate) {
    if (needsReset_.load()) prepareEngine();
    if (frames < 0) frames = 0;

    MidiConfigRecord* config = midiConfig_.acquire();
    const int32_t outChannel = config->outputMidiChannel;
    midiConfig_.release(config);

    // Interface events, then the jingle's; their times are from the start of
    // this host call.
    const int32_t firstAdded = pendingCount_;
    pendingCount_ += static_cast<int32_t>(
        eventRing_.read(pending_ + pendingCount_, static_cast<uint32_t>(PENDING_CAPACITY - pendingCount_)));
    jingleInUse_.store(1);
    if (Jingle* j = jingle_.load())
        pendingCount_ += j->generate(frames, std::max(outChannel, 0), PENDING_CAPACITY - pendingCount_,
                                     pending_ + pendingCount_);
    jingleInUse_.store(0);

    const int32_t added = pendingCount_ - firstAdded;
    if (outChannel >= 0 && added > 0) sendMidiOut(pending_ + firstAdded, added);
    for (int32_t i = firstAdded; i < pendingCount_; ++i) pending_[i].time += hostClock_;

    sortPending();

    blockSilent_ = true;
    MidiConfigRecord* blockConfig = midiConfig_.acquire();
    int32_t consumed = 0;
    int32_t done = 0;
    while (done < frames) {
        if (stagingPos_ >= BLOCK) {
            const int32_t runStart = consumed;
            while (consumed < pendingCount_ && pending_[consumed].time - blockClock_ < BLOCK) {
                pending_[consumed].time -= blockClock_;
                ++consumed;
            }
            actOnRun(pending_ + runStart, consumed - runStart, *blockConfig);
            VersionedCell<NorvelleProgram>& cell =
                previewing_.load() ? preview_ : programs_[currentProgram_.load()];
            NorvelleProgram* record = cell.acquire();
            engine_->render(*record, *blockConfig, consumed - runStart, pending_ + runStart, staging_[0],
                            staging_[1], engineSilent_);
            cell.release(record);
            blockClock_ += BLOCK;
            stagingPos_ = 0;
        }
        const int32_t n = std::min(BLOCK - stagingPos_, frames - done);
        if (!engineSilent_) blockSilent_ = false;
        for (int c = 0; c < OUTPUT_COUNT; ++c) {
            float* out = outputs[c] + done;
            const float* in = staging_[c] + stagingPos_;
            if (accumulate)
                for (int32_t i = 0; i < n; ++i) out[i] += in[i];
            else
                std::memcpy(out, in, sizeof(float) * static_cast<std::size_t>(n));
        }
        stagingPos_ += n;
        done += n;
    }
    midiConfig_.release(blockConfig);

    std::copy(pending_ + consumed, pending_ + pendingCount_, pending_);
    pendingCount_ -= consumed;

    VisualState shown;
    engine_->copyVisualState(shown);
    if (previewing_.load()) {
        VisualState quiet;
        quiet.noteCount = shown.noteCount;
        quiet.lastBranch = -1;
        shown = quiet;
    }
    visualState_.publish(shown);
}

// ---------------------------------------------------------------------------
// Programs.

void PluginCore::setProgram(VstInt32 program) {
    if (program < 0 || program >= PROGRAM_COUNT) return;
    try {
        switchProgram(program, false);
    } catch (...) {
        // Nothing crosses into the host.
    }
}

void PluginCore::programChangeFromMidi(int program) {
    if (program < 0 || program >= PROGRAM_COUNT) return;
    switchProgram(program, true);
}

void PluginCore::switchProgram(int program, bool fromMidi) {
    const int32_t old = currentProgram_.load();
    if (program == old) return;
    previousProgram_.store(old);
    currentProgram_.store(program);
    curProgram = program;
    revision_.fetch_add(1);
    if (fromMidi) {
        guiRefresh_.exchange(2);
    } else {
        int32_t expected = 0;
        guiRefresh_.compare_exchange_strong(expected, 1);
    }
    programEntered();
}

void PluginCore::programEntered() {
    VersionedCell<NorvelleProgram>& cell = programs_[currentProgram_.load()];
    NorvelleProgram* record = cell.acquire();
    const bool jingleName = record->getName() == JINGLE_NAME;
    cell.release(record);

    if (jingleName) {
        if (!jingle_.load()) {
            Jingle* fresh = new Jingle(rate_.load());
            Jingle* expected = nullptr;
            if (!jingle_.compare_exchange_strong(expected, fresh)) delete fresh;
        }
        return;
    }
    Jingle* old = jingle_.exchange(nullptr);
    if (!old) return;
    // The audio thread may be inside the jingle's generate: let it finish.
    while (jingleInUse_.load()) std::this_thread::yield();
    TimedEvent held[JINGLE_HANDOFF];
    const int count = old->takeQueued(held, JINGLE_HANDOFF);
    for (int i = 0; i < count; ++i) {
        held[i].time = 0;
        try {
            injectEvent(held[i]);
        } catch (const Kvx::xCircularFIFOOverrun&) {
            break;
        }
    }
    delete old;
}

void PluginCore::setProgramName(char* name) {
    std::u16string text;
    for (const char* p = name; *p; ++p) text.push_back(static_cast<char16_t>(static_cast<unsigned char>(*p)));
    VersionedCell<NorvelleProgram>& cell = programs_[currentProgram_.load()];
    NorvelleProgram* record = cell.acquire();
    record->setName(text);
    record->touch(false);
    cell.release(record);
    programEntered();
}

void PluginCore::getProgramName(char* name) {
    VersionedCell<NorvelleProgram>& cell = programs_[currentProgram_.load()];
    NorvelleProgram* record = cell.acquire();
    const std::u16string text = record->getName();
    cell.release(record);
    int k = 0;
    for (char16_t c : text) {
        if (k == kVstMaxProgNameLen - 1) break;
        name[k++] = c < 256 ? static_cast<char>(c) : '?';
    }
    name[k] = 0;
}
