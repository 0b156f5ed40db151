// Hands a file or a web address to the system, which opens it with the
// program the user chose for it: the user guide, the update page.
#pragma once

#include <string_view>

namespace platform {

// Returns at once; the program opens on its own. Throws ::Exception when the
// system has no way to open it.
void openWithSystem(std::string_view fileOrUrl);

}  // namespace platform
