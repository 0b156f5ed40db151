// An invisible clickable area. Its `action` and `params`, or its `actions`
// with click masks, answer presses and releases; with `hint: ""` and
// `action: "nop"` it swallows clicks and hints of everything beneath.
#pragma once

#include <vector>

#include "fomal/ClickActions.h"
#include "fomal/View.h"

namespace Fomal {

class ClickView : public View {
public:
    explicit ClickView(const ViewBuild& build);
    bool takesMouse() const override { return true; }
    bool mouseDown(const MouseEvent& e) override;
    void mouseUp(const MouseEvent& e) override;

    const std::vector<ClickAction>& actions() const { return actions_; }

private:
    std::vector<ClickAction> actions_;
};

}  // namespace Fomal
