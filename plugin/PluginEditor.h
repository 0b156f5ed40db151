// The editor of one plug-in instance as a host opens and closes it: the
// panel's core over the instance, opened as Tendrane opens (the constants,
// the shared scripts, the main layout), inside the window of the platform.
#pragma once

#include <memory>
#include <mutex>

#include "fomal/Clock.h"
#include "fomal/EditorCore.h"
#include "plugin/EditorWindow.h"
#include "plugin/PluginEditorHost.h"

class PluginCore;

class PluginEditor {
public:
    static constexpr int WIDTH = Fomal::EditorCore::WIDTH;
    static constexpr int HEIGHT = Fomal::EditorCore::HEIGHT;

    explicit PluginEditor(PluginCore& plugin);
    // Closing: the views hear "closing" before the window goes.
    ~PluginEditor();
    PluginEditor(const PluginEditor&) = delete;
    PluginEditor& operator=(const PluginEditor&) = delete;

    // Opens the panel inside the host's window; false when there is no
    // window to open on this platform or the window system refused.
    bool open(void* parent);
    void idle();
    bool keyDown(const Fomal::KeyEvent& key);

private:
    // The editors of a process share their scripts' root frame: one lock
    // for all of them, around every use of an editor from the host's calls
    // and from the windows' timers.
    static std::mutex& editorsLock();

    PluginCore& plugin_;
    int undoLimit_ = 100;
    PluginEditorHost host_;
    Fomal::SteadyClock clock_;
    std::unique_ptr<Fomal::EditorCore> core_;
    std::unique_ptr<EditorWindow> window_;
};
