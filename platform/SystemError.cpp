#include "platform/SystemError.h"

namespace platform {

std::string messageWithSystemError(std::string_view message, long code, std::string_view text) {
    std::string result(message);
    if (code == 0)
        return result;
    result += " [";
    result += std::to_string(code);
    result += " : ";
    result += text;
    result += ']';
    return result;
}

}  // namespace platform
