// The Win32 child window is not built yet: the Windows plug-in tells hosts
// it has no editor, and they show their own controls for its parameters.
#include "plugin/EditorWindow.h"

std::unique_ptr<EditorWindow> openEditorWindow(void*, Fomal::EditorCore&, std::mutex&) { return nullptr; }

bool editorWindowsExist() { return false; }
