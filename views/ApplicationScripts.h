// How an editor of the plug-in starts its scripts: the application script
// "autoexec.quol" in the shared root, "guisetup.quol" in each editor's
// frame, with the natives of patches and preferences.
#pragma once

#include "fomal/EditorCore.h"
#include "views/ProgramHost.h"

namespace views {

Fomal::ScriptSetup applicationScripts(ProgramHost& host, Fomal::EditorCore& editor);

}  // namespace views
