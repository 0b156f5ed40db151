// The scripts of one editor: a root frame with the standard natives and
// library and the natives `perform(action, params, target, alerts)` and
// `canPerform(action, params, target)` that reach back into the views, and
// the GUI's frame below it in which actions run.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fomal/ActionDispatcher.h"
#include "quol/Frame.h"

namespace Fomal {

class EditorScripts : public ScriptRunner {
public:
    EditorScripts();
    ~EditorScripts() override;

    // Must be set before a script runs: the dispatcher that the natives use.
    void attach(ActionDispatcher& dispatcher, View& rootView);

    Quol::Frame& root() { return *root_; }
    Quol::Frame& gui() { return *gui_; }

    // Runs script text in the GUI's frame, on behalf of `view`.
    std::string evaluate(View& view, std::string_view text);

    std::string runBody(View& target, std::string_view body, std::string_view params) override;
    std::string callFunction(View& target, std::string_view name, std::string_view params) override;
    std::optional<bool> askMember(View& target, std::string_view name, std::string_view member,
                                  std::string_view params) override;

    // The view on whose behalf the innermost running script runs.
    View& currentView();
    ActionDispatcher& dispatcher() { return *dispatcher_; }

private:
    class Running;
    std::unique_ptr<Quol::Frame> root_;
    std::unique_ptr<Quol::Frame> gui_;
    ActionDispatcher* dispatcher_ = nullptr;
    View* rootView_ = nullptr;
    std::vector<View*> running_;
};

}  // namespace Fomal
