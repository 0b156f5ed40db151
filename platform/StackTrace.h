// The stack walker of development builds: `dbg::stack` captures the calling
// thread's frames when it is made, and prints one line a frame, the
// function, " in ", the module, with "[unknown function]" and "[unknown
// module]" where the platform cannot tell. It works where the platform has
// a symbol service; a service that cannot be loaded raises dbg::stack_error
// ("Failed to load dll " and the name, or "failed to load function " and
// the name, " from library " and the library).
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace dbg {

class stack_error : public std::exception {
public:
    explicit stack_error(std::string message) : message_(std::move(message)) {}
    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

struct stack_frame {
    const void* address = nullptr;
    std::string function;  // empty when unknown
    std::string module;    // empty when unknown
};

class stack {
public:
    // Captures the frames of the calling thread, the caller's first, at
    // most `maxFrames`, after leaving out `skip` of the innermost.
    explicit stack(std::size_t skip = 0, std::size_t maxFrames = 64);

    const std::vector<stack_frame>& frames() const { return frames_; }
    // "function in module", one line a frame, each ending in "\n".
    std::string str() const;

    // One frame as printed.
    static std::string line(const stack_frame& frame);
    static stack_error missingLibrary(const std::string& library);
    static stack_error missingFunction(const std::string& function, const std::string& library);

private:
    std::vector<stack_frame> frames_;
};

}  // namespace dbg
