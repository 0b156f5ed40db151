// The subcommands of the tendrane program. Each lives in a file of its own
// and is listed once in Commands.cpp.
#pragma once

#include <string>
#include <vector>

namespace cli {

struct Command {
    const char* name;
    const char* summary;  // one line for the command list
    const char* usage;    // the full text printed by --help
    // args excludes the program and command names; returns the exit status.
    // May throw UsageError (status 1, with a hint to --help) or any exception
    // whose message is the system's own text (status 1).
    int (*run)(const std::vector<std::string>& args);
};

const std::vector<Command>& commands();

int runVersion(const std::vector<std::string>& args);
int runRender(const std::vector<std::string>& args);
int runInspect(const std::vector<std::string>& args);
int runPlant(const std::vector<std::string>& args);
int runChunk(const std::vector<std::string>& args);
int runQuol(const std::vector<std::string>& args);
int runSelftest(const std::vector<std::string>& args);
int runPanel(const std::vector<std::string>& args);
int runArtworkSheet(const std::vector<std::string>& args);

extern const char* const kVersionUsage;
extern const char* const kRenderUsage;
extern const char* const kInspectUsage;
extern const char* const kPlantUsage;
extern const char* const kChunkUsage;
extern const char* const kQuolUsage;
extern const char* const kSelftestUsage;
extern const char* const kPanelUsage;
extern const char* const kArtworkSheetUsage;

// For commands whose subsystem is not in this build yet.
int notAvailable(const char* command);

}  // namespace cli
