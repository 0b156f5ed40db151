// Writes a file so that no one ever finds it half-written: the content goes
// into a temporary file beside the destination, which commit() puts in the
// destination's place. A writer destroyed (or abandoned) before commit
// leaves the destination as it was and removes its temporary file.
//
//   OrlFiles::SafeFileWriter writer(path);
//   writer.write(text);
//   writer.commit();
//
// Linux: the temporary file has no name while it is written (a process
// killed meanwhile leaves nothing behind); commit syncs it to the disk,
// names it in the destination's folder and renames it over the destination
// in one atomic step. The replaced file's permissions carry over; its
// creation time cannot (no call sets a birth time).
// Windows: a uniquely named temporary file in the destination's folder,
// marked for deletion until the commit, so that the system removes it if the
// process dies first; commit keeps the creation time of the file it replaces.
#pragma once

#include "platform/OrlFiles/File.h"
#include "platform/OrlFiles/Path.h"

#include <cstddef>
#include <string_view>

namespace OrlFiles {

class SafeFileWriter {
public:
    // How the temporary file is made: without a name where the system
    // allows it, or always with one (the way every system allows).
    enum class Temporary { unnamedWherePossible, named };

    // Makes the temporary file. "Error creating temporary file".
    explicit SafeFileWriter(const Path& destination, Temporary kind = Temporary::unnamedWherePossible);
    // Abandons the content unless committed.
    ~SafeFileWriter();
    SafeFileWriter(const SafeFileWriter&) = delete;
    SafeFileWriter& operator=(const SafeFileWriter&) = delete;

    // "Error writing to file".
    void write(const void* data, std::size_t count) { stream_.write(data, count); }
    void write(std::string_view bytes) { stream_.write(bytes); }

    // The open stream: on the temporary file until commit, then on the
    // destination (still on the temporary file after a failed commit).
    File& stream() { return stream_; }

    // Puts the content in the destination's place. On failure, "Error
    // committing file" with the system's error; the writer stays usable.
    void commit();

    // Closes the stream and removes the temporary file. Nothing happens
    // after a commit.
    void abandon();

    const Path& destination() const { return destination_; }
    // The temporary file's path; empty while it has no name (Linux) and
    // after a commit.
    const Path& temporary() const { return temporary_; }
    bool committed() const { return committed_; }

    // The folder the temporary file goes into: the destination when it is
    // a folder, else its parent.
    static Path temporaryFolderFor(const Path& destination);

private:
    Path destination_;
    Path folder_;  // where the temporary file lives
    Path temporary_;
    File stream_;
    bool committed_ = false;
    // Set where a failed commit left the only copy of the content in the
    // temporary file: abandoning then keeps it.
    bool keepTemporary_ = false;
};

}  // namespace OrlFiles
