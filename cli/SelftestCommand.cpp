#include "cli/Command.h"

namespace cli {

const char* const kSelftestUsage =
    "Usage: tendrane selftest\n";

int runSelftest(const std::vector<std::string>&) { return notAvailable("selftest"); }

}  // namespace cli
