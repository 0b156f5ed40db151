// Fuzz target: layout text built into a view tree on the panel, drawn,
// pressed and dragged.
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "fomal/EditorCore.h"
#include "fomal/StillHost.h"
#include "views/LivingViews.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    views::registerLivingViews();
    Fomal::StillHost host;
    Fomal::VirtualClock clock;
    Fomal::EditorCore editor(host, clock);
    try {
        editor.openLayoutText(std::string_view(reinterpret_cast<const char*>(data), size));
        editor.paint();
        if (editor.root() != nullptr) {
            // A press, a drag and a release where widgets often stand.
            editor.mouseDown({100, 100, Fomal::LEFT_BIT});
            editor.mouseMove({140, 90, Fomal::LEFT_BIT | Fomal::SHIFT_BIT});
            editor.mouseUp({140, 90, Fomal::LEFT_BIT});
            editor.paint();
        }
    } catch (const std::exception&) {
        // Refused layouts are the expected outcome for most inputs.
    }
    return 0;
}
