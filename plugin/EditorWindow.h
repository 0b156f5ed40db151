// The window a host's editor lives in: a child of the host's window that
// shows the panel's pixels and brings the mouse and the keyboard to the
// editor. One per platform; the editor core knows none of them.
#pragma once

#include <memory>
#include <mutex>

#include "fomal/EditorCore.h"

class EditorWindow {
public:
    virtual ~EditorWindow() = default;
    // The host's idle call: handles what the window system sent, runs the
    // editor's tick and shows what changed.
    virtual void idle() = 0;
    // A key the host forwarded; true when the editor used it.
    virtual bool keyDown(const Fomal::KeyEvent& key) = 0;
    // The platform's window, as the host knows windows.
    virtual void* nativeHandle() const = 0;
};

// A window onto core inside parent. Every use of core, from the host's calls
// and from the window's own timer, holds lock. Fails with an exception when
// the window system cannot be reached; null where no window is built.
std::unique_ptr<EditorWindow> openEditorWindow(void* parent, Fomal::EditorCore& core, std::mutex& lock);

// Whether this build makes editor windows: the plug-in tells hosts it has
// an editor only then.
bool editorWindowsExist();
