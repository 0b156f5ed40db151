// The one dispatcher of actions: layouts (`action`, `actions`, `triggers`),
// the scripts' `perform` and `canPerform`, and the reactions of alerts and
// popup menus all come here. The first byte of an action chooses its form:
// `{` a script body, run with the params as $0; `>` the name of a script
// function, called with the raw params; anything else a built-in action
// from the table (an unknown name fails with "Unknown action: ").
#pragma once

#include <optional>
#include <string>

#include "fomal/FileDialog.h"
#include <string_view>
#include <vector>

namespace Fomal {

class EditorServices;
class View;

// The scripts that actions run, in the GUI's frame.
class ScriptRunner {
public:
    virtual ~ScriptRunner() = default;
    virtual std::string runBody(View& target, std::string_view body, std::string_view params) = 0;
    virtual std::string callFunction(View& target, std::string_view name, std::string_view params) = 0;
    // Calls the variable `name.member` (".enabled", ".checked") with the
    // params and reads a boolean; nothing when there is no such variable.
    virtual std::optional<bool> askMember(View& target, std::string_view name, std::string_view member,
                                          std::string_view params) = 0;
};

struct AlertReaction {
    std::string button;
    std::string action;
    std::string params;
};

struct AlertRequest {
    std::string type = "plain";
    std::string title;
    std::string text;
    std::vector<std::string> buttons;  // words: "ok", "cancel", "yes", ...
    std::string defaultButton;
    std::vector<AlertReaction> reactions;
};

struct PopupItem {
    std::string title;  // "-" is a separator
    std::string action;
    std::string params;
    std::vector<PopupItem> items;  // a submenu
    bool enabled = true;
    bool checked = false;
    // A title shown as it is (a file's name), not looked up or filled in.
    bool literal = false;

    bool separator() const { return title == "-"; }
};

struct PopupRequest {
    std::vector<PopupItem> items;
    float x = 0;
    float y = 0;
};

// Shows alerts and popup menus: drawn by the panel, or the platform's own.
// When the user has chosen, the presenter calls `alertAnswered` or
// `popupChosen` of the dispatcher.
class DialogPresenter {
public:
    virtual ~DialogPresenter() = default;
    virtual void showAlert(View& target, const AlertRequest& alert) = 0;
    virtual void showPopup(View& target, const PopupRequest& popup) = 0;
    // The open or save dialog; `chosen` hears the file when one is taken.
    virtual void showFileDialog(const FileDialogRequest& request, FileChosen chosen) = 0;
};

// Alerts and menus of the platform's own, where it has them (Windows):
// each blocks until the user has answered and returns the answer. Without
// them the panel draws its own.
class NativeDialogs {
public:
    virtual ~NativeDialogs() = default;
    // The word of the button pressed ("ok", "cancel", ...); `text` is the
    // alert's text after the substitution.
    virtual std::string alert(const AlertRequest& alert, std::string_view text) = 0;
    // The chosen entry (in a submenu too), or null; (x, y) in panel
    // coordinates.
    virtual const PopupItem* popup(const std::vector<PopupItem>& items, float x, float y) = 0;
    // The platform's open or save dialog, where it has one: true when it
    // was shown, with `path` the file chosen (empty when cancelled); false
    // leaves the dialog to the panel.
    virtual bool fileDialog(const FileDialogRequest&, std::string& /*path*/) { return false; }
};

class ActionDispatcher {
public:
    ActionDispatcher(EditorServices& editor, ScriptRunner& scripts, DialogPresenter& dialogs);

    // Runs an action on its target. With `alerts` a failure is shown in an
    // error alert at once and the result is empty; without, it goes on to
    // the caller.
    std::string perform(View& target, std::string_view action, std::string_view params, bool alerts);
    bool canPerform(View& target, std::string_view action, std::string_view params);
    bool isChecked(View& target, std::string_view action, std::string_view params);

    // The reaction of the pressed button, if the alert has one.
    void alertAnswered(View& target, const AlertRequest& alert, std::string_view button);
    void popupChosen(View& target, const PopupItem& item);

    // A target by the scripts' rule: "/" the root, else a label searched
    // below the root; none fails with "Could not find target view".
    static View& findTarget(View& from, std::string_view label);

    EditorServices& editor() const { return editor_; }
    ScriptRunner& scripts() const { return scripts_; }
    DialogPresenter& dialogs() const { return dialogs_; }

private:
    std::string performUnguarded(View& target, std::string_view action, std::string_view params, bool alerts);

    EditorServices& editor_;
    ScriptRunner& scripts_;
    DialogPresenter& dialogs_;
};

// The alert of `alert` parameters, checked: "Invalid alert type : ",
// "Invalid alert buttons : ", "Invalid default button : ", "Invalid
// reaction button : ".
AlertRequest readAlertRequest(std::string_view params);
// The items of a `popup`, with their enabled and checked states asked of
// the dispatcher for the target.
PopupRequest readPopupRequest(std::string_view params, ActionDispatcher& dispatcher, View& target);

}  // namespace Fomal
