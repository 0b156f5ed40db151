#include <cstdint>
#include <cstdio>
#include <string>

#include "cli/Command.h"
#include "cli/Options.h"
#include "cli/RecordOptions.h"
#include "patch/NorvelleProgram.h"
#include "patch/PlantBranch.h"
#include "patch/ProcessGenerator.h"
#include "patch/ProgramText.h"

namespace cli {

const char* const kPlantUsage =
    "Usage: tendrane plant [FILE.tdrn] --branch K [--rng A:B] [record options]\n"
    "\n"
    "Plants branch K of the patch as a new seed and prints the planted patch in its\n"
    "clipboard form.\n"
    "\n"
    "  --branch K              the branch to plant, 0 (the first note of the octave) to 11\n"
    "  --rng A:B               the two words of the process-wide generator before the\n"
    "                          plant (decimal, or hexadecimal with 0x); without it the\n"
    "                          generator runs from the tick count\n"
    "\n" TENDRANE_RECORD_OPTIONS_USAGE;

namespace {

uint32_t parseWord(const std::string& text) {
    const long long v = parseInteger("rng", text);
    if (v < 0 || v > 0xFFFFFFFFLL)
        throw UsageError("option '--rng' needs words from 0 to 4294967295, not '" + text + "'");
    return static_cast<uint32_t>(v);
}

}  // namespace

int runPlant(const std::vector<std::string>& args) {
    std::vector<OptionSpec> accepted = recordOptionSpecs();
    accepted.push_back({"branch", 0, true, false});
    accepted.push_back({"rng", 0, true, false});
    Options options(accepted);
    options.parse(args);
    if (options.positional().size() > 1) throw UsageError("give at most one patch file");
    const std::string file = options.positional().empty() ? std::string() : options.positional()[0];

    if (!options.has("branch")) throw UsageError("option '--branch' is required");
    const long long branch = parseInteger("branch", options.value("branch"));
    if (branch < 0 || branch >= BRANCH_COUNT)
        throw UsageError("option '--branch' needs a branch from 0 to 11, not '" + options.value("branch") + "'");

    ProcessGenerator& generator = ProcessGenerator::instance();
    if (options.has("rng")) {
        const std::string rng = options.value("rng");
        const std::size_t colon = rng.find(':');
        if (colon == std::string::npos) throw UsageError("option '--rng' needs A:B, not '" + rng + "'");
        generator.setWords(parseWord(rng.substr(0, colon)), parseWord(rng.substr(colon + 1)));
    }

    const NorvelleProgram source = buildRecord(options, file);
    const NorvelleProgram planted = plantBranch(source, static_cast<int>(branch), generator);
    std::fputs(writeProgramText(planted, false).c_str(), stdout);
    return 0;
}

}  // namespace cli
