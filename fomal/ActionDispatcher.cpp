#include "fomal/ActionDispatcher.h"

#include <algorithm>

#include "fomal/BuiltInActions.h"
#include "fomal/EditorHost.h"
#include "fomal/EditorServices.h"
#include "fomal/NotationNames.h"
#include "fomal/View.h"
#include "notation/Escape.h"
#include "platform/ErrorAlert.h"
#include "platform/Exceptions.h"

namespace Fomal {

namespace {

constexpr std::string_view ALERT_TYPES[] = {"plain", "info", "question", "warning", "error"};
constexpr std::string_view ALERT_BUTTONS[] = {"ok", "ok cancel", "retry cancel", "yes no", "yes no cancel",
                                              "abort retry ignore"};
constexpr std::string_view BUTTON_WORDS[] = {"ok", "cancel", "yes", "no", "retry", "abort", "ignore"};

template <std::size_t N>
bool oneOf(const std::string_view (&table)[N], std::string_view word) {
    return std::find(std::begin(table), std::end(table), word) != std::end(table);
}

std::vector<std::string> words(std::string_view text) {
    std::vector<std::string> out;
    std::size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && text[i] == ' ') ++i;
        std::size_t end = i;
        while (end < text.size() && text[end] != ' ') ++end;
        if (end > i) out.emplace_back(text.substr(i, end - i));
        i = end;
    }
    return out;
}

void appendPopupItems(const std::string& raw, std::vector<PopupItem>& out, ActionDispatcher& dispatcher, View& target);

PopupItem readPopupItem(const std::string& raw, ActionDispatcher& dispatcher, View& target) {
    PopupItem item;
    const Array fields = parseArray(raw);
    if (fields.empty()) {
        item.title = readString(raw);  // "-" alone
        return item;
    }
    item.title = readString(fields[0]);
    if (item.separator()) return item;
    if (fields.size() > 1) item.action = readString(fields[1]);
    if (fields.size() > 2) item.params = fields[2];
    // A submenu: the action "popup" with its items, or items of its own.
    std::string submenu;
    if (item.action == "popup")
        submenu = parseObject(item.params).get("items");
    for (std::size_t i = 3; i < fields.size(); ++i) {
        const Object extra = parseObject(fields[i]);
        if (extra.has("items")) submenu = extra.get("items");
    }
    if (!submenu.empty() || item.action == "popup") {
        for (const std::string& sub : parseArray(submenu)) appendPopupItems(sub, item.items, dispatcher, target);
        return item;
    }
    if (!item.action.empty()) {
        item.enabled = dispatcher.canPerform(target, item.action, item.params);
        item.checked = dispatcher.isChecked(target, item.action, item.params);
    }
    return item;
}

// The marker that stands for the patch files of the patch folder.
constexpr std::string_view PROGRAM_LIST = "<programList>";

// The entries of one raw item: the patch list's marker becomes an entry per
// patch file (its name without extension, loading it), or the one entry
// that says there is none.
void appendPopupItems(const std::string& raw, std::vector<PopupItem>& out, ActionDispatcher& dispatcher, View& target) {
    const std::size_t start = raw.find_first_not_of(" \t\r\n");
    const std::size_t end = raw.find_last_not_of(" \t\r\n");
    if (start == std::string::npos || std::string_view(raw).substr(start, end + 1 - start) != PROGRAM_LIST) {
        out.push_back(readPopupItem(raw, dispatcher, target));
        return;
    }
    const std::vector<std::string> files = dispatcher.editor().host().patchFiles();
    if (files.empty()) {
        PopupItem none;
        none.title = "No programs found";
        none.enabled = false;
        out.push_back(none);
        return;
    }
    for (const std::string& file : files) {
        PopupItem item;
        std::string name = file.substr(file.find_last_of("/\\") == std::string::npos ? 0 : file.find_last_of("/\\") + 1);
        if (const std::size_t dot = name.find_last_of('.'); dot != std::string::npos && dot > 0) name.erase(dot);
        item.title = name;
        item.literal = true;
        item.action = "load";
        item.params = notation::escape(file);
        out.push_back(std::move(item));
    }
}

}  // namespace

AlertRequest readAlertRequest(std::string_view params) {
    const Object keys = parseObject(params);
    AlertRequest a;
    if (keys.has("type")) a.type = readString(keys.get("type"));
    if (!oneOf(ALERT_TYPES, a.type)) throw Exception("Invalid alert type : " + a.type);
    a.title = keys.has("title") ? readString(keys.get("title")) : std::string(platform::errorAlertTitle);
    a.text = readString(keys.get("text"));
    const std::string buttons = keys.has("buttons") ? readString(keys.get("buttons")) : std::string("ok");
    if (!oneOf(ALERT_BUTTONS, buttons)) throw Exception("Invalid alert buttons : " + buttons);
    a.buttons = words(buttons);
    a.defaultButton = keys.has("default") ? readString(keys.get("default")) : a.buttons.front();
    if (!oneOf(BUTTON_WORDS, a.defaultButton)) throw Exception("Invalid default button : " + a.defaultButton);
    for (const std::string& raw : parseArray(keys.get("reactions"))) {
        const Array r = parseArray(raw);
        if (r.empty()) continue;
        AlertReaction reaction{readString(r[0]), r.size() > 1 ? readString(r[1]) : std::string(),
                               r.size() > 2 ? r[2] : std::string()};
        if (std::find(a.buttons.begin(), a.buttons.end(), reaction.button) == a.buttons.end())
            throw Exception("Invalid reaction button : " + reaction.button);
        a.reactions.push_back(std::move(reaction));
    }
    return a;
}

PopupRequest readPopupRequest(std::string_view params, ActionDispatcher& dispatcher, View& target) {
    const Object keys = parseObject(params);
    PopupRequest p;
    for (const std::string& raw : parseArray(keys.get("items"))) appendPopupItems(raw, p.items, dispatcher, target);
    // The menu opens at the target's lower left corner unless placed.
    const RectF& r = target.rect();
    PointF at{r.left, r.bottom()};
    if (keys.has("position")) at = readPoint(keys.get("position"), at, &r);
    const PointF offset = readPoint(keys.get("offset"));
    p.x = at.x + offset.x;
    p.y = at.y + offset.y;
    return p;
}

ActionDispatcher::ActionDispatcher(EditorServices& editor, ScriptRunner& scripts, DialogPresenter& dialogs)
    : editor_(editor), scripts_(scripts), dialogs_(dialogs) {}

View& ActionDispatcher::findTarget(View& from, std::string_view label) {
    View* root = from.root();
    View* found = label == "/" ? root : root->findView(label);
    if (found == nullptr) throw Exception("Could not find target view");
    return *found;
}

std::string ActionDispatcher::perform(View& target, std::string_view action, std::string_view params, bool alerts) {
    if (!alerts) return performUnguarded(target, action, params, false);
    try {
        return performUnguarded(target, action, params, true);
    } catch (...) {
        editor_.reportFailure(std::current_exception());
        return {};
    }
}

std::string ActionDispatcher::performUnguarded(View& target, std::string_view action, std::string_view params,
                                               bool alerts) {
    if (!action.empty() && action.front() == '{') return scripts_.runBody(target, action, params);
    if (!action.empty() && action.front() == '>') return scripts_.callFunction(target, action.substr(1), params);
    const BuiltInAction* builtIn = findBuiltInAction(action);
    if (builtIn == nullptr) throw Exception("Unknown action: " + std::string(action));
    return builtIn->perform(ActionCall{*this, target, params, alerts});
}

bool ActionDispatcher::canPerform(View& target, std::string_view action, std::string_view params) {
    if (!action.empty() && action.front() == '{') return true;
    if (!action.empty() && action.front() == '>')
        return scripts_.askMember(target, action.substr(1), "enabled", params).value_or(true);
    const BuiltInAction* builtIn = findBuiltInAction(action);
    if (builtIn == nullptr) throw Exception("Unknown action: " + std::string(action));
    return builtIn->canPerform == nullptr || builtIn->canPerform(ActionCall{*this, target, params, false});
}

bool ActionDispatcher::isChecked(View& target, std::string_view action, std::string_view params) {
    if (!action.empty() && action.front() == '>')
        return scripts_.askMember(target, action.substr(1), "checked", params).value_or(false);
    return false;
}

void ActionDispatcher::alertAnswered(View& target, const AlertRequest& alert, std::string_view button) {
    for (const AlertReaction& r : alert.reactions)
        if (r.button == button) {
            perform(target, r.action, r.params, true);
            return;
        }
}

void ActionDispatcher::popupChosen(View& target, const PopupItem& item) {
    if (item.separator() || item.action.empty() || !item.items.empty()) return;
    perform(target, item.action, item.params, true);
}

}  // namespace Fomal
