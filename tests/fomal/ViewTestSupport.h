// An editor with a still patch behind it, for view tests.
#pragma once

#include <string>

#include "fomal/EditorCore.h"
#include "fomal/StillSubstitution.h"

namespace viewtest {

// Script blocks give "7".
class StillPatch : public Fomal::StillSubstitution {
public:
    StillPatch() : Fomal::StillSubstitution("Init", "7") {}
};

struct Editor {
    StillPatch patch;
    Fomal::EditorCore core{patch};
    explicit Editor(std::string_view layout) { core.openLayoutText(layout); }
    Fomal::View& root() { return *core.root(); }
    Fomal::View& find(std::string_view label) { return *core.root()->findView(label); }
};

inline std::string failureOf(std::string_view layout) {
    StillPatch patch;
    Fomal::EditorCore core(patch);
    try {
        core.openLayoutText(layout);
    } catch (const std::exception& e) {
        return e.what();
    }
    return "(no failure)";
}

}  // namespace viewtest
