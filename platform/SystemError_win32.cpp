#include "platform/SystemError.h"

#include "platform/Utf16.h"

#include <windows.h>

namespace platform {

long lastSystemError() {
    return static_cast<long>(GetLastError());
}

std::string systemErrorText(long code) {
    wchar_t* buffer = nullptr;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, static_cast<DWORD>(code), 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    if (length == 0 || buffer == nullptr)
        return "Unknown error " + std::to_string(code);
    std::u16string text(reinterpret_cast<const char16_t*>(buffer), length);
    LocalFree(buffer);
    while (!text.empty() && (text.back() == u'\r' || text.back() == u'\n' || text.back() == u' '))
        text.pop_back();
    return utf16ToUtf8Lossy(text);
}

}  // namespace platform
