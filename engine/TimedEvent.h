// One MIDI event with its time, as it waits in the plug-in's queues and as the
// sound engine receives it.
#pragma once

#include <cstdint>

struct TimedEvent {
    // Samples. In the rings: from the start of the host call that takes it.
    // In the pending queue: since the last reset. In a run handed to the
    // engine: from the start of that engine block.
    int32_t time = 0;
    uint8_t status = 0;
    uint8_t data1 = 0;
    uint8_t data2 = 0;
    uint8_t spare = 0;
};

static_assert(sizeof(TimedEvent) == 8, "a timed event is eight bytes");
