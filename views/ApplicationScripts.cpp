#include "views/ApplicationScripts.h"

#include "views/ProgramNatives.h"

namespace views {

Fomal::ScriptSetup applicationScripts(ProgramHost& host, Fomal::EditorCore& editor) {
    Fomal::ScriptSetup setup;
    setup.sharedNatives = installProgramNatives;
    setup.guiNatives = [&host, &editor](Quol::Frame& gui) {
        installGuiProgramNatives(gui, host, [&editor] { return editor.userBusy(); });
    };
    setup.startScript = "autoexec.quol";
    setup.guiScript = "guisetup.quol";
    return setup;
}

}  // namespace views
