#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <string>

#include "platform/Exceptions.h"
#include "platform/SystemOpen.h"

extern char** environ;

namespace platform {

namespace {

// The desktop's opener runs in the background of a short-lived shell, so
// that the host never waits for it and no child is left unreaped.
constexpr const char* OPEN_SCRIPT =
    "command -v xdg-open >/dev/null 2>&1 || exit 127; xdg-open \"$1\" >/dev/null 2>&1 </dev/null & exit 0";
constexpr int NO_OPENER = 127;

}  // namespace

void openWithSystem(std::string_view fileOrUrl) {
    const std::string target(fileOrUrl);
    char* const argv[] = {const_cast<char*>("sh"), const_cast<char*>("-c"), const_cast<char*>(OPEN_SCRIPT),
                          const_cast<char*>("sh"), const_cast<char*>(target.c_str()), nullptr};
    pid_t pid = 0;
    if (posix_spawn(&pid, "/bin/sh", nullptr, nullptr, argv, environ) != 0)
        throw Exception("Could not open " + target);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == NO_OPENER)
        throw Exception("Could not open " + target + " : no program to open it with (xdg-open) is installed");
}

}  // namespace platform
