// An editor with a still patch behind it, for view tests.
#pragma once

#include <string>

#include "fomal/EditorCore.h"

namespace viewtest {

class StillPatch : public Fomal::SubstitutionContext {
public:
    std::string patchName() const override { return "Init"; }
    std::string undoLabel() const override { return {}; }
    std::string redoLabel() const override { return {}; }
    std::string evaluate(std::string_view) override { return "7"; }
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
