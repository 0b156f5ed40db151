// A view's `triggers`: entries `{ when, action, params }`, where `when` is
// one trigger name or an array of names. Firing a name runs every entry
// that answers it, in layout order, with `$` in the action and its
// parameters standing for the name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Fomal {

struct Trigger {
    std::vector<std::string> when;
    std::string action;
    std::string params;

    bool answers(std::string_view name) const;
};

// The raw `triggers` array of a layout object.
std::vector<Trigger> readTriggers(std::string_view raw);

// Each `$` replaced by the trigger's name, as text; a `$` that begins a
// script's own name (`$0`, `$n`, `$this`) stays.
std::string withTriggerName(std::string_view text, std::string_view name);

}  // namespace Fomal
