#include "fomal/BuiltInActions.h"

#include <memory>

#include "fomal/ActionDispatcher.h"
#include "fomal/EditorCore.h"
#include "fomal/EditorHost.h"
#include "fomal/EditorServices.h"
#include "fomal/LayoutView.h"
#include "fomal/MidiConfigDialog.h"
#include "fomal/NotationNames.h"
#include "fomal/View.h"
#include "fomal/ViewFactory.h"
#include "platform/Exceptions.h"

namespace Fomal {

namespace {

// Many actions take a string or an object: a raw text that begins with a
// quote is the main argument, an object is read by its keys.
struct Params {
    bool quoted = false;
    std::string main;
    Object keys;

    explicit Params(std::string_view raw) {
        const std::size_t start = raw.find_first_not_of(" \t\r\n");
        if (start != std::string_view::npos && (raw[start] == '"' || raw[start] == '\'')) {
            quoted = true;
            main = readString(raw.substr(start));
        } else {
            keys = parseObject(raw);
        }
    }
    // The main argument, or the key that stands for it in the object form.
    std::string text(std::string_view key) const { return quoted ? main : readString(keys.get(key)); }
    bool flag(std::string_view key, bool dflt = false) const {
        return !quoted && keys.has(key) ? readBool(keys.get(key)) : dflt;
    }
};

std::string nothing() { return {}; }

EditorServices& editorOf(const ActionCall& c) { return c.dispatcher.editor(); }

// A view by label below the root, or the target when no label is given.
View& labelledOrTarget(const ActionCall& c, const std::string& label) {
    return label.empty() ? c.target : ActionDispatcher::findTarget(c.target, label);
}

View* childLabelled(View& parent, std::string_view label) {
    if (label.empty()) return nullptr;
    for (const std::unique_ptr<View>& child : parent.children())
        if (child->label() == label) return child.get();
    return nullptr;
}

void closeView(View& view, bool fireClosing) {
    if (fireClosing) view.fireTrigger("closing");
    View* parent = view.parent();
    if (parent == nullptr) return;  // the root stays
    parent->invalidate();
    view.invalidate();
    view.editor().retire(parent->removeChild(view));
}

// The first view of the tree that answers a view action.
View* answeringView(View& from, std::string_view action) {
    struct Walk {
        static View* find(View& v, std::string_view a) {
            if (v.answersAction(a)) return &v;
            for (const std::unique_ptr<View>& child : v.children())
                if (View* found = find(*child, a)) return found;
            return nullptr;
        }
    };
    return Walk::find(*from.root(), action);
}

std::string nop(const ActionCall&) { return nothing(); }

std::string batch(const ActionCall& c) {
    std::string result;
    for (const std::string& entry : parseArray(c.params)) {
        const Array parts = parseArray(entry);
        if (parts.empty()) continue;
        result = c.dispatcher.perform(c.target, readString(parts[0]), parts.size() > 1 ? std::string_view(parts[1]) : "",
                                      c.alerts);
    }
    return result;
}

std::string alert(const ActionCall& c) {
    c.dispatcher.dialogs().showAlert(c.target, readAlertRequest(c.params));
    return nothing();
}

std::string popup(const ActionCall& c) {
    c.dispatcher.dialogs().showPopup(c.target, readPopupRequest(c.params, c.dispatcher, c.target));
    return nothing();
}

std::string openView(const ActionCall& c) {
    const Params p(c.params);
    Object keys;
    if (p.quoted) {
        keys.set("layout", std::string("\"") + p.main + "\"");
        keys.set("label", std::string("\"") + p.main + "\"");
    } else {
        for (const auto& [key, raw] : p.keys.entries())
            if (key != "toggle" && key != "promote") keys.set(key, raw);
    }
    const std::string label = readString(keys.get("label"));
    if (View* open = childLabelled(c.target, label)) {
        if (p.flag("toggle")) {
            closeView(*open, true);
            return nothing();
        }
        if (p.flag("promote")) {
            c.target.promoteChild(*open);
            open->invalidate();
            return nothing();
        }
    }
    std::unique_ptr<View> view = makeView(ViewBuild{withNestedLayout(keys), c.target.rect(), editorOf(c)});
    View& added = *view;
    c.target.addChild(std::move(view));
    added.invalidate();
    added.fireTrigger("opened");
    return nothing();
}

std::string closeViewAction(const ActionCall& c) {
    const Params p(c.params);
    closeView(labelledOrTarget(c, p.text("label")), p.flag("closing", true));
    return nothing();
}

void showOrHide(const ActionCall& c, bool hide) {
    const Params p(c.params);
    View& view = labelledOrTarget(c, p.text("label"));
    view.setHidden(p.flag("toggle") ? !view.hidden() : hide);
    if (p.flag("promote") && view.parent() != nullptr) view.parent()->promoteChild(view);
    view.invalidate();
}

std::string showView(const ActionCall& c) {
    showOrHide(c, false);
    return nothing();
}

std::string hideView(const ActionCall& c) {
    showOrHide(c, true);
    return nothing();
}

// A trigger for a labelled view goes to it while it is open, and to no
// one when it is not: the main panel forwards its gestures to a tutorial
// that may not be there.
std::string trigger(const ActionCall& c) {
    const Params p(c.params);
    const std::string label = p.quoted ? std::string() : readString(p.keys.get("label"));
    if (!label.empty() && label != "/" && c.target.root()->findView(label) == nullptr) return nothing();
    View& view = labelledOrTarget(c, label);
    const std::string what = p.text("what");
    if (view.fireTrigger(what)) return nothing();
    const std::string alternatively = p.quoted ? std::string() : readString(p.keys.get("alternatively"));
    if (!alternatively.empty()) return c.dispatcher.perform(view, alternatively, p.keys.get("params"), c.alerts);
    return nothing();
}

std::string animate(const ActionCall& c) {
    c.target.animate(readAnimationRequest(c.params));
    return nothing();
}

std::string delayed(const ActionCall& c) {
    const Object keys = parseObject(c.params);
    const std::string action = readString(keys.get("action"));
    if (action.empty()) throw Exception("Missing action for delayed action");
    const int delay = keys.has("delay") ? readInt(keys.get("delay"), 0) : 0;
    const bool alerts = keys.has("alerts") && readBool(keys.get("alerts"));
    c.target.queueDelayed(editorOf(c).now() + (delay > 0 ? delay : 0), readString(keys.get("label")), action,
                          keys.get("params"), alerts);
    return nothing();
}

void cancelIn(View& view, std::string_view label) {
    view.cancelDelayed(label);
    for (const std::unique_ptr<View>& child : view.children()) cancelIn(*child, label);
}

std::string cancel(const ActionCall& c) {
    const Params p(c.params);
    cancelIn(*c.target.root(), p.text("label"));
    return nothing();
}

// Actions that a labelled view of its own kind carries out (bubbles).
View& labelledViewFor(const ActionCall& c) {
    const Params p(c.params);
    const std::string label = p.text("label");
    if (label.empty()) throw Exception("Missing 'label' parameter");
    return ActionDispatcher::findTarget(c.target, label);
}

std::string gotoPage(const ActionCall& c) {
    labelledViewFor(c).performOwn("gotoPage", c.params);
    return nothing();
}

// With no such view there is no page to go to.
bool canGotoPage(const ActionCall& c) {
    const Params p(c.params);
    const std::string label = p.text("label");
    if (label.empty()) throw Exception("Missing 'label' parameter");
    View* bubble = c.target.root()->findView(label);
    return bubble != nullptr && bubble->canPerformOwn("gotoPage", c.params);
}

std::string typingRate(const ActionCall& c) {
    View& bubble = labelledViewFor(c);
    bubble.performOwn("typingRate", c.params);
    return nothing();
}

void refreshIn(View& view) {
    view.refreshState();
    for (const std::unique_ptr<View>& child : view.children()) refreshIn(*child);
}

std::string refresh(const ActionCall& c) {
    refreshIn(c.target);
    return nothing();
}

std::string launch(const ActionCall& c) {
    const Object keys = parseObject(c.params);
    const std::string relativeTo = readString(keys.get("relativeTo"));
    if (!relativeTo.empty() && relativeTo != "patches" && relativeTo != "documentation")
        throw Exception("Unknown relativeTo: " + relativeTo);
    editorOf(c).host().launch(readString(keys.get("path")), relativeTo);
    return nothing();
}

std::string openURL(const ActionCall& c) {
    editorOf(c).host().openURL(Params(c.params).text("url"));
    return nothing();
}

// The labels of the undo steps that patch files make.
constexpr std::string_view OPEN_LABEL = "Open Patch";
constexpr std::string_view LOAD_LABEL = "Load Patch";

std::string open(const ActionCall& c) {
    EditorServices& editor = editorOf(c);
    FileDialogRequest request = editor.host().patchDialog(false);
    const std::string title = Params(c.params).text("title");
    if (!title.empty()) request.title = title;
    c.dispatcher.dialogs().showFileDialog(request, [&editor](const std::string& path) {
        editor.host().loadPatch(path, OPEN_LABEL, true);
    });
    return nothing();
}

std::string save(const ActionCall& c) {
    EditorServices& editor = editorOf(c);
    FileDialogRequest request = editor.host().patchDialog(true);
    const std::string title = Params(c.params).text("title");
    if (!title.empty()) request.title = title;
    c.dispatcher.dialogs().showFileDialog(request, [&editor](const std::string& path) { editor.host().savePatch(path); });
    return nothing();
}

// An entry of the patch menu: the file of its parameter.
std::string load(const ActionCall& c) {
    const std::string path = Params(c.params).text("path");
    if (path.empty()) throw Exception("Missing 'path' parameter");
    editorOf(c).host().loadPatch(path, LOAD_LABEL, false);
    return nothing();
}

std::string previous(const ActionCall& c) {
    if (editorOf(c).host().canStepPatch(-1)) editorOf(c).host().stepPatch(-1);
    return nothing();
}
bool canPrevious(const ActionCall& c) { return editorOf(c).host().canStepPatch(-1); }

std::string next(const ActionCall& c) {
    if (editorOf(c).host().canStepPatch(1)) editorOf(c).host().stepPatch(1);
    return nothing();
}
bool canNext(const ActionCall& c) { return editorOf(c).host().canStepPatch(1); }

std::string undo(const ActionCall& c) {
    if (editorOf(c).host().canUndo()) editorOf(c).host().undo();
    return nothing();
}
bool canUndo(const ActionCall& c) { return editorOf(c).host().canUndo(); }

std::string redo(const ActionCall& c) {
    if (editorOf(c).host().canRedo()) editorOf(c).host().redo();
    return nothing();
}
bool canRedo(const ActionCall& c) { return editorOf(c).host().canRedo(); }

// Actions that the one view of their kind carries out (the plant).
std::string viewAction(const ActionCall& c, std::string_view action) {
    if (View* v = answeringView(c.target, action)) v->performOwn(action, c.params);
    return nothing();
}
bool canViewAction(const ActionCall& c, std::string_view action) {
    View* v = answeringView(c.target, action);
    return v != nullptr && v->canPerformOwn(action, c.params);
}

std::string plant(const ActionCall& c) { return viewAction(c, "plant"); }
bool canPlant(const ActionCall& c) { return canViewAction(c, "plant"); }
std::string showRotationHandle(const ActionCall& c) { return viewAction(c, "showRotationHandle"); }

// The note of the middle of the keyboard, and the velocity of a click.
constexpr int PREVIEW_NOTE = 60;
constexpr int PREVIEW_VELOCITY = 100;

std::string preview(const ActionCall& c) {
    const Object keys = parseObject(c.params);
    const std::string key = readString(keys.get("key"));
    if (key != "down" && key != "up") throw Exception("Unknown key param: " + key + " (should be \"up\" or \"down\")");
    const int note = keys.has("note") ? readInt(keys.get("note"), PREVIEW_NOTE) : PREVIEW_NOTE;
    if (note < 0 || note > 127) throw Exception("Note out of range: " + std::to_string(note));
    int velocity = keys.has("velocity") ? readInt(keys.get("velocity"), PREVIEW_VELOCITY) : PREVIEW_VELOCITY;
    velocity = velocity < 1 ? 1 : velocity > 127 ? 127 : velocity;
    editorOf(c).host().previewNote(key == "down", note, velocity);
    return nothing();
}

// The MIDI configuration dialog: the platform's own where the window has
// one, else drawn by the panel over everything.
std::string midiConfig(const ActionCall& c) {
    if (NativeMidiConfigDialog* native = editorOf(c).nativeMidiConfigDialog()) {
        native->show(editorOf(c));
        return nothing();
    }
    auto* core = dynamic_cast<EditorCore*>(&editorOf(c));
    if (core == nullptr) throw Exception("The MIDI configuration dialog needs the editor");
    core->openOverlay(std::make_unique<MidiConfigDialog>(*core));
    return nothing();
}

std::string stopLearning(const ActionCall& c) {
    editorOf(c).host().stopLearning();
    return nothing();
}

const BuiltInAction BUILT_IN_ACTIONS[] = {
    {"nop", nop, nullptr},
    {"batch", batch, nullptr},
    {"alert", alert, nullptr},
    {"popup", popup, nullptr},
    {"openView", openView, nullptr},
    {"closeView", closeViewAction, nullptr},
    // The panel is the editor's one window: a window of its own opens over it.
    {"openWindow", openView, nullptr},
    {"closeWindow", closeViewAction, nullptr},
    {"showView", showView, nullptr},
    {"hideView", hideView, nullptr},
    {"trigger", trigger, nullptr},
    {"animate", animate, nullptr},
    {"delayed", delayed, nullptr},
    {"cancel", cancel, nullptr},
    {"gotoPage", gotoPage, canGotoPage},
    {"typingRate", typingRate, nullptr},
    {"refresh", refresh, nullptr},
    {"launch", launch, nullptr},
    {"openURL", openURL, nullptr},
    {"open", open, nullptr},
    {"save", save, nullptr},
    {"load", load, nullptr},
    {"previous", previous, canPrevious},
    {"next", next, canNext},
    {"undo", undo, canUndo},
    {"redo", redo, canRedo},
    {"plant", plant, canPlant},
    {"preview", preview, nullptr},
    {"midiConfig", midiConfig, nullptr},
    {"stopLearning", stopLearning, nullptr},
    {"showRotationHandle", showRotationHandle, nullptr},
};

}  // namespace

const BuiltInAction* findBuiltInAction(std::string_view name) {
    for (const BuiltInAction& a : BUILT_IN_ACTIONS)
        if (a.name == name) return &a;
    return nullptr;
}

}  // namespace Fomal
