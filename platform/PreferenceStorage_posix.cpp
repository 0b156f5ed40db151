#include "platform/PreferenceStorage.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <mutex>

#include "platform/Exceptions.h"
#include "platform/SystemError.h"

namespace platform {

namespace {

const char* const kMakerFolder = "Korvex Development";
const char* const kValueFile = "Quillbrook.prefs";
const char* const kLockFile = "Quillbrook.lock";

[[noreturn]] void fail(const std::string& what, int code) {
    throw Kvx::xOSError(code, messageWithSystemError(what, code, systemErrorText(code)));
}

std::string configHome() {
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    if (xdg && xdg[0] == '/') return xdg;
    const char* home = std::getenv("HOME");
    if (!home || !home[0]) {
        const passwd* pw = getpwuid(getuid());
        home = pw ? pw->pw_dir : "/tmp";
    }
    return std::string(home) + "/.config";
}

// The maker's folder, made when missing.
std::string folder() {
    std::string base = configHome();
    for (std::size_t i = 1; i <= base.size(); ++i)
        if (i == base.size() || base[i] == '/') mkdir(base.substr(0, i).c_str(), 0700);
    std::string dir = base + "/" + kMakerFolder;
    if (mkdir(dir.c_str(), 0700) != 0 && errno != EEXIST) fail("Cannot create folder " + dir, errno);
    return dir;
}

// One acquisition of the file lock per process, shared by nested holders.
std::recursive_mutex& processMutex() {
    static std::recursive_mutex m;
    return m;
}
int lockDepth = 0;
int lockFd = -1;

}  // namespace

PreferenceLock::PreferenceLock() {
    std::unique_lock<std::recursive_mutex> guard(processMutex());
    if (lockDepth == 0) {
        const std::string path = folder() + "/" + kLockFile;
        int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (fd < 0) fail("Cannot open " + path, errno);
        if (flock(fd, LOCK_EX) != 0) {
            const int code = errno;
            close(fd);
            // A wait that a signal ended is the wait that ended without the lock.
            if (code == EINTR) throw xGlobalMutexEnterTimedOut();
            fail("Cannot lock " + path, code);
        }
        lockFd = fd;
    }
    ++lockDepth;
    guard.release();  // the mutex stays held until the destructor
}

PreferenceLock::~PreferenceLock() {
    if (--lockDepth == 0) {
        flock(lockFd, LOCK_UN);
        close(lockFd);
        lockFd = -1;
    }
    processMutex().unlock();
}

std::string readPreferenceValue() {
    const std::string path = folder() + "/" + kValueFile;
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        if (errno == ENOENT) return {};
        fail("Cannot open " + path, errno);
    }
    std::string data;
    char buffer[65536];
    while (true) {
        ssize_t n = read(fd, buffer, sizeof buffer);
        if (n < 0) {
            if (errno == EINTR) continue;
            const int code = errno;
            close(fd);
            fail("Cannot read " + path, code);
        }
        if (n == 0) break;
        data.append(buffer, static_cast<std::size_t>(n));
    }
    close(fd);
    return data;
}

void writePreferenceValue(std::string_view bytes) {
    const std::string dir = folder();
    const std::string path = dir + "/" + kValueFile;
    std::string temporary = dir + "/.Quillbrook.prefs.XXXXXX";
    int fd = mkstemp(temporary.data());
    if (fd < 0) fail("Cannot create a file in " + dir, errno);
    std::size_t done = 0;
    while (done < bytes.size()) {
        ssize_t n = write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            const int code = errno;
            close(fd);
            unlink(temporary.c_str());
            fail("Cannot write " + temporary, code);
        }
        done += static_cast<std::size_t>(n);
    }
    fchmod(fd, 0600);
    if (fsync(fd) != 0 || close(fd) != 0) {
        const int code = errno;
        unlink(temporary.c_str());
        fail("Cannot write " + temporary, code);
    }
    if (rename(temporary.c_str(), path.c_str()) != 0) {
        const int code = errno;
        unlink(temporary.c_str());
        fail("Cannot replace " + path, code);
    }
}

std::string preferenceLocation() { return configHome() + "/" + kMakerFolder + "/" + kValueFile; }

}  // namespace platform
