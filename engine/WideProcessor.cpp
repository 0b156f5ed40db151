#include "engine/WideProcessor.h"

#include <atomic>

namespace engine::wide {

namespace {

bool processorRunsAvx() {
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
    // The check covers the system too: it must save the wide registers.
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx");
#else
    return false;
#endif
}

// Checked as the program or plug-in loads, so that the audio thread never
// meets a first-use guard.
const bool runs = processorRunsAvx();
std::atomic<bool> allowed{true};
std::atomic<int> forced{0};

}  // namespace

std::atomic<int> detail::chosenWidth{runs ? 8 : 4};

namespace {

void choose() {
    const int f = forced.load(std::memory_order_relaxed);
    detail::chosenWidth.store(f == 1 || f == 4 ? f : (available() ? 8 : 4), std::memory_order_relaxed);
}

}  // namespace

bool runsHere() { return runs; }

bool available() { return allowed.load(std::memory_order_relaxed) && runsHere(); }

void allow(bool yes) {
    allowed.store(yes, std::memory_order_relaxed);
    choose();
}

void forceLanes(int width) {
    forced.store(width == 1 || width == 4 ? width : 0, std::memory_order_relaxed);
    allow(width != 4);
}

}  // namespace engine::wide
