#include "platform/OrlThreads/TickCount.h"

#include <windows.h>

namespace OrlThreads {

std::uint64_t tickCount() {
    return GetTickCount64();
}

void yieldThread() {
    SwitchToThread();
}

}  // namespace OrlThreads
