#include "platform/OrlThreads/Thread.h"

#include "platform/OrlThreads/Alerts_posix.h"
#include "platform/OrlThreads/Exception.h"

#include <atomic>
#include <cerrno>
#include <cxxabi.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace OrlThreads {

// A pthread cannot be made suspended: the new thread waits at a gate until
// it is resumed (or told to end without running, if never started).
struct Thread::Native {
    pthread_t handle{};
    bool created = false;
    bool joined = false;
    pthread_mutex_t gateLock = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t gate = PTHREAD_COND_INITIALIZER;
    bool resumed = false;
    bool abandoned = false;
    std::atomic<pid_t> kernelId{0};
    std::atomic<bool> finished{false};
    alerts::AlertState alerts;

    // The new thread's first function. A kill unwinds the thread with an
    // exception that has no object, which the undefined-behaviour checker
    // would take for a null reference in the handler that lets it pass.
    TENDRANE_LETS_KILLS_PASS static void* start(void* argument) {
        Thread* self = static_cast<Thread*>(argument);
        Native& n = *self->native_;
        // No kill takes effect before the body runs.
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
        n.kernelId = static_cast<pid_t>(::syscall(SYS_gettid));
        alerts::setCurrent(&n.alerts);
        pthread_setname_np(pthread_self(), self->name_.substr(0, 15).c_str());
        pthread_mutex_lock(&n.gateLock);
        while (!n.resumed)
            pthread_cond_wait(&n.gate, &n.gateLock);
        const bool abandoned = n.abandoned;
        pthread_mutex_unlock(&n.gateLock);
        if (!abandoned) {
            pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, nullptr);
            try {
                entry(self);
            } catch (abi::__forced_unwind&) {
                n.finished = true;
                throw;  // a kill unwinds the thread: let it
            } catch (...) {
                // The body's failure ends its thread and goes no further.
            }
        }
        n.finished = true;
        return nullptr;
    }
};

namespace {

struct StartArgument {
    Thread* self;
};

int niceFor(Thread::Priority priority) {
    switch (priority) {
    case Thread::Priority::lowest: return 15;
    case Thread::Priority::belowNormal: return 5;
    case Thread::Priority::normal: return 0;
    case Thread::Priority::aboveNormal: return -5;
    case Thread::Priority::highest: return -15;
    }
    return 0;
}

}  // namespace

Thread::Thread(std::string name, std::function<void()> body)
    : name_(std::move(name)), body_(std::move(body)), native_(std::make_unique<Native>()) {}

Thread::~Thread() {
    Native& n = *native_;
    if (!n.created || n.joined)
        return;
    pthread_mutex_lock(&n.gateLock);
    if (!n.resumed)
        n.abandoned = true;
    n.resumed = true;
    pthread_cond_signal(&n.gate);
    pthread_mutex_unlock(&n.gateLock);
    pthread_join(n.handle, nullptr);
}

bool Thread::created() const {
    return native_->created;
}

bool Thread::finished() const {
    return native_->finished.load();
}

void Thread::create() {
    Native& n = *native_;
    if (n.created)
        return;
    const int result = pthread_create(&n.handle, nullptr, &Native::start, this);
    if (result != 0)
        throwError("Error creating thread", result);
    n.created = true;
}

void Thread::start() {
    create();
    Native& n = *native_;
    int result = pthread_mutex_lock(&n.gateLock);
    if (result != 0)
        throwError("Error starting thread", result);
    n.resumed = true;
    result = pthread_cond_signal(&n.gate);
    pthread_mutex_unlock(&n.gateLock);
    if (result != 0)
        throwError("Error starting thread", result);
}

void Thread::setPriority(Priority priority) {
    Native& n = *native_;
    if (!n.created || n.joined)
        throwError("Error setting thread priority", ESRCH);
    // The new thread notes its kernel id before it reaches the gate.
    while (n.kernelId.load() == 0)
        sched_yield();
    if (::setpriority(PRIO_PROCESS, static_cast<id_t>(n.kernelId.load()), niceFor(priority)) != 0)
        throwSystemError("Error setting thread priority");
}

void Thread::join() {
    Native& n = *native_;
    if (!n.created || n.joined)
        throwError("Error waiting on thread to finish", ESRCH);
    // Answered here, as the system would, rather than handing the system a
    // join of the calling thread itself.
    if (pthread_equal(n.handle, pthread_self()))
        throwError("Error waiting on thread to finish", EDEADLK);
    const int result = pthread_join(n.handle, nullptr);
    if (result != 0)
        throwError("Error waiting on thread to finish", result);
    n.joined = true;
}

void Thread::queueCall(std::function<void()> call) {
    Native& n = *native_;
    if (!n.created || n.joined)
        throwError("Error queueing a call to thread", ESRCH);
    alerts::queue(n.alerts, std::move(call));
}

void Thread::kill() {
    Native& n = *native_;
    if (!n.created || n.joined)
        throwError("Error killing thread", ESRCH);
    if (pthread_equal(n.handle, pthread_self()))
        throwError("Error killing thread", EDEADLK);
    // A thread still at the gate leaves without running its body.
    pthread_mutex_lock(&n.gateLock);
    if (!n.resumed)
        n.abandoned = true;
    n.resumed = true;
    pthread_cond_signal(&n.gate);
    pthread_mutex_unlock(&n.gateLock);
    int result = pthread_cancel(n.handle);
    if (result != 0 && result != ESRCH)
        throwError("Error killing thread", result);
    result = pthread_join(n.handle, nullptr);
    if (result != 0)
        throwError("Error killing thread", result);
    n.joined = true;
    n.finished = true;
}

}  // namespace OrlThreads
