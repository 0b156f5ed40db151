#include "platform/OrlThreads/Alerts_posix.h"

#include <cxxabi.h>

namespace OrlThreads::alerts {

namespace {
thread_local AlertState* currentState = nullptr;
}

AlertState* current() {
    return currentState;
}

void setCurrent(AlertState* state) {
    currentState = state;
}

// Lock order: the alert lock, then an event's lock; a waiter never takes
// the alert lock while it holds its event's.
void queue(AlertState& state, std::function<void()> call) {
    pthread_mutex_lock(&state.lock);
    state.calls.push_back(std::move(call));
    state.pending = true;
    if (state.waitingLock) {
        pthread_mutex_lock(state.waitingLock);
        pthread_cond_broadcast(state.waitingCondition);
        pthread_mutex_unlock(state.waitingLock);
    }
    pthread_mutex_unlock(&state.lock);
}

TENDRANE_LETS_KILLS_PASS bool runPending(AlertState& state) {
    pthread_mutex_lock(&state.lock);
    std::deque<std::function<void()>> calls;
    calls.swap(state.calls);
    state.pending = false;
    pthread_mutex_unlock(&state.lock);
    for (auto& call : calls) {
        try {
            call();
        } catch (abi::__forced_unwind&) {
            throw;  // a kill unwinds the thread: let it
        } catch (...) {
            // A queued call has no one to report to.
        }
    }
    return !calls.empty();
}

}  // namespace OrlThreads::alerts
