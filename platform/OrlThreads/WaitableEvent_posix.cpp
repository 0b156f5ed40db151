#include "platform/OrlThreads/WaitableEvent.h"

#include "platform/OrlThreads/Alerts_posix.h"
#include "platform/OrlThreads/Exception.h"

#include <cerrno>
#include <pthread.h>
#include <time.h>

namespace OrlThreads {

struct WaitableEvent::Native {
    pthread_mutex_t lock;
    pthread_cond_t changed;
    bool manual = false;
    bool signaled = false;
};

namespace {

struct Locked {
    pthread_mutex_t& lock;
    explicit Locked(pthread_mutex_t& m, const char* message) : lock(m) {
        const int result = pthread_mutex_lock(&lock);
        if (result != 0)
            throwError(message, result);
    }
    ~Locked() { pthread_mutex_unlock(&lock); }
};

timespec deadlineAfter(std::uint32_t ms) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    std::int64_t nanoseconds = now.tv_nsec + static_cast<std::int64_t>(ms % 1000) * 1000000;
    timespec deadline{};
    deadline.tv_sec = now.tv_sec + static_cast<time_t>(ms / 1000) + static_cast<time_t>(nanoseconds / 1000000000);
    deadline.tv_nsec = static_cast<long>(nanoseconds % 1000000000);
    return deadline;
}

}  // namespace

WaitableEvent::WaitableEvent(Reset reset, bool initiallySet) : native_(std::make_unique<Native>()) {
    Native& n = *native_;
    n.manual = reset == Reset::manual;
    n.signaled = initiallySet;
    int result = pthread_mutex_init(&n.lock, nullptr);
    if (result != 0)
        throwError("Error creating waitable event", result);
    pthread_condattr_t attributes;
    result = pthread_condattr_init(&attributes);
    if (result == 0) {
        // Timeouts follow the monotonic clock, not the adjustable wall clock.
        result = pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
        if (result == 0)
            result = pthread_cond_init(&n.changed, &attributes);
        pthread_condattr_destroy(&attributes);
    }
    if (result != 0) {
        pthread_mutex_destroy(&n.lock);
        throwError("Error creating waitable event", result);
    }
}

WaitableEvent::~WaitableEvent() {
    pthread_cond_destroy(&native_->changed);
    pthread_mutex_destroy(&native_->lock);
}

void WaitableEvent::set() {
    Native& n = *native_;
    Locked locked(n.lock, "Error signaling waitable event");
    n.signaled = true;
    const int result = n.manual ? pthread_cond_broadcast(&n.changed) : pthread_cond_signal(&n.changed);
    if (result != 0)
        throwError("Error signaling waitable event", result);
}

void WaitableEvent::reset() {
    Native& n = *native_;
    Locked locked(n.lock, "Error resetting waitable event");
    n.signaled = false;
}

WaitableEvent::WaitResult WaitableEvent::wait(std::uint32_t timeoutMs) {
    Native& n = *native_;
    alerts::AlertState* alerts = alerts::current();
    if (alerts) {
        // Calls already queued run at once, as they would on entering an
        // alertable wait; otherwise the thread notes what it waits on.
        if (alerts::runPending(*alerts))
            return WaitResult::alerted;
        pthread_mutex_lock(&alerts->lock);
        alerts->waitingLock = &n.lock;
        alerts->waitingCondition = &n.changed;
        pthread_mutex_unlock(&alerts->lock);
    }
    // Clears the note again, whichever way the wait ends (a kill included).
    struct NoLongerWaiting {
        alerts::AlertState* alerts;
        ~NoLongerWaiting() {
            if (alerts) {
                pthread_mutex_lock(&alerts->lock);
                alerts->waitingLock = nullptr;
                alerts->waitingCondition = nullptr;
                pthread_mutex_unlock(&alerts->lock);
            }
        }
    } noLongerWaiting{alerts};

    {
        Locked locked(n.lock, "Error waiting on an event");
        const timespec deadline = deadlineAfter(timeoutMs == infinite ? 0 : timeoutMs);
        for (;;) {
            if (alerts && alerts->pending.load())
                break;  // the calls run below, without the event's lock
            if (n.signaled) {
                if (!n.manual)
                    n.signaled = false;
                return WaitResult::signaled;
            }
            int result;
            if (timeoutMs == infinite)
                result = pthread_cond_wait(&n.changed, &n.lock);
            else
                result = pthread_cond_timedwait(&n.changed, &n.lock, &deadline);
            if (result == ETIMEDOUT) {
                if (n.signaled) {
                    if (!n.manual)
                        n.signaled = false;
                    return WaitResult::signaled;
                }
                return WaitResult::timedOut;
            }
            if (result != 0)
                throwError("Error waiting on an event", result);
        }
    }
    alerts::runPending(*alerts);
    return WaitResult::alerted;
}

}  // namespace OrlThreads
