#include "platform/OrlFiles/Exception.h"

#include "platform/SystemError.h"

namespace OrlFiles {

Exception::Exception(std::string message) : message_(std::move(message)), full_(message_) {}

Exception::Exception(std::string message, long systemCode)
    : Exception(std::move(message), systemCode, platform::systemErrorText(systemCode)) {}

Exception::Exception(std::string message, long systemCode, std::string systemText)
    : message_(std::move(message)),
      systemCode_(systemCode),
      systemText_(std::move(systemText)),
      full_(platform::messageWithSystemError(message_, systemCode_, systemText_)) {}

void throwSystemError(const char* message) {
    const long code = platform::lastSystemError();  // before anything can change it
    throw Exception(message, code);
}

}  // namespace OrlFiles
