// Frames on Windows: the context is captured by RtlCaptureContext, loaded
// from kernel32.dll at run time, the return addresses by the system's
// back trace; modules by address, and function names from dbghelp.dll's
// symbols where it can be loaded.
#include <windows.h>

#include <cstddef>
#include <cstring>

#include "platform/StackTrace.h"

namespace dbg {

namespace {

using CaptureContext = VOID(WINAPI*)(PCONTEXT);

struct SymbolInfo {  // the head of SYMBOL_INFO, with room for a name
    ULONG sizeOfStruct;
    ULONG typeIndex;
    ULONG64 reserved[2];
    ULONG index;
    ULONG size;
    ULONG64 modBase;
    ULONG flags;
    ULONG64 value;
    ULONG64 address;
    ULONG reg;
    ULONG scope;
    ULONG tag;
    ULONG nameLen;
    ULONG maxNameLen;
    CHAR name[512];
};
using SymInitializeFn = BOOL(WINAPI*)(HANDLE, PCSTR, BOOL);
using SymFromAddrFn = BOOL(WINAPI*)(HANDLE, DWORD64, PDWORD64, SymbolInfo*);

// A function of a loaded library as the type it has.
template <typename F>
F function(HMODULE module, const char* name) {
    FARPROC f = GetProcAddress(module, name);
    F typed = nullptr;
    static_assert(sizeof typed == sizeof f);
    std::memcpy(&typed, &f, sizeof f);
    return typed;
}

template <typename F>
F load(HMODULE module, const char* name, const char* library) {
    F f = function<F>(module, name);
    if (f == nullptr) throw stack::missingFunction(name, library);
    return f;
}

}  // namespace

__attribute__((noinline)) stack::stack(std::size_t skip, std::size_t maxFrames) {
    HMODULE kernel = LoadLibraryA("kernel32.dll");
    if (kernel == nullptr) throw missingLibrary("kernel32.dll");
    auto capture = load<CaptureContext>(kernel, "RtlCaptureContext", "kernel32.dll");
    CONTEXT context{};
    capture(&context);

    std::vector<void*> addresses(maxFrames + skip + 1);
    const USHORT n = RtlCaptureStackBackTrace(0, DWORD(addresses.size()), addresses.data(), nullptr);

    // Names where the symbol service is there; modules in any case.
    SymFromAddrFn fromAddress = nullptr;
    if (HMODULE help = LoadLibraryA("dbghelp.dll")) {
        auto initialize = function<SymInitializeFn>(help, "SymInitialize");
        fromAddress = function<SymFromAddrFn>(help, "SymFromAddr");
        if (initialize == nullptr || !initialize(GetCurrentProcess(), nullptr, TRUE)) fromAddress = nullptr;
    }
    for (USHORT i = USHORT(skip + 1); i < n && frames_.size() < maxFrames; ++i) {
        stack_frame f;
        f.address = addresses[i];
        HMODULE module = nullptr;
        if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                               static_cast<LPCSTR>(addresses[i]), &module)) {
            char path[MAX_PATH];
            const DWORD length = GetModuleFileNameA(module, path, MAX_PATH);
            if (length > 0) f.module.assign(path, length);
        }
        if (fromAddress != nullptr) {
            SymbolInfo symbol{};
            symbol.sizeOfStruct = ULONG(offsetof(SymbolInfo, name) + 1);
            symbol.maxNameLen = sizeof symbol.name - 1;
            DWORD64 displacement = 0;
            if (fromAddress(GetCurrentProcess(), DWORD64(reinterpret_cast<ULONG_PTR>(addresses[i])), &displacement,
                            &symbol))
                f.function.assign(symbol.name, symbol.nameLen < symbol.maxNameLen ? symbol.nameLen : symbol.maxNameLen);
        }
        frames_.push_back(std::move(f));
    }
}

}  // namespace dbg
