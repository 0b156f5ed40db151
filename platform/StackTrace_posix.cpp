// Frames by the C library's backtrace, names by the dynamic linker's
// knowledge of exported symbols, demangled.
#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>

#include <cstdlib>

#include "platform/StackTrace.h"

namespace dbg {

namespace {

std::string demangled(const char* name) {
    int status = 0;
    char* readable = abi::__cxa_demangle(name, nullptr, nullptr, &status);
    std::string out = status == 0 && readable != nullptr ? readable : name;
    std::free(readable);
    return out;
}

}  // namespace

// Not inlined: the frame of the constructor itself is the one left out.
__attribute__((noinline)) stack::stack(std::size_t skip, std::size_t maxFrames) {
    // Room for frames of a checker that wraps backtrace itself.
    std::vector<void*> addresses(maxFrames + skip + 8);
    const int n = ::backtrace(addresses.data(), int(addresses.size()));
    // The caller's frame is the one this constructor returns into.
    void* const caller = __builtin_return_address(0);
    int first = 1;
    for (int i = 0; i < n; ++i)
        if (addresses[std::size_t(i)] == caller) {
            first = i;
            break;
        }
    for (int i = first + int(skip); i < n && frames_.size() < maxFrames; ++i) {
        stack_frame f;
        f.address = addresses[std::size_t(i)];
        Dl_info info{};
        if (::dladdr(addresses[std::size_t(i)], &info) != 0) {
            if (info.dli_sname != nullptr) f.function = demangled(info.dli_sname);
            if (info.dli_fname != nullptr) f.module = info.dli_fname;
        }
        frames_.push_back(std::move(f));
    }
}

}  // namespace dbg
