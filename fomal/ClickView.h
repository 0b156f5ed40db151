// An invisible clickable area. Its `action` and `params`, or its `actions`
// with click masks, are kept for the action dispatcher; with `hint: ""` and
// `action: "nop"` it swallows clicks and hints of everything beneath.
#pragma once

#include <string>

#include "fomal/View.h"

namespace Fomal {

class ClickView : public View {
public:
    explicit ClickView(const ViewBuild& build);
    bool takesMouse() const override { return true; }

    const std::string& action() const { return action_; }
    const std::string& params() const { return params_; }
    const std::string& actions() const { return actions_; }

private:
    std::string action_;
    std::string params_;
    std::string actions_;
};

}  // namespace Fomal
