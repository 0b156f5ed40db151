#include "cli/Command.h"

namespace cli {

const char* const kChunkUsage =
    "Usage: tendrane chunk write (--program FILE | --bank FILE...) -o OUT.bin | chunk read IN.bin\n";

int runChunk(const std::vector<std::string>&) { return notAvailable("chunk"); }

}  // namespace cli
