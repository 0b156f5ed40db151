// Calls queued to a thread, run when it next waits on an event: the POSIX
// side of alertable waits. Used by Thread and WaitableEvent only.
#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <pthread.h>

// Marks a function whose handler lets a kill's unwinding pass: that
// exception has no object, which the undefined-behaviour checker would take
// for a null reference.
#define TENDRANE_LETS_KILLS_PASS __attribute__((no_sanitize("undefined")))

namespace OrlThreads::alerts {

struct AlertState {
    pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;  // guards calls and the waiting pair
    std::deque<std::function<void()>> calls;
    std::atomic<bool> pending{false};
    // The event the thread waits on now, if any.
    pthread_mutex_t* waitingLock = nullptr;
    pthread_cond_t* waitingCondition = nullptr;
};

// The calling thread's state; null on threads not made by Thread.
AlertState* current();
void setCurrent(AlertState* state);

// Queues a call and wakes the thread if it is waiting on an event.
void queue(AlertState& state, std::function<void()> call);

// Runs and removes the calls queued so far; true if there were any.
bool runPending(AlertState& state);

}  // namespace OrlThreads::alerts
