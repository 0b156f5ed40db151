#include "cli/Command.h"

namespace cli {

const char* const kQuolUsage =
    "Usage: tendrane quol [-e EXPR] [FILE]\n";

int runQuol(const std::vector<std::string>&) { return notAvailable("quol"); }

}  // namespace cli
