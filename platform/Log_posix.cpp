#include "platform/Log.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <ctime>

namespace platform {

std::uint32_t logThreadNumber() { return static_cast<std::uint32_t>(::syscall(SYS_gettid)); }

std::tm localTimeNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return local;
}

}  // namespace platform
