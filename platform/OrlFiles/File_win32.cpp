#include "platform/OrlFiles/File.h"

#include "platform/OrlFiles/Exception.h"
#include "platform/OrlFiles/Win32Path.h"

#include <windows.h>

#include <algorithm>

namespace OrlFiles {

namespace {

HANDLE asHandle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

File openWith(const Path& path, DWORD access, DWORD disposition, const char* message) {
    const HANDLE h = CreateFileW(win32PathText(path).c_str(), access, FILE_SHARE_READ, nullptr, disposition,
                                 FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE)
        throwSystemError(message);
    return File::adopt(reinterpret_cast<std::intptr_t>(h));
}

}  // namespace

File File::openForReading(const Path& path) {
    return openWith(path, GENERIC_READ, OPEN_EXISTING, "Error opening file");
}

File File::openForReadingAndWriting(const Path& path) {
    return openWith(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING, "Error opening file");
}

File File::create(const Path& path) {
    return openWith(path, GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS, "Error creating file");
}

void File::close() {
    if (handle_ != invalidHandle) {
        CloseHandle(asHandle(handle_));
        handle_ = invalidHandle;
    }
}

std::uint64_t File::size() const {
    LARGE_INTEGER size;
    if (!GetFileSizeEx(asHandle(handle_), &size))
        throwSystemError("Error obtaining size of file");
    return static_cast<std::uint64_t>(size.QuadPart);
}

std::size_t File::read(void* buffer, std::size_t count) {
    auto* out = static_cast<char*>(buffer);
    std::size_t done = 0;
    while (done < count) {
        const DWORD chunk = static_cast<DWORD>(std::min<std::size_t>(count - done, 1u << 30));
        DWORD n = 0;
        if (!ReadFile(asHandle(handle_), out + done, chunk, &n, nullptr))
            throwSystemError("Error reading from file");
        if (n == 0)
            break;
        done += n;
    }
    return done;
}

void File::write(const void* data, std::size_t count) {
    const auto* in = static_cast<const char*>(data);
    std::size_t done = 0;
    while (done < count) {
        const DWORD chunk = static_cast<DWORD>(std::min<std::size_t>(count - done, 1u << 30));
        DWORD n = 0;
        if (!WriteFile(asHandle(handle_), in + done, chunk, &n, nullptr))
            throwSystemError("Error writing to file");
        done += n;
    }
}

void File::seek(std::uint64_t offset) {
    LARGE_INTEGER to;
    to.QuadPart = static_cast<LONGLONG>(offset);
    if (!SetFilePointerEx(asHandle(handle_), to, nullptr, FILE_BEGIN))
        throwSystemError("Error reading from file");
}

void File::flushToDisk() {
    if (!FlushFileBuffers(asHandle(handle_)))
        throwSystemError("Error writing to file");
}

}  // namespace OrlFiles
