#include "platform/OrlThreads/Exception.h"

#include "platform/SystemError.h"

namespace OrlThreads {

Exception::Exception(std::string message, long systemCode)
    : Exception(std::move(message), systemCode, platform::systemErrorText(systemCode)) {}

Exception::Exception(std::string message, long systemCode, std::string systemText)
    : message_(std::move(message)),
      systemCode_(systemCode),
      systemText_(std::move(systemText)),
      full_(platform::messageWithSystemError(message_, systemCode_, systemText_)) {}

void throwError(const char* message, long systemCode) {
    throw Exception(message, systemCode);
}

void throwSystemError(const char* message) {
    const long code = platform::lastSystemError();  // before anything can change it
    throw Exception(message, code);
}

}  // namespace OrlThreads
