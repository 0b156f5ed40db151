// The built-in actions, one table: each name with what it does and, where
// it may not always be done, when it can.
#pragma once

#include <string>
#include <string_view>

namespace Fomal {

class ActionDispatcher;
class View;

struct ActionCall {
    ActionDispatcher& dispatcher;
    View& target;
    std::string_view params;
    bool alerts;
};

struct BuiltInAction {
    std::string_view name;
    std::string (*perform)(const ActionCall&);
    bool (*canPerform)(const ActionCall&);  // null: always
};

// The entry of a name, or null.
const BuiltInAction* findBuiltInAction(std::string_view name);

}  // namespace Fomal
