#include <windows.h>

#include <string>

#include "platform/UserFolders.h"

namespace platform {

namespace {

// The folder of the file this code was loaded from: the plug-in's DLL, or
// the program that holds it.
OrlFiles::Path moduleFolder() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&moduleFolder), &module);
    wchar_t name[MAX_PATH * 4] = {};
    const DWORD n = GetModuleFileNameW(module, name, DWORD(sizeof name / sizeof name[0]));
    const std::u16string text(reinterpret_cast<const char16_t*>(name), n);
    return OrlFiles::Path::parse(text).parent();
}

}  // namespace

OrlFiles::Path defaultPatchFolder() { return moduleFolder().parent().child(u"Tendrane Patches"); }

OrlFiles::Path documentationFolder() { return moduleFolder().parent().child(u"Tendrane Docs"); }

}  // namespace platform
