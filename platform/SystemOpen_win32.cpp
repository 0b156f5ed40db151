#include <windows.h>
#include <shellapi.h>

#include <string>

#include "platform/Exceptions.h"
#include "platform/SystemOpen.h"
#include "platform/Utf16.h"

namespace platform {

void openWithSystem(std::string_view fileOrUrl) {
    const std::u16string text = utf8ToUtf16(fileOrUrl).value_or(u"");
    const std::wstring target(text.begin(), text.end());
    const HINSTANCE result = ShellExecuteW(nullptr, L"open", target.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    // Results above 32 mean it opened.
    if (reinterpret_cast<INT_PTR>(result) <= 32) throw Exception("Could not open " + std::string(fileOrUrl));
}

}  // namespace platform
