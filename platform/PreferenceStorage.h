// Where the machine-wide preferences live, and the lock that orders every
// access to them across threads and processes.
//
// Windows: the binary value "Data" under the registry key
// SOFTWARE\Korvex Development\Quillbrook of the current user, locked by the
// named mutex "com.quillbrook.registrymutex".
// Elsewhere: the file "Quillbrook.prefs" in the folder "Korvex Development"
// under $XDG_CONFIG_HOME (default ~/.config), locked by flock on the file
// "Quillbrook.lock" beside it. The value is replaced by an atomic rename.
#pragma once

#include <string>
#include <string_view>

namespace platform {

// Holds the machine-wide lock for its lifetime. Waits without a time limit;
// an abandoned lock counts as acquired. Any other end of the wait fails with
// xGlobalMutexEnterTimedOut, a failure of the system with Kvx::xOSError.
// Re-entrant within a process: nested holders share one acquisition.
class PreferenceLock {
public:
    PreferenceLock();
    ~PreferenceLock();
    PreferenceLock(const PreferenceLock&) = delete;
    PreferenceLock& operator=(const PreferenceLock&) = delete;
};

// The stored bytes, empty when nothing is stored. Hold the lock.
std::string readPreferenceValue();
// Replaces the stored bytes. Hold the lock.
void writePreferenceValue(std::string_view bytes);

// A readable name of the place (a file path, or the registry key and value).
std::string preferenceLocation();

}  // namespace platform
