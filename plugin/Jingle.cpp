#include "plugin/Jingle.h"

#include <cmath>

namespace {

struct TuneNote {
    int8_t note;    // MIDI note, -1 a rest
    int8_t eighths;
};

// The chorus, in C: "Jingle bells, jingle bells, jingle all the way..."
constexpr TuneNote TUNE[] = {
    {76, 2}, {76, 2}, {76, 4}, {76, 2}, {76, 2}, {76, 4}, {76, 2}, {79, 2}, {72, 3}, {74, 1}, {76, 8},
    {77, 2}, {77, 2}, {77, 3}, {77, 1}, {77, 2}, {76, 2}, {76, 2}, {76, 1}, {76, 1},
    {76, 2}, {74, 2}, {74, 2}, {76, 2}, {74, 4}, {79, 4},
    {76, 2}, {76, 2}, {76, 4}, {76, 2}, {76, 2}, {76, 4}, {76, 2}, {79, 2}, {72, 3}, {74, 1}, {76, 8},
    {77, 2}, {77, 2}, {77, 3}, {77, 1}, {77, 2}, {76, 2}, {76, 2}, {76, 1}, {76, 1},
    {79, 2}, {79, 2}, {77, 2}, {74, 2}, {72, 8}, {-1, 8},
};
constexpr int TUNE_LENGTH = sizeof(TUNE) / sizeof(TUNE[0]);
// An eighth note lasts a fifth of a second; a note sounds for most of it.
constexpr double EIGHTH_SECONDS = 0.2;
constexpr double LEGATO = 0.85;

TimedEvent noteEvent(int64_t time, uint8_t status, int note, uint8_t velocity) {
    TimedEvent e;
    e.time = static_cast<int32_t>(time);
    e.status = status;
    e.data1 = static_cast<uint8_t>(note);
    e.data2 = velocity;
    return e;
}

}  // namespace

Jingle::Jingle(float sampleRate) { setTiming(sampleRate); }

void Jingle::setTiming(float sampleRate) {
    eighth_ = static_cast<int64_t>(std::lround(sampleRate * EIGHTH_SECONDS));
    if (eighth_ < 1) eighth_ = 1;
}

int Jingle::generate(int32_t frames, int channel, int room, TimedEvent* target) {
    int written = 0;
    const int64_t end = clock_ + (frames > 0 ? frames : 0);
    while (written < room) {
        const bool offFirst = soundingNote_ >= 0 && offAt_ <= nextOnAt_;
        const int64_t at = offFirst ? offAt_ : nextOnAt_;
        if (at >= end) break;
        const int64_t time = at > clock_ ? at - clock_ : 0;
        if (offFirst) {
            target[written++] =
                noteEvent(time, static_cast<uint8_t>(0x80 | soundingChannel_), soundingNote_, 0);
            soundingNote_ = -1;
            continue;
        }
        const TuneNote& n = TUNE[index_];
        index_ = (index_ + 1) % TUNE_LENGTH;
        const int64_t length = eighth_ * n.eighths;
        // A note ends before the next begins, so none is sounding here.
        if (n.note >= 0) {
            target[written++] = noteEvent(time, static_cast<uint8_t>(0x90 | channel), n.note, VELOCITY);
            soundingNote_ = n.note;
            soundingChannel_ = channel;
            offAt_ = nextOnAt_ + static_cast<int64_t>(static_cast<double>(length) * LEGATO);
        }
        nextOnAt_ += length;
    }
    clock_ = end;
    return written;
}

int Jingle::takeQueued(TimedEvent* target, int max) {
    if (max <= 0 || soundingNote_ < 0) return 0;
    target[0] = noteEvent(0, static_cast<uint8_t>(0x80 | soundingChannel_), soundingNote_, 0);
    soundingNote_ = -1;
    return 1;
}
