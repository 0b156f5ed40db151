#include "platform/OrlFiles/File.h"

#include <utility>

namespace OrlFiles {

File::File(File&& other) noexcept : handle_(std::exchange(other.handle_, invalidHandle)) {}

File& File::operator=(File&& other) noexcept {
    if (this != &other) {
        close();
        handle_ = std::exchange(other.handle_, invalidHandle);
    }
    return *this;
}

File::~File() {
    close();
}

File File::adopt(std::intptr_t handle) {
    return File(handle);
}

std::string readWholeFile(const Path& path) {
    File file = File::openForReading(path);
    std::string content;
    char buffer[65536];
    for (;;) {
        const std::size_t n = file.read(buffer, sizeof buffer);
        if (n == 0)
            break;
        content.append(buffer, n);
    }
    return content;
}

}  // namespace OrlFiles
