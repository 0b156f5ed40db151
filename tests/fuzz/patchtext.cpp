// Patch text from arbitrary bytes: the reader yields a record or fails with
// its own exception, and a record it yields writes and reads back the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "patch/NorvelleProgram.h"
#include "patch/ProgramText.h"
#include "platform/Exceptions.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    (void)isProgramText(text);
    NorvelleProgram record;
    try {
        record = readProgramText(text);
    } catch (const Exception&) {
        return 0;
    }
    for (int g = 0; g < GENE_COUNT; ++g)
        if (!(record.genes[g] >= 0.0f && record.genes[g] <= 1.0f)) std::abort();
    for (int p = 0; p < PARAM_COUNT; ++p)
        if (!(record.param(p) >= 0.0f && record.param(p) <= 1.0f)) std::abort();
    const std::string written = writeProgramText(record, false);
    NorvelleProgram again = readProgramText(written);
    if (again.getName() != record.getName() || again.path != record.path || again.seed != record.seed ||
        again.implementation != record.implementation || again.cloned != record.cloned)
        std::abort();
    if (writeProgramText(again, false) != written) std::abort();
    return 0;
}
