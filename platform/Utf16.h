// Conversions between UTF-8 (the program's narrow text) and UTF-16 (the
// text of file names on Windows and of path parts everywhere).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// Empty when the bytes are not well-formed UTF-8 (overlong forms, surrogates
// and code points above U+10FFFF count as malformed).
std::optional<std::u16string> utf8ToUtf16(std::string_view utf8);

// Empty when the text holds an unpaired surrogate.
std::optional<std::string> utf16ToUtf8(std::u16string_view utf16);

// As utf16ToUtf8, with U+FFFD standing for each unpaired surrogate.
std::string utf16ToUtf8Lossy(std::u16string_view utf16);

}  // namespace platform
