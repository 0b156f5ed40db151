// Fuzz target: layout text built into a view tree on the panel and drawn.
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "fomal/EditorCore.h"
#include "fomal/StillHost.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Fomal::StillHost host;
    Fomal::VirtualClock clock;
    Fomal::EditorCore editor(host, clock);
    try {
        editor.openLayoutText(std::string_view(reinterpret_cast<const char*>(data), size));
        editor.paint();
        if (editor.root() != nullptr) editor.root()->hitTest(100, 100);
    } catch (const std::exception&) {
        // Refused layouts are the expected outcome for most inputs.
    }
    return 0;
}
