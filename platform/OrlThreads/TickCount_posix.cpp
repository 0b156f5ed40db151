#include "platform/OrlThreads/TickCount.h"

#include <sched.h>
#include <time.h>

namespace OrlThreads {

std::uint64_t tickCount() {
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<std::uint64_t>(ts.tv_sec) * 1000u + static_cast<std::uint64_t>(ts.tv_nsec) / 1000000u;
}

void yieldThread() {
    sched_yield();
}

}  // namespace OrlThreads
