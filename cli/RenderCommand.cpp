#include "cli/Command.h"

namespace cli {

const char* const kRenderUsage =
    "Usage: tendrane render [--patch FILE.tdrn | --factory N] (--midi FILE.mid | --notes NOTE:START:DUR:VEL,...) [--rate HZ] [--block N] [--noise-seed S] [--tail SECONDS] -o OUT.wav\n";

int runRender(const std::vector<std::string>&) { return notAvailable("render"); }

}  // namespace cli
