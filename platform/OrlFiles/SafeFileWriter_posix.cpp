#include "platform/OrlFiles/SafeFileWriter.h"

#include "platform/OrlFiles/Exception.h"
#include "platform/OrlFiles/Files.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace OrlFiles {

namespace {

std::string systemPath(const Path& path) {
    return path.empty() ? std::string(".") : path.utf8();
}

// A name for the temporary file: the prefix, a dash, six letters or
// digits that differ from call to call and process to process, ".tmp".
std::u16string temporaryName(const std::u16string& prefix) {
    static std::atomic<std::uint64_t> counter{0};
    std::uint64_t x = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    x ^= static_cast<std::uint64_t>(::getpid()) << 32;
    x += counter.fetch_add(1, std::memory_order_relaxed) * 0x9E3779B97F4A7C15ull;
    x ^= x >> 31;
    x *= 0xBF58476D1CE4E5B9ull;
    x ^= x >> 29;
    constexpr char16_t digits[] = u"0123456789abcdefghijklmnopqrstuvwxyz";
    std::u16string name = prefix + u"-";
    for (int i = 0; i < 6; ++i) {
        name += digits[x % 36];
        x /= 36;
    }
    return name + u".tmp";
}

std::u16string prefixFor(const Path& destination) {
    const std::u16string stem = destination.stem();
    return stem.empty() || stem == u"." || stem == u".." ? std::u16string(u"tmp") : stem;
}

int descriptor(const File& file) {
    return static_cast<int>(file.nativeHandle());
}

}  // namespace

SafeFileWriter::SafeFileWriter(const Path& destination, Temporary kind) : destination_(destination) {
    try {
        folder_ = temporaryFolderFor(destination);
    } catch (const Exception& e) {
        throw Exception("Error creating temporary file", e.systemCode(), e.systemText());
    }
    const Path& folder = folder_;
    if (kind == Temporary::unnamedWherePossible) {
        const int fd = ::open(systemPath(folder).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
        if (fd >= 0) {
            stream_ = File::adopt(fd);
            return;
        }
        // The file system cannot make unnamed files: fall back to a name.
        if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL)
            throwSystemError("Error creating temporary file");
    }
    const std::u16string prefix = prefixFor(destination);
    for (int attempt = 0;; ++attempt) {
        const Path candidate = folder.child(std::u16string_view(temporaryName(prefix)));
        const int fd = ::open(candidate.utf8().c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0) {
            stream_ = File::adopt(fd);
            temporary_ = candidate;
            return;
        }
        if (errno != EEXIST || attempt >= 100)
            throwSystemError("Error creating temporary file");
    }
}

void SafeFileWriter::commit() {
    if (committed_)
        return;
    const int fd = descriptor(stream_);
    if (::fsync(fd) != 0)
        throwSystemError("Error committing file");

    // The replaced file's permissions carry over.
    struct stat old {};
    if (::stat(systemPath(destination_).c_str(), &old) == 0 && S_ISREG(old.st_mode))
        ::fchmod(fd, old.st_mode & 07777);

    // An unnamed file gets its temporary name only now.
    const Path& folder = folder_;
    for (int attempt = 0; temporary_.empty(); ++attempt) {
        const Path candidate = folder.child(std::u16string_view(temporaryName(prefixFor(destination_))));
        const std::string self = "/proc/self/fd/" + std::to_string(fd);
        int result = ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, candidate.utf8().c_str(), AT_SYMLINK_FOLLOW);
        if (result != 0 && errno == ENOENT)  // no /proc: the privileged way
            result = ::linkat(fd, "", AT_FDCWD, candidate.utf8().c_str(), AT_EMPTY_PATH);
        if (result == 0)
            temporary_ = candidate;
        else if (errno != EEXIST || attempt >= 100)
            throwSystemError("Error committing file");
    }

    // One atomic step: the destination is the old file or the new, never
    // anything between. The stream follows the file to its new name.
    if (::rename(systemPath(temporary_).c_str(), systemPath(destination_).c_str()) != 0)
        throwSystemError("Error committing file");
    committed_ = true;
    temporary_ = Path();

    // Make the rename itself durable.
    const int folderFd = ::open(systemPath(folder).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folderFd >= 0) {
        ::fsync(folderFd);
        ::close(folderFd);
    }
}

void SafeFileWriter::abandon() {
    if (committed_)
        return;
    stream_.close();
    if (!temporary_.empty() && !keepTemporary_) {
        const Path temporary = temporary_;
        temporary_ = Path();
        OrlFiles::remove(temporary);
    }
}

}  // namespace OrlFiles
