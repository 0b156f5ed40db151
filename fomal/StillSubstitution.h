// Live values for a panel with no plug-in and no scripts behind it (the
// headless panel of a layout file, tests and benchmarks): a fixed patch
// name, nothing to undo or redo, and a fixed result for script blocks.
#pragma once

#include <string>

#include "fomal/TextSubstitution.h"

namespace Fomal {

class StillSubstitution : public SubstitutionContext {
public:
    explicit StillSubstitution(std::string patchName = "Init", std::string scriptResult = {})
        : patchName_(std::move(patchName)), scriptResult_(std::move(scriptResult)) {}

    std::string patchName() const override { return patchName_; }
    std::string undoLabel() const override { return {}; }
    std::string redoLabel() const override { return {}; }
    std::string evaluate(std::string_view) override { return scriptResult_; }

private:
    std::string patchName_;
    std::string scriptResult_;
};

}  // namespace Fomal
