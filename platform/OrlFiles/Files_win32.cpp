#include "platform/OrlFiles/Files.h"

#include "platform/OrlFiles/Exception.h"
#include "platform/OrlFiles/Win32Path.h"

#include <windows.h>

#include <algorithm>

namespace OrlFiles {

namespace {

FileTime fromFiletime(const FILETIME& t) {
    return FileTime{static_cast<std::int64_t>((static_cast<std::uint64_t>(t.dwHighDateTime) << 32) | t.dwLowDateTime)};
}

FILETIME toFiletime(FileTime t) {
    const auto ticks = static_cast<std::uint64_t>(t.ticks);
    FILETIME f;
    f.dwLowDateTime = static_cast<DWORD>(ticks & 0xFFFFFFFFu);
    f.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    return f;
}

std::u16string nameOf(const WIN32_FIND_DATAW& data) {
    const auto* name = reinterpret_cast<const char16_t*>(data.cFileName);
    return std::u16string(name);
}

std::vector<FolderEntry> readFolder(const Path& folder, std::u16string_view extension, const char* message) {
    std::wstring pattern = win32PathText(folder);
    pattern += extension.empty() ? L"\\*" : L"\\*.";
    pattern.append(extension.begin(), extension.end());
    WIN32_FIND_DATAW data;
    const HANDLE find = FindFirstFileW(pattern.c_str(), &data);
    std::vector<FolderEntry> entries;
    if (find == INVALID_HANDLE_VALUE) {
        if (GetLastError() == ERROR_FILE_NOT_FOUND)
            return entries;
        throwSystemError(message);
    }
    do {
        const std::u16string name = nameOf(data);
        if (name == u"." || name == u".." || !nameHasExtension(name, extension))
            continue;
        entries.push_back({folder.child(std::u16string_view(name)),
                           (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0});
    } while (FindNextFileW(find, &data));
    const DWORD error = GetLastError();
    FindClose(find);
    if (error != ERROR_NO_MORE_FILES) {
        SetLastError(error);
        throwSystemError(message);
    }
    std::sort(entries.begin(), entries.end(),
              [](const FolderEntry& a, const FolderEntry& b) { return a.path < b.path; });
    return entries;
}

void copyFolderContent(const Path& from, const Path& to) {
    if (!CreateDirectoryW(win32PathText(to).c_str(), nullptr))
        throwSystemError("Error copying directory");
    for (const FolderEntry& entry : readFolder(from, {}, "Error copying directory")) {
        const Path target = to.child(std::u16string_view(entry.path.name()));
        if (entry.isFolder)
            copyFolderContent(entry.path, target);
        else if (!CopyFileW(win32PathText(entry.path).c_str(), win32PathText(target).c_str(), TRUE))
            throwSystemError("Error copying directory");
    }
}

}  // namespace

bool exists(const Path& path) {
    return GetFileAttributesW(win32PathText(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

FileInfo fileInfo(const Path& path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileAttributesExW(win32PathText(path).c_str(), GetFileExInfoStandard, &data))
        throwSystemError("Error obtaining file or directory info");
    FileInfo info;
    info.size = (static_cast<std::uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
    info.isFolder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    info.readOnly = (data.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    info.creation = fromFiletime(data.ftCreationTime);
    info.lastAccess = fromFiletime(data.ftLastAccessTime);
    info.lastWrite = fromFiletime(data.ftLastWriteTime);
    return info;
}

std::vector<FolderEntry> listFolder(const Path& folder, std::u16string_view extension) {
    return readFolder(folder, extension, "Error listing file directory");
}

void createFolder(const Path& path) {
    if (!CreateDirectoryW(win32PathText(path).c_str(), nullptr))
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
    if (!MoveFileW(win32PathText(from).c_str(), win32PathText(to).c_str()))
        throwSystemError("Error renaming or moving file or directory");
}

void remove(const Path& path) {
    const std::wstring text = win32PathText(path);
    const DWORD attributes = GetFileAttributesW(text.c_str());
    const bool folder = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (!(folder ? RemoveDirectoryW(text.c_str()) : DeleteFileW(text.c_str())))
        throwSystemError("Error deleting file or directory");
}

void setTimes(const Path& path, std::optional<FileTime> creation, std::optional<FileTime> lastAccess,
              std::optional<FileTime> lastWrite) {
    const HANDLE h = CreateFileW(win32PathText(path).c_str(), FILE_WRITE_ATTRIBUTES,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                 FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (h == INVALID_HANDLE_VALUE)
        throwSystemError("Error updating time info on file or directory");
    FILETIME c{}, a{}, w{};
    if (creation)
        c = toFiletime(*creation);
    if (lastAccess)
        a = toFiletime(*lastAccess);
    if (lastWrite)
        w = toFiletime(*lastWrite);
    const BOOL ok = SetFileTime(h, creation ? &c : nullptr, lastAccess ? &a : nullptr, lastWrite ? &w : nullptr);
    const DWORD error = GetLastError();
    CloseHandle(h);
    if (!ok) {
        SetLastError(error);
        throwSystemError("Error updating time info on file or directory");
    }
}

bool canSetCreationTime() {
    return true;
}

void setAttributes(const Path& path, const Attributes& attributes) {
    const std::wstring text = win32PathText(path);
    DWORD value = GetFileAttributesW(text.c_str());
    if (value == INVALID_FILE_ATTRIBUTES)
        throwSystemError("Error updating attributes on file or directory");
    value &= ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_NORMAL);
    if (attributes.readOnly)
        value |= FILE_ATTRIBUTE_READONLY;
    if (attributes.hidden)
        value |= FILE_ATTRIBUTE_HIDDEN;
    if (value == 0)
        value = FILE_ATTRIBUTE_NORMAL;
    if (!SetFileAttributesW(text.c_str(), value))
        throwSystemError("Error updating attributes on file or directory");
}

}  // namespace OrlFiles
