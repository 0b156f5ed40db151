#include "fomal/EditorScripts.h"

#include "fomal/HostNatives.h"
#include "fomal/View.h"
#include "quol/Classification.h"
#include "quol/Evaluator.h"
#include "quol/Exception.h"
#include "quol/Natives.h"
#include "quol/StandardLibrary.h"

namespace Fomal {

// Marks the view a script runs for while it runs.
class EditorScripts::Running {
public:
    Running(EditorScripts& scripts, View& view) : scripts_(scripts) { scripts_.running_.push_back(&view); }
    ~Running() { scripts_.running_.pop_back(); }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

private:
    EditorScripts& scripts_;
};

namespace {

// target: void is the view of the running script, "/" the root, else a label.
View& targetOf(EditorScripts& scripts, Quol::Frame& args, std::size_t index) {
    const Quol::Value target = Quol::optionalArgument(args, index);
    if (target.empty()) return scripts.currentView();
    return ActionDispatcher::findTarget(scripts.currentView(), target.view());
}

class PerformNative : public Quol::Native {
public:
    explicit PerformNative(EditorScripts& scripts) : scripts_(scripts) {}
    Quol::Value run(Quol::Frame& args) override {
        const Quol::Value action = Quol::argument(args, 0);
        const Quol::Value params = Quol::optionalArgument(args, 1);
        View& target = targetOf(scripts_, args, 2);
        const Quol::Value alerts = Quol::optionalArgument(args, 3);
        const bool showAlerts = !alerts.empty() && Quol::readBoolean(alerts);
        return Quol::Value(scripts_.dispatcher().perform(target, action.view(), params.view(), showAlerts));
    }

private:
    EditorScripts& scripts_;
};

class CanPerformNative : public Quol::Native {
public:
    explicit CanPerformNative(EditorScripts& scripts) : scripts_(scripts) {}
    Quol::Value run(Quol::Frame& args) override {
        const Quol::Value action = Quol::argument(args, 0);
        const Quol::Value params = Quol::optionalArgument(args, 1);
        View& target = targetOf(scripts_, args, 2);
        return Quol::booleanValue(scripts_.dispatcher().canPerform(target, action.view(), params.view()));
    }

private:
    EditorScripts& scripts_;
};

}  // namespace

EditorScripts::EditorScripts() = default;

EditorScripts::~EditorScripts() {
    // The editor's frame goes first; the shared root with the last editor.
    gui_.reset();
    root_.reset();
}

void EditorScripts::start(const ScriptSetup& setup) {
    std::shared_ptr<Quol::Frame> root = SharedScriptRoot::acquire([&](Quol::Frame& r) {
        Quol::installStandardNatives(r);
        installHostNatives(r);
        if (setup.sharedNatives) setup.sharedNatives(r);
        if (setup.startScript.empty())
            Quol::loadStandardLibrary(r);
        else
            Quol::evaluate(r, Quol::Value::external(scriptResource(setup.startScript)));
    });
    auto gui = std::make_unique<GuiFrame>(root);
    gui->addNative("perform", std::make_unique<PerformNative>(*this));
    gui->addNative("canPerform", std::make_unique<CanPerformNative>(*this));
    if (setup.guiNatives) setup.guiNatives(*gui);
    root_ = std::move(root);
    gui_ = std::move(gui);
    if (!setup.guiScript.empty()) {
        try {
            Quol::evaluate(*gui_, Quol::Value::external(scriptResource(setup.guiScript)));
        } catch (...) {
            gui_.reset();
            root_.reset();
            throw;
        }
    }
}

GuiFrame& EditorScripts::frame() {
    if (!gui_) start(ScriptSetup());
    return *gui_;
}

void EditorScripts::attach(ActionDispatcher& dispatcher, View& rootView) {
    dispatcher_ = &dispatcher;
    rootView_ = &rootView;
}

View& EditorScripts::currentView() { return running_.empty() ? *rootView_ : *running_.back(); }

std::string EditorScripts::evaluate(View& view, std::string_view text) {
    Running running(*this, view);
    return Quol::evaluate(frame(), Quol::Value(text)).str();
}

std::string EditorScripts::runBody(View& target, std::string_view body, std::string_view params) {
    Running running(*this, target);
    const Quol::Value arg(params);
    return Quol::callWith(frame(), Quol::Value(body), &arg, 1).str();
}

std::string EditorScripts::callFunction(View& target, std::string_view name, std::string_view params) {
    Running running(*this, target);
    const Quol::Value function = frame().get(Quol::Value(name), true);
    const Quol::Value arg(params);
    return Quol::callWith(*gui_, function, &arg, 1).str();
}

std::optional<bool> EditorScripts::askMember(View& target, std::string_view name, std::string_view member,
                                             std::string_view params) {
    // Looked up as a variable is, but a missing member is the default
    // answer and no failure: buttons ask at every refresh.
    Quol::Value symbol = Quol::memberName(Quol::Value(name), member);
    Quol::Value function;
    try {
        Quol::Frame& f = frame().resolve(symbol);
        if (!f.lookup(symbol.view(), function) && !(&f != &f.root() && f.root().lookup(symbol.view(), function)))
            return std::nullopt;
    } catch (const Quol::Exception&) {
        return std::nullopt;
    }
    Running running(*this, target);
    const Quol::Value arg(params);
    return Quol::readBoolean(Quol::callWith(*gui_, function, &arg, 1));
}

}  // namespace Fomal
