// The folders the program keeps the user's files in by default: where the
// patch browser looks when a patch has no folder of its own and none was
// chosen yet, and where the documentation lies.
#pragma once

#include "platform/OrlFiles/Path.h"

namespace platform {

// Linux: $XDG_DATA_HOME/Tendrane/Patches ($XDG_DATA_HOME defaults to
// ~/.local/share). Windows: "..\Tendrane Patches" beside the folder of the
// plug-in file.
OrlFiles::Path defaultPatchFolder();

// The folder of the program's documents: Linux $XDG_DATA_HOME/Tendrane/Docs,
// Windows "..\Tendrane Docs" beside the folder of the plug-in file.
OrlFiles::Path documentationFolder();

}  // namespace platform
