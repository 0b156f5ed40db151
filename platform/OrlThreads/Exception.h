// Every failure of the thread services: "message [code : text]", the fixed
// message with the system's error code and text in brackets.
#pragma once

#include <exception>
#include <string>

namespace OrlThreads {

class Exception : public std::exception {
public:
    // The system's text for the code is looked up.
    Exception(std::string message, long systemCode);
    Exception(std::string message, long systemCode, std::string systemText);

    const char* what() const noexcept override { return full_.c_str(); }

    const std::string& message() const { return message_; }
    long systemCode() const { return systemCode_; }
    const std::string& systemText() const { return systemText_; }

private:
    std::string message_;
    long systemCode_;
    std::string systemText_;
    std::string full_;
};

// Raises message with the given code (an errno value or a Windows error).
[[noreturn]] void throwError(const char* message, long systemCode);
// Raises message with the calling thread's last system error.
[[noreturn]] void throwSystemError(const char* message);

}  // namespace OrlThreads
