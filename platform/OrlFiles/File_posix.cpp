#include "platform/OrlFiles/File.h"

#include "platform/OrlFiles/Exception.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace OrlFiles {

namespace {

File openWith(const Path& path, int flags, const char* message) {
    const int fd = ::open(path.utf8().c_str(), flags | O_CLOEXEC, 0666);
    if (fd < 0)
        throwSystemError(message);
    return File::adopt(fd);
}

int descriptor(std::intptr_t handle) {
    return static_cast<int>(handle);
}

}  // namespace

File File::openForReading(const Path& path) {
    return openWith(path, O_RDONLY, "Error opening file");
}

File File::openForReadingAndWriting(const Path& path) {
    return openWith(path, O_RDWR, "Error opening file");
}

File File::create(const Path& path) {
    return openWith(path, O_RDWR | O_CREAT | O_TRUNC, "Error creating file");
}

void File::close() {
    if (handle_ != invalidHandle) {
        ::close(descriptor(handle_));
        handle_ = invalidHandle;
    }
}

std::uint64_t File::size() const {
    struct stat st {};
    if (::fstat(descriptor(handle_), &st) != 0)
        throwSystemError("Error obtaining size of file");
    return static_cast<std::uint64_t>(st.st_size);
}

std::size_t File::read(void* buffer, std::size_t count) {
    auto* out = static_cast<char*>(buffer);
    std::size_t done = 0;
    while (done < count) {
        const ssize_t n = ::read(descriptor(handle_), out + done, count - done);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            throwSystemError("Error reading from file");
        }
        if (n == 0)
            break;
        done += static_cast<std::size_t>(n);
    }
    return done;
}

void File::write(const void* data, std::size_t count) {
    const auto* in = static_cast<const char*>(data);
    std::size_t done = 0;
    while (done < count) {
        const ssize_t n = ::write(descriptor(handle_), in + done, count - done);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            throwSystemError("Error writing to file");
        }
        done += static_cast<std::size_t>(n);
    }
}

void File::seek(std::uint64_t offset) {
    if (::lseek(descriptor(handle_), static_cast<off_t>(offset), SEEK_SET) < 0)
        throwSystemError("Error reading from file");
}

void File::flushToDisk() {
    if (::fsync(descriptor(handle_)) != 0)
        throwSystemError("Error writing to file");
}

}  // namespace OrlFiles
