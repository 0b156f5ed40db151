#if !defined(_WIN32_WINNT) || _WIN32_WINNT < 0x0600
#undef _WIN32_WINNT
#define _WIN32_WINNT 0x0600  // file disposition by handle
#endif

#include "platform/OrlFiles/SafeFileWriter.h"

#include "platform/OrlFiles/Exception.h"
#include "platform/OrlFiles/Files.h"
#include "platform/OrlFiles/Win32Path.h"

#include <windows.h>

namespace OrlFiles {

namespace {

HANDLE handleOf(const File& file) {
    return reinterpret_cast<HANDLE>(file.nativeHandle());
}

// Marks the file to be deleted when its last handle closes, or takes the
// mark back.
bool setDeleteOnClose(HANDLE h, bool deleteIt) {
    FILE_DISPOSITION_INFO info;
    info.DeleteFile = deleteIt ? TRUE : FALSE;
    return SetFileInformationByHandle(h, FileDispositionInfo, &info, sizeof info) != 0;
}

}  // namespace

SafeFileWriter::SafeFileWriter(const Path& destination, Temporary) : destination_(destination) {
    try {
        folder_ = temporaryFolderFor(destination);
    } catch (const Exception& e) {
        throw Exception("Error creating temporary file", e.systemCode(), e.systemText());
    }
    std::u16string prefix = destination.stem();
    if (prefix.empty())
        prefix = u"tmp";
    const std::wstring wprefix(prefix.begin(), prefix.end());
    wchar_t buffer[MAX_PATH + 1] = {};
    if (GetTempFileNameW(win32PathText(folder_).c_str(), wprefix.c_str(), 0, buffer) == 0)
        throwSystemError("Error creating temporary file");
    const std::u16string name(reinterpret_cast<const char16_t*>(buffer));
    temporary_ = Path::parse(std::u16string_view(name), PathStyle::windows);

    const HANDLE h = CreateFileW(buffer, GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                 nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    // Marked for deletion, so that the system removes it should this process
    // end before the commit. (Unlike the flag for deleting on close, the mark
    // can be taken back.)
    if (h == INVALID_HANDLE_VALUE || !setDeleteOnClose(h, true)) {
        const DWORD error = GetLastError();
        if (h != INVALID_HANDLE_VALUE)
            CloseHandle(h);
        DeleteFileW(buffer);
        SetLastError(error);
        throwSystemError("Error creating temporary file");
    }
    stream_ = File::adopt(reinterpret_cast<std::intptr_t>(h));
}

void SafeFileWriter::commit() {
    if (committed_)
        return;
    if (!FlushFileBuffers(handleOf(stream_)))
        throwSystemError("Error committing file");

    const std::wstring destination = win32PathText(destination_);
    const std::wstring temporary = win32PathText(temporary_);

    // From here on the file must outlive its handle.
    if (!setDeleteOnClose(handleOf(stream_), false))
        throwSystemError("Error committing file");

    // The new file keeps the creation time of the one it replaces; its last
    // access and last write times stay its own.
    bool destinationDeleted = false;
    WIN32_FILE_ATTRIBUTE_DATA old;
    if (GetFileAttributesExW(destination.c_str(), GetFileExInfoStandard, &old)) {
        if (!DeleteFileW(destination.c_str()))
            throwSystemError("Error committing file");
        destinationDeleted = true;
        SetFileTime(handleOf(stream_), &old.ftCreationTime, nullptr, nullptr);
    }

    stream_.close();

    const bool renamed = MoveFileW(temporary.c_str(), destination.c_str()) != 0;
    const DWORD renameError = GetLastError();

    // The stream reopens on the file as it now stands.
    const std::wstring& current = renamed ? destination : temporary;
    const HANDLE h = CreateFileW(current.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE,
                                 FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                                 nullptr);
    if (h != INVALID_HANDLE_VALUE) {
        stream_ = File::adopt(reinterpret_cast<std::intptr_t>(h));
        LARGE_INTEGER end{};
        SetFilePointerEx(h, end, nullptr, FILE_END);
    }

    if (!renamed) {
        // With the old file gone, the temporary file holds the only copy.
        keepTemporary_ = destinationDeleted;
        SetLastError(renameError);
        throwSystemError("Error committing file");
    }
    committed_ = true;
    temporary_ = Path();
}

void SafeFileWriter::abandon() {
    if (committed_)
        return;
    stream_.close();  // before a commit, the file is marked for deletion
    if (!temporary_.empty() && !keepTemporary_) {
        const std::wstring temporary = win32PathText(temporary_);
        temporary_ = Path();
        if (!DeleteFileW(temporary.c_str()) && GetLastError() != ERROR_FILE_NOT_FOUND)
            throwSystemError("Error deleting file or directory");
    }
}

}  // namespace OrlFiles
