// The scripts of one editor: the shared root frame of the process's open
// editors, and this editor's own frame below it, in which actions run and
// which carries the natives that reach this editor:
// `perform(action, params, target, alerts)` and `canPerform(action,
// params, target)` and those the program adds.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fomal/ActionDispatcher.h"
#include "fomal/ScriptFrames.h"
#include "quol/Frame.h"

namespace Fomal {

// How an editor's scripts start.
struct ScriptSetup {
    // Adds the program's natives to a new shared root, after the standard
    // and host natives and before the start script.
    std::function<void(Quol::Frame& root)> sharedNatives;
    // Adds the program's natives of one editor to its frame.
    std::function<void(Quol::Frame& gui)> guiNatives;
    // Run in a new shared root ("autoexec.quol"); empty runs the standard
    // library alone.
    std::string startScript;
    // Run in each editor's frame ("guisetup.quol"); empty runs nothing.
    std::string guiScript;
};

class EditorScripts : public ScriptRunner {
public:
    EditorScripts();
    ~EditorScripts() override;

    // Joins the shared root (building it, and running the start script in
    // it, when no editor holds one), then makes this editor's frame and
    // runs the GUI script in it. A failure leaves the scripts unstarted.
    void start(const ScriptSetup& setup);
    bool started() const { return gui_ != nullptr; }

    // Must be set before a script runs: the dispatcher that the natives use.
    void attach(ActionDispatcher& dispatcher, View& rootView);

    Quol::Frame& root() { return *root_; }
    GuiFrame& gui() { return *gui_; }

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
    // Starts with the standard library alone when nothing started it.
    GuiFrame& frame();

    std::shared_ptr<Quol::Frame> root_;
    std::unique_ptr<GuiFrame> gui_;
    ActionDispatcher* dispatcher_ = nullptr;
    View* rootView_ = nullptr;
    std::vector<View*> running_;
};

}  // namespace Fomal
