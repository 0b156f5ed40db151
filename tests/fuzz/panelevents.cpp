// Fuzz target: the events file of the headless panel.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "cli/Options.h"
#include "cli/PanelEvents.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    try {
        cli::parsePanelEvents(std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const cli::UsageError&) {
        // A bad line is refused with its number.
    }
    return 0;
}
