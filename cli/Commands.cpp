#include <cstdio>

#include "cli/Command.h"

namespace cli {

const std::vector<Command>& commands() {
    static const std::vector<Command> table = {
        {"version", "print the product name, version and build number", kVersionUsage, runVersion},
        {"render", "play notes or a MIDI file through the synthesizer into a WAV file", kRenderUsage, runRender},
        {"inspect", "print a patch, its branches and decoded sound as JSON", kInspectUsage, runInspect},
        {"plant", "plant a branch as the new seed and print the patch text", kPlantUsage, runPlant},
        {"chunk", "write or read the host's chunk", kChunkUsage, runChunk},
        {"quol", "evaluate script text", kQuolUsage, runQuol},
        {"selftest", "render the stored seeds and compare them with their recordings", kSelftestUsage, runSelftest},
        {"panel", "render the editor panel to a PNG image", kPanelUsage, runPanel},
        {"artwork-sheet", "draw every image and font of the panel on one contact sheet", kArtworkSheetUsage,
         runArtworkSheet},
    };
    return table;
}

int notAvailable(const char* command) {
    std::fprintf(stderr, "tendrane %s: not available in this build\n", command);
    return 1;
}

}  // namespace cli
