#include "platform/PreferenceStorage.h"

#include <windows.h>

#include <vector>

#include "platform/Exceptions.h"
#include "platform/SystemError.h"

namespace platform {

namespace {

const wchar_t* const kKey = L"SOFTWARE\\Korvex Development\\Quillbrook";
const wchar_t* const kValue = L"Data";

[[noreturn]] void fail(const char* what, long code) {
    throw xWindowsError(code, messageWithSystemError(what, code, systemErrorText(code)));
}

// One handle per process, shared by every holder; never closed.
HANDLE processMutex() {
    static HANDLE handle = [] {
        HANDLE h = CreateMutexW(nullptr, FALSE, L"com.quillbrook.registrymutex");
        if (!h) fail("Cannot create the shared mutex", static_cast<long>(GetLastError()));
        return h;
    }();
    return handle;
}

}  // namespace

PreferenceLock::PreferenceLock() {
    HANDLE mutex = processMutex();
    const DWORD result = WaitForSingleObjectEx(mutex, INFINITE, TRUE);
    if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) return;
    if (result == WAIT_FAILED) fail("Cannot wait for the shared mutex", static_cast<long>(GetLastError()));
    throw xGlobalMutexEnterTimedOut();
}

PreferenceLock::~PreferenceLock() { ReleaseMutex(processMutex()); }

std::string readPreferenceValue() {
    HKEY key = nullptr;
    LONG status = RegOpenKeyExW(HKEY_CURRENT_USER, kKey, 0, KEY_QUERY_VALUE, &key);
    if (status == ERROR_FILE_NOT_FOUND) return {};
    if (status != ERROR_SUCCESS) fail("Cannot open the registry key", status);
    DWORD type = 0;
    DWORD size = 0;
    status = RegQueryValueExW(key, kValue, nullptr, &type, nullptr, &size);
    if (status == ERROR_FILE_NOT_FOUND) {
        RegCloseKey(key);
        return {};
    }
    if (status != ERROR_SUCCESS) {
        RegCloseKey(key);
        fail("Cannot read the registry value", status);
    }
    if (type != REG_BINARY) {
        RegCloseKey(key);
        throw Kvx::xRegistryKeyNotOfExpectedType();
    }
    std::string data(size, '\0');
    status = RegQueryValueExW(key, kValue, nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &size);
    RegCloseKey(key);
    if (status != ERROR_SUCCESS) fail("Cannot read the registry value", status);
    data.resize(size);
    return data;
}

void writePreferenceValue(std::string_view bytes) {
    HKEY key = nullptr;
    LONG status = RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr);
    if (status != ERROR_SUCCESS) fail("Cannot create the registry key", status);
    status = RegSetValueExW(key, kValue, 0, REG_BINARY, reinterpret_cast<const BYTE*>(bytes.data()),
                            static_cast<DWORD>(bytes.size()));
    RegCloseKey(key);
    if (status != ERROR_SUCCESS) fail("Cannot write the registry value", status);
}

std::string preferenceLocation() { return "HKEY_CURRENT_USER\\SOFTWARE\\Korvex Development\\Quillbrook\\Data"; }

}  // namespace platform
