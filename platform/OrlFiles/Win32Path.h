// The form of a path that the Windows file functions take.
#pragma once

#include "platform/OrlFiles/Path.h"

#include <string>

namespace OrlFiles {

// The path's system text as a wide string (long prefix included); "." for
// the empty path.
inline std::wstring win32PathText(const Path& path) {
    const std::u16string text = path.empty() ? std::u16string(u".") : path.systemText();
    return std::wstring(text.begin(), text.end());
}

}  // namespace OrlFiles
