// The actions of a clickable view: its `actions` array of `{ mask, action,
// params }`, or a lone `action` with `params`, which stands for the mask
// "click". Masks are read when the view is built, so that a wrong word
// stops the layout.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "fomal/NotationNames.h"
#include "fomal/ViewEvents.h"

namespace Fomal {

class View;

struct ClickAction {
    std::uint32_t mask = CLICK_BIT;
    std::string action;
    std::string params;
};

std::vector<ClickAction> readClickActions(const Object& keys);

// The event bits of a press or a release (see clickMaskAnswers).
std::uint32_t pressBits(const MouseEvent& e);
std::uint32_t releaseBits(const MouseEvent& e, bool inside);

// Performs, on `view`, every entry that answers the event, in order.
// Returns whether any did.
bool performClickActions(View& view, const std::vector<ClickAction>& actions, std::uint32_t event);

}  // namespace Fomal
