// The operating system's own error codes and texts, as failure messages of
// the platform services show them: "message [code : text]".
#pragma once

#include <string>
#include <string_view>

namespace platform {

// The calling thread's last system error (errno, or GetLastError on Windows).
long lastSystemError();

// The system's text for an error code, without a trailing line break.
std::string systemErrorText(long code);

// "message [code : text]"; the message alone when code is 0.
std::string messageWithSystemError(std::string_view message, long code, std::string_view text);

}  // namespace platform
