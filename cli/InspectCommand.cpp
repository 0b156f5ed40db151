#include "cli/Command.h"

namespace cli {

const char* const kInspectUsage =
    "Usage: tendrane inspect [FILE.tdrn] [--rate HZ] [--init] [--seed S] [--implementation I] [--cloned] [--pitch P] [--param NAME=VALUE]... [--gene NAME=VALUE]...\n";

int runInspect(const std::vector<std::string>&) { return notAvailable("inspect"); }

}  // namespace cli
