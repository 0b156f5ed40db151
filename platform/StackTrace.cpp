#include "platform/StackTrace.h"

namespace dbg {

std::string stack::line(const stack_frame& frame) {
    return (frame.function.empty() ? std::string("[unknown function]") : frame.function) + " in " +
           (frame.module.empty() ? std::string("[unknown module]") : frame.module);
}

std::string stack::str() const {
    std::string out;
    for (const stack_frame& f : frames_) out += line(f) + "\n";
    return out;
}

stack_error stack::missingLibrary(const std::string& library) { return stack_error("Failed to load dll " + library); }

stack_error stack::missingFunction(const std::string& function, const std::string& library) {
    return stack_error("failed to load function " + function + " from library " + library);
}

}  // namespace dbg
