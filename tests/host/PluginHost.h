// A small VST 2 host for tests: it loads the plug-in binary, finds its entry
// points, creates instances and plays notes into them. Each opcode the
// plug-in calls back with is counted, and MIDI it sends out is kept.
// Builds for Linux (dlopen) and for Windows (LoadLibrary).
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "plugin/VstAbi.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace testhost {

using EntryProc = AEffect*(VST_CALL*)(audioMasterCallback);

struct HostRecord {
    std::array<std::atomic<int>, 64> calls{};
    std::atomic<int> versionAnswer{2400};
    std::atomic<float> sampleRate{44100.0f};
    std::mutex midiLock;
    std::vector<VstMidiEvent> midiOut;

    static HostRecord& get() {
        static HostRecord record;
        return record;
    }
    int count(int opcode) const { return calls[static_cast<std::size_t>(opcode)].load(); }
};

inline VstIntPtr VST_CALL hostCallback(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void* ptr, float) {
    HostRecord& h = HostRecord::get();
    if (opcode >= 0 && opcode < 64) h.calls[static_cast<std::size_t>(opcode)].fetch_add(1);
    switch (opcode) {
    case audioMasterVersion:
        return h.versionAnswer.load();
    case audioMasterGetSampleRate:
        return static_cast<VstIntPtr>(h.sampleRate.load());
    case audioMasterProcessEvents: {
        auto* events = static_cast<VstEvents*>(ptr);
        std::lock_guard<std::mutex> lock(h.midiLock);
        for (int i = 0; i < events->numEvents; ++i)
            if (events->events[i]->type == kVstMidiType)
                h.midiOut.push_back(*reinterpret_cast<VstMidiEvent*>(events->events[i]));
        return 1;
    }
    default:
        return 0;
    }
}

// The binary, loaded once per process and never unloaded.
class Library {
public:
    static Library& get(const char* path) {
        static Library library(path);
        return library;
    }
    EntryProc pluginMain = nullptr;
    EntryProc legacyMain = nullptr;
    std::string error;

private:
    explicit Library(const char* path) {
#ifdef _WIN32
        HMODULE m = LoadLibraryA(path);
        if (!m) {
            error = "cannot load " + std::string(path);
            return;
        }
        pluginMain = reinterpret_cast<EntryProc>(reinterpret_cast<void*>(GetProcAddress(m, "VSTPluginMain")));
        legacyMain = reinterpret_cast<EntryProc>(reinterpret_cast<void*>(GetProcAddress(m, "main")));
#else
        void* m = dlopen(path, RTLD_NOW | RTLD_LOCAL);
        if (!m) {
            error = dlerror();
            return;
        }
        pluginMain = reinterpret_cast<EntryProc>(dlsym(m, "VSTPluginMain"));
        legacyMain = reinterpret_cast<EntryProc>(dlsym(m, "main"));
#endif
    }
};

// One MIDI event at a sample time of the whole render.
struct NoteEvent {
    int64_t time;
    uint8_t status, data1, data2;
};

class Instance {
public:
    Instance(EntryProc entry, float rate, int block) : block_(block) {
        HostRecord::get().sampleRate.store(rate);
        effect = entry ? entry(&hostCallback) : nullptr;
        if (!effect) return;
        call(effOpen);
        call(effSetSampleRate, 0, 0, nullptr, rate);
        call(effSetBlockSize, 0, block);
        call(effMainsChanged, 0, 1);
        call(effStartProcess);
    }
    ~Instance() {
        if (!effect) return;
        call(effStopProcess);
        call(effMainsChanged, 0, 0);
        call(effClose);
    }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    VstIntPtr call(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0, void* ptr = nullptr, float opt = 0) {
        return effect->dispatcher(effect, opcode, index, value, ptr, opt);
    }

    void sendEvents(const std::vector<VstMidiEvent>& events) {
        std::vector<VstIntPtr> block(4 + events.size(), 0);
        auto* e = reinterpret_cast<VstEvents*>(block.data());
        e->numEvents = static_cast<VstInt32>(events.size());
        for (std::size_t i = 0; i < events.size(); ++i)
            e->events[i] = reinterpret_cast<VstEvent*>(const_cast<VstMidiEvent*>(&events[i]));
        call(effProcessEvents, 0, 0, e);
    }

    static VstMidiEvent midi(int delta, uint8_t status, uint8_t d1, uint8_t d2) {
        VstMidiEvent m{};
        m.type = kVstMidiType;
        m.byteSize = 24;
        m.deltaFrames = delta;
        m.midiData[0] = static_cast<char>(status);
        m.midiData[1] = static_cast<char>(d1);
        m.midiData[2] = static_cast<char>(d2);
        return m;
    }

    // Plays the events over frames samples in host blocks of the instance's
    // size; yields left and right.
    void render(const std::vector<NoteEvent>& events, int64_t frames, std::vector<float>& left,
                std::vector<float>& right) {
        left.assign(static_cast<std::size_t>(frames), 0.0f);
        right.assign(static_cast<std::size_t>(frames), 0.0f);
        std::size_t next = 0;
        for (int64_t pos = 0; pos < frames; pos += block_) {
            const int n = static_cast<int>(std::min<int64_t>(block_, frames - pos));
            std::vector<VstMidiEvent> due;
            while (next < events.size() && events[next].time < pos + n) {
                const NoteEvent& e = events[next++];
                due.push_back(midi(static_cast<int>(e.time - pos), e.status, e.data1, e.data2));
            }
            if (!due.empty()) sendEvents(due);
            float* outs[2] = {left.data() + pos, right.data() + pos};
            effect->processReplacing(effect, nullptr, outs, n);
        }
    }

    AEffect* effect = nullptr;

private:
    int block_;
};

// A short phrase: a chord and a melody with velocities, at a rate.
inline std::vector<NoteEvent> phrase(float rate) {
    const struct {
        double start, length;
        int note, velocity;
    } notes[] = {{0.0, 0.6, 48, 100}, {0.0, 0.3, 60, 90}, {0.05, 0.35, 64, 70},
                 {0.3, 0.25, 67, 120}, {0.45, 0.3, 71, 60}, {0.5, 0.2, 72, 127}};
    std::vector<NoteEvent> events;
    for (const auto& n : notes) {
        events.push_back({std::llround(n.start * rate), 0x90, static_cast<uint8_t>(n.note),
                          static_cast<uint8_t>(n.velocity)});
        events.push_back({std::llround((n.start + n.length) * rate), 0x80, static_cast<uint8_t>(n.note), 0});
    }
    std::stable_sort(events.begin(), events.end(),
                     [](const NoteEvent& a, const NoteEvent& b) { return a.time < b.time; });
    return events;
}

}  // namespace testhost
