#include "cli/MidiFile.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>

#include "platform/Exceptions.h"

namespace cli {

namespace {

[[noreturn]] void fail(const char* why) { throw FormatException(std::string("Invalid MIDI file (") + why + ")"); }

uint32_t be32(const uint8_t* p) {
    return (uint32_t(p[0]) << 24) | (uint32_t(p[1]) << 16) | (uint32_t(p[2]) << 8) | uint32_t(p[3]);
}
uint16_t be16(const uint8_t* p) { return uint16_t((p[0] << 8) | p[1]); }

// Reads inside one track chunk.
class TrackReader {
public:
    TrackReader(const uint8_t* p, std::size_t n) : p_(p), n_(n) {}
    bool atEnd() const { return pos_ >= n_; }
    uint8_t byte() {
        if (pos_ >= n_) fail("track ends inside an event");
        return p_[pos_++];
    }
    uint8_t peek() const {
        if (pos_ >= n_) fail("track ends inside an event");
        return p_[pos_];
    }
    uint32_t variable() {
        uint32_t v = 0;
        for (int i = 0; i < 4; ++i) {
            uint8_t b = byte();
            v = (v << 7) | (b & 0x7Fu);
            if (!(b & 0x80)) return v;
        }
        fail("variable-length number too long");
    }
    const uint8_t* skip(uint32_t count) {
        if (count > n_ - pos_) fail("track ends inside an event");
        const uint8_t* at = p_ + pos_;
        pos_ += count;
        return at;
    }

private:
    const uint8_t* p_;
    std::size_t n_;
    std::size_t pos_ = 0;
};

struct TickEvent {
    uint64_t tick;
    int track;
    std::size_t order;
    MidiFileEvent event;
};

int dataBytesOf(uint8_t status) {
    uint8_t kind = status & 0xF0;
    return (kind == 0xC0 || kind == 0xD0) ? 1 : 2;
}

}  // namespace

MidiFileContents readMidiFile(const uint8_t* bytes, std::size_t size) {
    if (size < 14 || std::memcmp(bytes, "MThd", 4) != 0) fail("no header chunk");
    uint32_t headerLength = be32(bytes + 4);
    if (headerLength < 6 || headerLength > size - 8) fail("bad header length");
    MidiFileContents result;
    result.format = be16(bytes + 8);
    int declaredTracks = be16(bytes + 10);
    uint16_t division = be16(bytes + 12);
    if (result.format > 1) fail("only formats 0 and 1 are played");
    if (division == 0) fail("time division is 0");

    std::vector<TickEvent> events;
    std::map<uint64_t, uint32_t> tempos;  // tick -> microseconds per quarter note
    uint64_t lastTick = 0;
    std::size_t pos = 8 + std::size_t(headerLength);
    int track = 0;
    while (pos + 8 <= size && track < declaredTracks) {
        uint32_t length = be32(bytes + pos + 4);
        bool isTrack = std::memcmp(bytes + pos, "MTrk", 4) == 0;
        pos += 8;
        if (length > size - pos) fail("chunk longer than the file");
        if (!isTrack) {  // unknown chunks are skipped
            pos += length;
            continue;
        }
        TrackReader in(bytes + pos, length);
        pos += length;
        uint64_t tick = 0;
        uint8_t running = 0;
        std::size_t order = 0;
        while (!in.atEnd()) {
            tick += in.variable();
            uint8_t status = in.peek();
            if (status & 0x80) {
                in.byte();
            } else {
                if (!running) fail("data byte without a status");
                status = running;
            }
            if (status == 0xFF) {
                running = 0;
                uint8_t type = in.byte();
                uint32_t n = in.variable();
                const uint8_t* body = in.skip(n);
                if (type == 0x51 && n >= 3) {
                    uint32_t tempo = (uint32_t(body[0]) << 16) | (uint32_t(body[1]) << 8) | body[2];
                    tempos[tick] = tempo == 0 ? 1 : tempo;
                }
                lastTick = std::max(lastTick, tick);
                if (type == 0x2F) break;
                continue;
            }
            if (status == 0xF0 || status == 0xF7) {
                running = 0;
                in.skip(in.variable());
                continue;
            }
            if (status > 0xF0) fail("system message in a track");
            running = status;
            MidiFileEvent e;
            e.status = status;
            e.data1 = in.byte();
            if (dataBytesOf(status) == 2) e.data2 = in.byte();
            if ((e.data1 | e.data2) & 0x80) fail("data byte out of range");
            events.push_back({tick, track, order++, e});
            lastTick = std::max(lastTick, tick);
        }
        ++track;
    }
    result.trackCount = track;

    std::stable_sort(events.begin(), events.end(), [](const TickEvent& a, const TickEvent& b) {
        if (a.tick != b.tick) return a.tick < b.tick;
        return a.track < b.track;
    });

    // Ticks to seconds through the tempo map (120 beats a minute until the
    // first change), or directly for frame-based time.
    struct Segment {
        uint64_t tick;
        double seconds;
        double tempo;
    };
    std::vector<Segment> segments{{0, 0.0, 500000.0}};
    for (const auto& [changeTick, microseconds] : tempos) {
        const Segment& last = segments.back();
        double seconds = last.seconds + double(changeTick - last.tick) * last.tempo / (1e6 * division);
        if (changeTick == last.tick)
            segments.back().tempo = microseconds;
        else
            segments.push_back({changeTick, seconds, double(microseconds)});
    }
    auto toSeconds = [&](uint64_t t) -> double {
        if (division & 0x8000) {
            int framesPerSecond = -int8_t(division >> 8);
            double fps = framesPerSecond == 29 ? 29.97 : double(framesPerSecond);
            int ticksPerFrame = division & 0xFF;
            if (fps <= 0 || ticksPerFrame == 0) fail("bad frame-based time division");
            return double(t) / (fps * ticksPerFrame);
        }
        auto it = std::upper_bound(segments.begin(), segments.end(), t,
                                   [](uint64_t tick, const Segment& s) { return tick < s.tick; });
        const Segment& s = *(it - 1);
        return s.seconds + double(t - s.tick) * s.tempo / (1e6 * division);
    };
    result.events.reserve(events.size());
    for (TickEvent& e : events) {
        e.event.seconds = toSeconds(e.tick);
        result.events.push_back(e.event);
    }
    result.lengthSeconds = toSeconds(lastTick);
    return result;
}

MidiFileContents readMidiFilePath(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw Exception("Cannot open file " + path);
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return readMidiFile(bytes.data(), bytes.size());
}

}  // namespace cli
