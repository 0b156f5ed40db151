#include "platform/SystemError.h"

#include <cerrno>
#include <cstring>

namespace platform {

long lastSystemError() {
    return errno;
}

std::string systemErrorText(long code) {
    char buffer[256];
    // The GNU form returns a pointer that may or may not be the buffer.
#if defined(__GLIBC__) && defined(_GNU_SOURCE)
    const char* text = strerror_r(static_cast<int>(code), buffer, sizeof buffer);
    return text ? std::string(text) : std::string("Unknown error");
#else
    if (strerror_r(static_cast<int>(code), buffer, sizeof buffer) != 0)
        return "Unknown error " + std::to_string(code);
    return buffer;
#endif
}

}  // namespace platform
