#include "platform/OrlFiles/Files.h"

#include "platform/OrlFiles/Exception.h"
#include "platform/OrlFiles/File.h"
#include "platform/Utf16.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace OrlFiles {

namespace {

// Seconds from 1601-01-01 to 1970-01-01.
constexpr std::int64_t epochDifference = 11644473600;

FileTime fromUnix(std::int64_t seconds, std::int64_t nanoseconds) {
    return FileTime{(seconds + epochDifference) * 10000000 + nanoseconds / 100};
}

timespec toUnix(FileTime t) {
    std::int64_t ticks = t.ticks - epochDifference * 10000000;
    std::int64_t seconds = ticks / 10000000;
    std::int64_t rest = ticks % 10000000;
    if (rest < 0) {
        rest += 10000000;
        seconds -= 1;
    }
    timespec ts{};
    ts.tv_sec = static_cast<time_t>(seconds);
    ts.tv_nsec = static_cast<long>(rest * 100);
    return ts;
}

std::string systemPath(const Path& path) {
    return path.empty() ? std::string(".") : path.utf8();
}

struct FolderHandle {
    DIR* dir;
    ~FolderHandle() {
        if (dir)
            closedir(dir);
    }
};

// Raw listing: every name but "." and "..", with whether it is a folder.
std::vector<FolderEntry> readFolder(const Path& folder, std::u16string_view extension, const char* message) {
    FolderHandle handle{opendir(systemPath(folder).c_str())};
    if (!handle.dir)
        throwSystemError(message);
    std::vector<FolderEntry> entries;
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(handle.dir);
        if (!entry) {
            if (errno != 0)
                throwSystemError(message);
            break;
        }
        const std::string_view name(entry->d_name);
        if (name == "." || name == "..")
            continue;
        const auto name16 = platform::utf8ToUtf16(name);
        if (!name16 || !nameHasExtension(*name16, extension))
            continue;  // a name that is no UTF-8 cannot be a path part
        FolderEntry e{folder.child(std::u16string_view(*name16)), entry->d_type == DT_DIR};
        if (entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK) {
            struct stat st {};
            e.isFolder = ::stat(e.path.utf8().c_str(), &st) == 0 && S_ISDIR(st.st_mode);
        }
        entries.push_back(std::move(e));
    }
    std::sort(entries.begin(), entries.end(),
              [](const FolderEntry& a, const FolderEntry& b) { return a.path < b.path; });
    return entries;
}

void copyFolderContent(const Path& from, const Path& to) {
    if (::mkdir(systemPath(to).c_str(), 0777) != 0)
        throwSystemError("Error copying directory");
    for (const FolderEntry& entry : readFolder(from, {}, "Error copying directory")) {
        const Path target = to.child(std::u16string_view(entry.path.name()));
        if (entry.isFolder) {
            copyFolderContent(entry.path, target);
            continue;
        }
        File in = File::openForReading(entry.path);
        File out = File::create(target);
        char buffer[65536];
        for (;;) {
            const std::size_t n = in.read(buffer, sizeof buffer);
            if (n == 0)
                break;
            out.write(buffer, n);
        }
    }
}

}  // namespace

bool exists(const Path& path) {
    struct stat st {};
    return ::stat(systemPath(path).c_str(), &st) == 0;
}

FileInfo fileInfo(const Path& path) {
    FileInfo info;
    struct statx sx {};
    if (::statx(AT_FDCWD, systemPath(path).c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &sx) != 0)
        throwSystemError("Error obtaining file or directory info");
    info.size = sx.stx_size;
    info.isFolder = S_ISDIR(sx.stx_mode);
    info.readOnly = (sx.stx_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
    if (sx.stx_mask & STATX_BTIME)
        info.creation = fromUnix(sx.stx_btime.tv_sec, sx.stx_btime.tv_nsec);
    info.lastAccess = fromUnix(sx.stx_atime.tv_sec, sx.stx_atime.tv_nsec);
    info.lastWrite = fromUnix(sx.stx_mtime.tv_sec, sx.stx_mtime.tv_nsec);
    return info;
}

std::vector<FolderEntry> listFolder(const Path& folder, std::u16string_view extension) {
    return readFolder(folder, extension, "Error listing file directory");
}

void createFolder(const Path& path) {
    if (::mkdir(systemPath(path).c_str(), 0777) != 0)
        throwSystemError("Error creating directory");
}

void copyFolder(const Path& from, const Path& to) {
    try {
        copyFolderContent(from, to);
    } catch (const Exception& e) {
        throw Exception("Error copying directory", e.systemCode(), e.systemText());
    }
}

void renameOrMove(const Path& from, const Path& to) {
    if (::rename(systemPath(from).c_str(), systemPath(to).c_str()) != 0)
        throwSystemError("Error renaming or moving file or directory");
}

void remove(const Path& path) {
    const std::string text = systemPath(path);
    struct stat st {};
    const bool folder = ::lstat(text.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
    if ((folder ? ::rmdir(text.c_str()) : ::unlink(text.c_str())) != 0)
        throwSystemError("Error deleting file or directory");
}

void setTimes(const Path& path, std::optional<FileTime>, std::optional<FileTime> lastAccess,
              std::optional<FileTime> lastWrite) {
    timespec times[2];
    times[0] = lastAccess ? toUnix(*lastAccess) : timespec{0, UTIME_OMIT};
    times[1] = lastWrite ? toUnix(*lastWrite) : timespec{0, UTIME_OMIT};
    if (::utimensat(AT_FDCWD, systemPath(path).c_str(), times, 0) != 0)
        throwSystemError("Error updating time info on file or directory");
}

bool canSetCreationTime() {
    return false;  // no system call sets a file's birth time
}

void setAttributes(const Path& path, const Attributes& attributes) {
    const std::string text = systemPath(path);
    struct stat st {};
    if (::stat(text.c_str(), &st) != 0)
        throwSystemError("Error updating attributes on file or directory");
    mode_t mode = st.st_mode & 07777;
    mode = attributes.readOnly ? mode & ~(S_IWUSR | S_IWGRP | S_IWOTH) : mode | S_IWUSR;
    if (::chmod(text.c_str(), mode) != 0)
        throwSystemError("Error updating attributes on file or directory");
}

}  // namespace OrlFiles
