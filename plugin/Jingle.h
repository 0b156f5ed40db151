// An event source that plays a short tune, over and over, while the current
// program carries its special name: the chorus of "Jingle Bells" (1857, in
// the public domain). It writes MIDI note events into the plug-in's pending
// queue, a host call at a time, and holds the note-off of the note it is
// playing until that comes due.
#pragma once

#include <cstdint>

#include "engine/TimedEvent.h"

class Jingle {
public:
    explicit Jingle(float sampleRate);

    // The length of an eighth note in samples follows the rate.
    void setTiming(float sampleRate);

    // Writes at most room events that fall in the next frames samples into
    // target, with times from the start of those samples, on channel (0 to
    // 15). Returns how many it wrote; what didn't fit comes next time.
    int generate(int32_t frames, int channel, int room, TimedEvent* target);

    // Takes up to max of the events it still holds back (the note-off of a
    // sounding note), with time 0.
    int takeQueued(TimedEvent* target, int max);

    static constexpr uint8_t VELOCITY = 100;

private:
    int64_t eighth_ = 0;     // samples per eighth note
    int64_t clock_ = 0;      // samples since the tune began
    int64_t nextOnAt_ = 0;   // when the next note starts
    int64_t offAt_ = 0;      // when the sounding note ends
    int index_ = 0;          // next note of the tune
    int soundingNote_ = -1;  // -1 when none
    int soundingChannel_ = 0;
};
