// Script text of any form must end in a value or in a script failure: never
// a crash, a hang, or any other exception.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "quol/Evaluator.h"
#include "quol/Exception.h"
#include "quol/Frame.h"
#include "quol/Natives.h"
#include "quol/StandardLibrary.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > 8192) return 0;
    Quol::setMaxValueSize(16u << 10);
    Quol::Frame root;
    Quol::installStandardNatives(root);
    // Natives that reach outside the process do nothing useful here: files
    // could be written, and reading standard input would wait.
    for (const char* name : {"load", "save", "input", "print"}) root.natives.erase(std::string_view(name));
    Quol::loadStandardLibrary(root);
    Quol::StepLimit limit(20000);
    try {
        Quol::evaluate(root, Quol::Value(std::string_view(reinterpret_cast<const char*>(data), size)));
    } catch (const Quol::Exception&) {
    }
    return 0;
}
