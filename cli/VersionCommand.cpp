#include <cstdio>

#include "cli/Command.h"
#include "cli/Options.h"
#include "platform/Version.h"

namespace cli {

const char* const kVersionUsage =
    "Usage: tendrane version\n"
    "\n"
    "Prints the product name, its version and its build number.\n";

int runVersion(const std::vector<std::string>& args) {
    Options options({});
    options.parse(args);
    if (!options.positional().empty())
        throw UsageError("unexpected argument '" + options.positional().front() + "'");
    std::printf("%s %s (build %s)\n", platform::kProductName, platform::kVersionString,
                platform::kBuildNumber);
    return 0;
}

}  // namespace cli
