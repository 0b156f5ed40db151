#if !defined(_WIN32_WINNT) || _WIN32_WINNT < 0x0600
#undef _WIN32_WINNT
#define _WIN32_WINNT 0x0600  // thread ids from handles
#endif

#include "platform/OrlThreads/Thread.h"

#include "platform/OrlThreads/Exception.h"

#include <windows.h>

#include <cerrno>
#include <process.h>

namespace OrlThreads {

struct Thread::Native {
    HANDLE handle = nullptr;
    bool resumed = false;
    bool joined = false;
    volatile LONG finished = 0;

    static unsigned __stdcall start(void* argument) {
        Thread* self = static_cast<Thread*>(argument);
        try {
            entry(self);
        } catch (...) {
            // The body's failure ends its thread and goes no further.
        }
        InterlockedExchange(&self->native_->finished, 1);
        return 0;
    }
};

namespace {

int priorityFor(Thread::Priority priority) {
    switch (priority) {
    case Thread::Priority::lowest: return THREAD_PRIORITY_LOWEST;
    case Thread::Priority::belowNormal: return THREAD_PRIORITY_BELOW_NORMAL;
    case Thread::Priority::normal: return THREAD_PRIORITY_NORMAL;
    case Thread::Priority::aboveNormal: return THREAD_PRIORITY_ABOVE_NORMAL;
    case Thread::Priority::highest: return THREAD_PRIORITY_HIGHEST;
    }
    return THREAD_PRIORITY_NORMAL;
}

}  // namespace

Thread::Thread(std::string name, std::function<void()> body)
    : name_(std::move(name)), body_(std::move(body)), native_(std::make_unique<Native>()) {}

Thread::~Thread() {
    Native& n = *native_;
    if (!n.handle)
        return;
    if (!n.joined) {
        if (n.resumed) {
            WaitForSingleObject(n.handle, INFINITE);
        } else {
            // Never started: it has run nothing and holds nothing.
            TerminateThread(n.handle, 0);
            WaitForSingleObject(n.handle, INFINITE);
        }
    }
    CloseHandle(n.handle);
}

bool Thread::created() const {
    return native_->handle != nullptr;
}

bool Thread::finished() const {
    return InterlockedCompareExchange(&native_->finished, 0, 0) != 0;
}

void Thread::create() {
    Native& n = *native_;
    if (n.handle)
        return;
    const uintptr_t handle = _beginthreadex(nullptr, 0, &Native::start, this, CREATE_SUSPENDED, nullptr);
    if (handle == 0)
        throwError("Couldn't begin thread", errno);
    n.handle = reinterpret_cast<HANDLE>(handle);
}

void Thread::start() {
    create();
    Native& n = *native_;
    if (n.resumed)
        return;
    if (ResumeThread(n.handle) == static_cast<DWORD>(-1))
        throwSystemError("Error starting thread");
    n.resumed = true;
}

void Thread::setPriority(Priority priority) {
    if (!SetThreadPriority(native_->handle, priorityFor(priority)))
        throwSystemError("Error setting thread priority");
}

void Thread::join() {
    Native& n = *native_;
    if (!n.handle || n.joined) {
        SetLastError(ERROR_INVALID_HANDLE);
        throwSystemError("Error waiting on thread to finish");
    }
    if (n.handle && GetThreadId(n.handle) == GetCurrentThreadId()) {
        SetLastError(ERROR_POSSIBLE_DEADLOCK);
        throwSystemError("Error waiting on thread to finish");
    }
    DWORD result;
    do  // an alertable wait: calls queued to this thread run meanwhile
        result = WaitForSingleObjectEx(n.handle, INFINITE, TRUE);
    while (result == WAIT_IO_COMPLETION);
    if (result == WAIT_FAILED)
        throwSystemError("Error waiting on thread to finish");
    n.joined = true;
}

namespace {

void CALLBACK runQueuedCall(ULONG_PTR argument) {
    std::unique_ptr<std::function<void()>> call(reinterpret_cast<std::function<void()>*>(argument));
    try {
        (*call)();
    } catch (...) {
        // A queued call has no one to report to.
    }
}

}  // namespace

void Thread::queueCall(std::function<void()> call) {
    Native& n = *native_;
    if (!n.handle || n.joined) {
        SetLastError(ERROR_INVALID_HANDLE);
        throwSystemError("Error queueing a call to thread");
    }
    auto* queued = new std::function<void()>(std::move(call));
    if (!QueueUserAPC(&runQueuedCall, n.handle, reinterpret_cast<ULONG_PTR>(queued))) {
        delete queued;
        throwSystemError("Error queueing a call to thread");
    }
}

void Thread::kill() {
    Native& n = *native_;
    if (!n.handle || n.joined) {
        SetLastError(ERROR_INVALID_HANDLE);
        throwSystemError("Error killing thread");
    }
    if (!TerminateThread(n.handle, 1))
        throwSystemError("Error killing thread");
    WaitForSingleObject(n.handle, INFINITE);
    n.joined = true;
    InterlockedExchange(&n.finished, 1);
}

}  // namespace OrlThreads
