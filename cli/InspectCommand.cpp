#include <cmath>
#include <cstdio>

#include "cli/Command.h"
#include "cli/Options.h"
#include "cli/PlantJson.h"
#include "cli/RecordJson.h"
#include "cli/RecordOptions.h"

namespace cli {

const char* const kInspectUsage =
    "Usage: tendrane inspect [FILE.tdrn] [--rate HZ] [--plant] [record options]\n"
    "\n"
    "Prints the patch as JSON: its record fields, parameters and genes by name, the\n"
    "branch deviations, and for each of the twelve branches its effective length,\n"
    "its mutated genes and the sound coefficients they decode to.\n"
    "\n"
    "  --rate HZ               the sample rate to decode for (default 44100)\n"
    "  --plant                 add \"plant\": the main panel's plant of the patch at rest\n"
    "                          (lengths and rotation settled, no note, no sway, no decay):\n"
    "                          its lines in drawing order, each with branch, generation,\n"
    "                          color [R, G, B], alpha (the line's start alpha), points\n"
    "                          [[x, y], ...] in panel pixels and pieces [[first, last, byte], ...]\n"
    "\n" TENDRANE_RECORD_OPTIONS_USAGE;

int runInspect(const std::vector<std::string>& args) {
    std::vector<OptionSpec> specs = recordOptionSpecs();
    specs.push_back({"rate", 0, true, false});
    specs.push_back({"plant", 0, false, false});
    Options options(specs);
    options.parse(args);
    if (options.positional().size() > 1) throw UsageError("give at most one patch file");
    const std::string file = options.positional().empty() ? std::string() : options.positional()[0];

    const float rate =
        options.has("rate") ? static_cast<float>(parseReal("rate", options.value("rate"))) : 44100.0f;
    if (!(rate > 0.0f) || !std::isfinite(rate))
        throw UsageError("option '--rate' needs a sample rate above 0, not '" + options.value("rate") + "'");

    const NorvelleProgram record = buildRecord(options, file);
    const std::string json = options.has("plant") ? inspectJsonWithPlant(record, rate) : inspectJson(record, rate);
    std::fputs(json.c_str(), stdout);
    return 0;
}

}  // namespace cli
