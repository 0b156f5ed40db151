// An open file: reading, writing, size and position. Move-only; closing is
// the destructor's job (or close()).
#pragma once

#include "platform/OrlFiles/Path.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace OrlFiles {

class File {
public:
    File() = default;
    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File();

    // An existing file, for reading only. "Error opening file".
    static File openForReading(const Path& path);
    // An existing file, for reading and writing, from its start. "Error opening file".
    static File openForReadingAndWriting(const Path& path);
    // A new file or an existing one emptied, for reading and writing. "Error creating file".
    static File create(const Path& path);

    bool isOpen() const { return handle_ != invalidHandle; }
    void close();

    // "Error obtaining size of file".
    std::uint64_t size() const;
    // Up to count bytes from the current position; fewer only at the end.
    // "Error reading from file".
    std::size_t read(void* buffer, std::size_t count);
    // All count bytes at the current position. "Error writing to file".
    void write(const void* data, std::size_t count);
    void write(std::string_view bytes) { write(bytes.data(), bytes.size()); }
    // Moves the position to offset from the start. "Error reading from file".
    void seek(std::uint64_t offset);
    // Pushes written bytes through to the disk. "Error writing to file".
    void flushToDisk();

    // The system's handle: a descriptor, or a HANDLE on Windows.
    std::intptr_t nativeHandle() const { return handle_; }
    // Takes ownership of an open system handle.
    static File adopt(std::intptr_t handle);

    static constexpr std::intptr_t invalidHandle = -1;

private:
    explicit File(std::intptr_t handle) : handle_(handle) {}
    std::intptr_t handle_ = invalidHandle;
};

// The whole content of a file. Fails as File does.
std::string readWholeFile(const Path& path);

}  // namespace OrlFiles
