#include "platform/Log.h"

#include <windows.h>

#include <ctime>

namespace platform {

std::uint32_t logThreadNumber() { return static_cast<std::uint32_t>(GetCurrentThreadId()); }

std::tm localTimeNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_s(&local, &now);
    return local;
}

}  // namespace platform
