#include "cli/OfflineRender.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "cli/Options.h"
#include "notation/LeadingNumbers.h"
#include "plugin/PluginCore.h"

namespace cli {

namespace {

// The host side of an offline render: it knows its version and nothing else.
VstIntPtr VST_CALL offlineHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    return opcode == audioMasterVersion ? 2400 : 0;
}

std::vector<std::string> split(const std::string& text, char sep) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (true) {
        std::size_t at = text.find(sep, start);
        parts.push_back(text.substr(start, at == std::string::npos ? std::string::npos : at - start));
        if (at == std::string::npos) break;
        start = at + 1;
    }
    return parts;
}

}  // namespace

std::vector<NoteSpec> parseNoteList(const std::string& text) {
    std::vector<NoteSpec> notes;
    for (const std::string& item : split(text, ',')) {
        std::vector<std::string> f = split(item, ':');
        auto bad = [&](const char* why) {
            return UsageError("--notes item '" + item + "': " + why + " (NOTE:START:DUR:VEL)");
        };
        if (f.size() != 4) throw bad("needs four fields");
        NoteSpec n;
        char* end = nullptr;
        long note = std::strtol(f[0].c_str(), &end, 10);
        if (f[0].empty() || *end || note < 0 || note > 127) throw bad("note must be 0 to 127");
        const LeadingNumber startText = leadingDouble(f[1]), durText = leadingDouble(f[2]);
        const double start = startText.value, dur = durText.value;
        if (f[1].empty() || startText.length != f[1].size() || !(start >= 0) || !std::isfinite(start))
            throw bad("start must be 0 or more seconds");
        if (f[2].empty() || durText.length != f[2].size() || !(dur > 0) || !std::isfinite(dur))
            throw bad("duration must be above 0 seconds");
        long vel = std::strtol(f[3].c_str(), &end, 10);
        if (f[3].empty() || *end || vel < 1 || vel > 127) throw bad("velocity must be 1 to 127");
        n.note = int(note);
        n.start = start;
        n.duration = dur;
        n.velocity = int(vel);
        notes.push_back(n);
    }
    return notes;
}

std::vector<MidiFileEvent> noteEvents(const std::vector<NoteSpec>& notes) {
    std::vector<MidiFileEvent> events;
    for (const NoteSpec& n : notes) {
        events.push_back({n.start, 0x90, uint8_t(n.note), uint8_t(n.velocity)});
        events.push_back({n.start + n.duration, 0x80, uint8_t(n.note), 64});
    }
    std::stable_sort(events.begin(), events.end(), [](const MidiFileEvent& a, const MidiFileEvent& b) {
        if (a.seconds != b.seconds) return a.seconds < b.seconds;
        return (a.status & 0xF0) == 0x80 && (b.status & 0xF0) != 0x80;
    });
    return events;
}

OrlAudioFiles::AudioData renderOffline(const NorvelleProgram& program, const std::vector<MidiFileEvent>& events,
                                       double endSeconds, const OfflineRenderSettings& settings,
                                       const std::function<void(double, double)>& progress) {
    const double rate = settings.rate;
    const int block = std::max(1, settings.block);
    double last = endSeconds;
    for (const MidiFileEvent& e : events) last = std::max(last, e.seconds);
    const int64_t total = int64_t(std::ceil((last + settings.tailSeconds) * rate));

    auto core = std::make_unique<PluginCore>(&offlineHost);
    core->fixNoiseSeed(settings.noiseSeed);
    core->setSampleRate(settings.rate);
    core->setBlockSize(block);
    core->programSlot(core->currentProgram()).publish(program);
    core->resume();

    OrlAudioFiles::AudioData audio;
    audio.sampleRate = uint32_t(std::lround(rate));
    audio.channels = 2;
    audio.samples.resize(std::size_t(total) * 2);
    std::vector<float> left(static_cast<std::size_t>(block)), right(static_cast<std::size_t>(block));
    std::size_t next = 0;
    int64_t reported = 0;
    for (int64_t pos = 0; pos < total; pos += block) {
        const int n = int(std::min<int64_t>(block, total - pos));
        // The events that fall in this host call, timed from its start.
        while (next < events.size()) {
            const int64_t at = std::llround(events[next].seconds * rate);
            if (at >= pos + n) break;
            TimedEvent e;
            e.time = int32_t(std::max<int64_t>(at - pos, 0));
            e.status = events[next].status;
            e.data1 = events[next].data1;
            e.data2 = events[next].data2;
            core->queueHostEvent(e);
            ++next;
        }
        float* outs[2] = {left.data(), right.data()};
        core->processReplacing(nullptr, outs, n);
        for (int i = 0; i < n; ++i) {
            audio.samples[std::size_t(pos + i) * 2] = left[std::size_t(i)];
            audio.samples[std::size_t(pos + i) * 2 + 1] = right[std::size_t(i)];
        }
        if (progress && pos - reported >= int64_t(rate)) {
            reported = pos;
            progress(double(pos) / rate, double(total) / rate);
        }
    }
    if (progress) progress(double(total) / rate, double(total) / rate);
    return audio;
}

}  // namespace cli
