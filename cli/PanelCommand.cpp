#include "cli/Command.h"

namespace cli {

const char* const kPanelUsage =
    "Usage: tendrane panel [--events FILE] -o OUT.png\n";

int runPanel(const std::vector<std::string>&) { return notAvailable("panel"); }

}  // namespace cli
