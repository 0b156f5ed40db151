// Fuzz target: layout text built into a view tree on the panel and drawn.
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "fomal/EditorCore.h"

namespace {

class StillPatch : public Fomal::SubstitutionContext {
public:
    std::string patchName() const override { return "Init"; }
    std::string undoLabel() const override { return {}; }
    std::string redoLabel() const override { return {}; }
    std::string evaluate(std::string_view) override { return {}; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    StillPatch patch;
    Fomal::EditorCore editor(patch);
    try {
        editor.openLayoutText(std::string_view(reinterpret_cast<const char*>(data), size));
        editor.paint();
        if (editor.root() != nullptr) editor.root()->hitTest(100, 100);
    } catch (const std::exception&) {
        // Refused layouts are the expected outcome for most inputs.
    }
    return 0;
}
