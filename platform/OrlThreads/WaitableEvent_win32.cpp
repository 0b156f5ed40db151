#include "platform/OrlThreads/WaitableEvent.h"

#include "platform/OrlThreads/Exception.h"

#include <windows.h>

namespace OrlThreads {

struct WaitableEvent::Native {
    HANDLE handle = nullptr;
};

WaitableEvent::WaitableEvent(Reset reset, bool initiallySet) : native_(std::make_unique<Native>()) {
    native_->handle = CreateEventW(nullptr, reset == Reset::manual, initiallySet, nullptr);
    if (!native_->handle)
        throwSystemError("Error creating waitable event");
}

WaitableEvent::~WaitableEvent() {
    CloseHandle(native_->handle);
}

void WaitableEvent::set() {
    if (!SetEvent(native_->handle))
        throwSystemError("Error signaling waitable event");
}

void WaitableEvent::reset() {
    if (!ResetEvent(native_->handle))
        throwSystemError("Error resetting waitable event");
}

WaitableEvent::WaitResult WaitableEvent::wait(std::uint32_t timeoutMs) {
    const DWORD result = WaitForSingleObjectEx(native_->handle, timeoutMs == infinite ? INFINITE : timeoutMs, TRUE);
    switch (result) {
    case WAIT_OBJECT_0: return WaitResult::signaled;
    case WAIT_TIMEOUT: return WaitResult::timedOut;
    case WAIT_IO_COMPLETION: return WaitResult::alerted;
    default: throwSystemError("Error waiting on an event");
    }
}

}  // namespace OrlThreads
