#include "fomal/ClickActions.h"

#include "fomal/ActionDispatcher.h"
#include "fomal/EditorServices.h"
#include "fomal/NotationNames.h"
#include "fomal/View.h"

namespace Fomal {

namespace {

constexpr std::uint32_t HELD = SHIFT_BIT | CONTROL_BIT | ALT_BIT | COMMAND_BIT | LEFT_BIT | RIGHT_BIT;

}  // namespace

std::vector<ClickAction> readClickActions(const Object& keys) {
    std::vector<ClickAction> actions;
    if (keys.has("actions")) {
        for (const std::string& entry : parseArray(keys.get("actions"))) {
            const Array parts = parseArray(entry);
            if (parts.empty()) continue;
            ClickAction a;
            a.mask = parseClickMask(readString(parts[0]));
            if (parts.size() > 1) a.action = readString(parts[1]);
            if (parts.size() > 2) a.params = parts[2];
            actions.push_back(std::move(a));
        }
    }
    if (keys.has("action")) actions.push_back(ClickAction{CLICK_BIT, readString(keys.get("action")), keys.get("params")});
    return actions;
}

std::uint32_t pressBits(const MouseEvent& e) {
    std::uint32_t bits = (e.modifiers & HELD) | DOWN_BIT | PRESS_BIT;
    if (bits & RIGHT_BIT) bits |= CONTEXT_BIT;
    if (e.modifiers & CONTEXT_BIT) bits |= CONTEXT_BIT;
    return bits;
}

std::uint32_t releaseBits(const MouseEvent& e, bool inside) {
    return (e.modifiers & HELD) | UP_BIT | RELEASE_BIT | (inside ? CLICK_BIT : 0u);
}

bool performClickActions(View& view, const std::vector<ClickAction>& actions, std::uint32_t event) {
    bool any = false;
    // A copy of what to do: an action may close the view.
    std::vector<ClickAction> run;
    for (const ClickAction& a : actions)
        if (clickMaskAnswers(a.mask, event)) run.push_back(a);
    for (const ClickAction& a : run) {
        if (view.retired()) break;
        view.editor().actions().perform(view, a.action, a.params, true);
        any = true;
    }
    return any;
}

}  // namespace Fomal
