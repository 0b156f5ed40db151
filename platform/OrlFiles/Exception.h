// Every failure of the file services: a fixed message and the system's error.
#pragma once

#include <exception>
#include <string>

namespace OrlFiles {

class Exception : public std::exception {
public:
    // A failure without a system error (what() is the message alone).
    explicit Exception(std::string message);
    // A failure with the system's error code; its text is looked up.
    Exception(std::string message, long systemCode);
    Exception(std::string message, long systemCode, std::string systemText);

    // "message [code : text]", or the message alone without a system error.
    const char* what() const noexcept override { return full_.c_str(); }

    const std::string& message() const { return message_; }
    long systemCode() const { return systemCode_; }
    const std::string& systemText() const { return systemText_; }

private:
    std::string message_;
    long systemCode_ = 0;
    std::string systemText_;
    std::string full_;
};

// Raises message with the calling thread's last system error.
[[noreturn]] void throwSystemError(const char* message);

}  // namespace OrlFiles
