// Operations on files and folders by path. Each failure raises an
// OrlFiles::Exception with its fixed message and the system's error.
#pragma once

#include "platform/OrlFiles/Path.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace OrlFiles {

// A point in time as the file system keeps it: 100-nanosecond ticks since
// 1601-01-01 UTC, the same count on every platform.
struct FileTime {
    std::int64_t ticks = 0;
    friend auto operator<=>(const FileTime&, const FileTime&) = default;
};

struct FileInfo {
    std::uint64_t size = 0;
    bool isFolder = false;
    bool readOnly = false;
    // Empty where the file system keeps no creation time.
    std::optional<FileTime> creation;
    FileTime lastAccess;
    FileTime lastWrite;
};

struct FolderEntry {
    Path path;
    bool isFolder = false;
};

struct Attributes {
    bool readOnly = false;
    bool hidden = false;  // kept by Windows only; elsewhere a name's leading dot hides it
};

// Whether something exists at path. Never fails.
bool exists(const Path& path);

// "Error obtaining file or directory info".
FileInfo fileInfo(const Path& path);

// The entries of folder whose names end in "." and extension (letters
// compared without regard to ASCII case), as the pattern "*." + extension
// would find them; every entry when extension is empty. "." and ".." are
// never listed. Sorted by name. "Error listing file directory".
std::vector<FolderEntry> listFolder(const Path& folder, std::u16string_view extension = {});

// "Error creating directory".
void createFolder(const Path& path);

// Copies a folder with everything in it to a new folder. "Error copying directory".
void copyFolder(const Path& from, const Path& to);

// "Error renaming or moving file or directory".
void renameOrMove(const Path& from, const Path& to);

// A file or an empty folder. "Error deleting file or directory".
void remove(const Path& path);

// Sets the times given; an empty one stays as it is. A creation time is set
// only where canSetCreationTime() holds. "Error updating time info on file or directory".
void setTimes(const Path& path, std::optional<FileTime> creation, std::optional<FileTime> lastAccess,
              std::optional<FileTime> lastWrite);

// Whether this platform can give a file a creation time of our choice.
bool canSetCreationTime();

// "Error updating attributes on file or directory".
void setAttributes(const Path& path, const Attributes& attributes);

// Matches name against the pattern "*." + extension as listFolder does.
bool nameHasExtension(std::u16string_view name, std::u16string_view extension);

}  // namespace OrlFiles
