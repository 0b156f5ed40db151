#include <cmath>
#include <cstdio>

#include "cli/Command.h"
#include "cli/Options.h"
#include "cli/RecordJson.h"
#include "cli/RecordOptions.h"

namespace cli {

const char* const kInspectUsage =
    "Usage: tendrane inspect [FILE.tdrn] [--rate HZ] [record options]\n"
    "\n"
    "Prints the patch as JSON: its record fields, parameters and genes by name, the\n"
    "branch deviations, and for each of the twelve branches its effective length,\n"
    "its mutated genes and the sound coefficients they decode to.\n"
    "\n"
    "  --rate HZ               the sample rate to decode for (default 44100)\n"
    "\n"
    "Record options (applied on top of FILE, or of the Init record):\n"
    "  --init                  start from the Init record\n"
    "  --seed S                the seed, 1 to 4294967295\n"
    "  --implementation I      the implementation, 0 to 10\n"
    "  --cloned                all twelve branches share one seed\n"
    "  --pitch P               the pitch offset in octaves\n"
    "  --param NAME=VALUE      a global parameter, normalized 0 to 1 (repeatable)\n"
    "  --gene NAME=VALUE       a gene, 0 to 1 (repeatable)\n";

int runInspect(const std::vector<std::string>& args) {
    std::vector<OptionSpec> specs = recordOptionSpecs();
    specs.push_back({"rate", 0, true, false});
    Options options(specs);
    options.parse(args);
    if (options.positional().size() > 1) throw UsageError("give at most one patch file");
    const std::string file = options.positional().empty() ? std::string() : options.positional()[0];

    const double rate = options.has("rate") ? parseReal("rate", options.value("rate")) : 44100.0;
    if (!(rate > 0.0) || !std::isfinite(static_cast<float>(rate)))
        throw UsageError("option '--rate' needs a sample rate above 0, not '" + options.value("rate") + "'");

    const NorvelleProgram record = buildRecord(options, file);
    std::fputs(inspectJson(record, static_cast<float>(rate)).c_str(), stdout);
    return 0;
}

}  // namespace cli
