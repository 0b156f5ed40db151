#include <cstdlib>
#include <string>

#include "platform/UserFolders.h"

namespace platform {

namespace {

OrlFiles::Path dataFolder() {
    const char* xdg = std::getenv("XDG_DATA_HOME");
    if (xdg != nullptr && xdg[0] == '/') return OrlFiles::Path::parse(std::string(xdg)).child("Tendrane");
    const char* home = std::getenv("HOME");
    const std::string base = home != nullptr && home[0] != 0 ? std::string(home) : std::string("/tmp");
    return OrlFiles::Path::parse(base + "/.local/share").child("Tendrane");
}

}  // namespace

OrlFiles::Path defaultPatchFolder() { return dataFolder().child("Patches"); }

OrlFiles::Path documentationFolder() { return dataFolder().child("Docs"); }

}  // namespace platform
