#include "cli/Command.h"

namespace cli {

const char* const kPlantUsage =
    "Usage: tendrane plant [FILE.tdrn] --branch K --rng A:B [record options as for inspect]\n";

int runPlant(const std::vector<std::string>&) { return notAvailable("plant"); }

}  // namespace cli
