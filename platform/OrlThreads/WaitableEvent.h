// A system event: a flag that threads wait on. An automatic event lets one
// waiter through per set() and clears itself; a manual one stays set until
// reset() and lets every waiter through.
#pragma once

#include <cstdint>
#include <memory>

namespace OrlThreads {

class WaitableEvent {
public:
    enum class Reset { automatic, manual };
    enum class WaitResult { signaled, timedOut, alerted };

    static constexpr std::uint32_t infinite = 0xFFFFFFFFu;

    // "Error creating waitable event".
    explicit WaitableEvent(Reset reset = Reset::automatic, bool initiallySet = false);
    ~WaitableEvent();
    WaitableEvent(const WaitableEvent&) = delete;
    WaitableEvent& operator=(const WaitableEvent&) = delete;

    // "Error signaling waitable event".
    void set();
    // "Error resetting waitable event".
    void reset();
    // Waits up to timeoutMs (or without limit). On Windows the wait is
    // alertable: a call queued to the waiting thread ends it with `alerted`.
    // "Error waiting on an event".
    WaitResult wait(std::uint32_t timeoutMs = infinite);

private:
    struct Native;
    std::unique_ptr<Native> native_;
};

}  // namespace OrlThreads
