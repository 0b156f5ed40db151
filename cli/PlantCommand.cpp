#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "cli/Command.h"
#include "cli/Options.h"
#include "patch/NorvelleProgram.h"
#include "patch/PlantBranch.h"
#include "patch/ProcessGenerator.h"

namespace cli {

const char* const kPlantUsage =
    "Usage: tendrane plant --branch K [--rng A:B] [record options]\n"
    "\n"
    "Plants branch K (0 to 11) of the patch as a new seed and prints the result.\n"
    "\n"
    "  --branch K              the branch to plant, 0 (the first note of the octave) to 11\n"
    "  --rng A:B               the two words of the process-wide generator before the\n"
    "                          plant (decimal, or hexadecimal with 0x); without it the\n"
    "                          generator runs from the tick count\n"
    "\n"
    "Record options (applied on top of the Init record):\n"
    "  --init                  start from the Init record\n"
    "  --seed S                the seed, 1 to 4294967295\n"
    "  --implementation I      the implementation, 0 to 10\n"
    "  --cloned                all twelve branches share one seed\n"
    "  --pitch P               the pitch offset in octaves\n"
    "  --param NAME=VALUE      a global parameter, normalized 0 to 1 (repeatable)\n"
    "  --gene NAME=VALUE       a gene, 0 to 1 (repeatable)\n";

namespace {

uint32_t parseWord(const std::string& option, const std::string& text) {
    const long long v = parseInteger(option, text);
    if (v < 0 || v > 0xFFFFFFFFLL)
        throw UsageError("option '--" + option + "' needs words from 0 to 4294967295, not '" + text + "'");
    return static_cast<uint32_t>(v);
}

float unitValue(const std::string& option, const std::string& text, std::string& name) {
    const std::size_t eq = text.find('=');
    if (eq == std::string::npos || eq == 0)
        throw UsageError("option '--" + option + "' needs NAME=VALUE, not '" + text + "'");
    name = text.substr(0, eq);
    const double v = parseReal(option, text.substr(eq + 1));
    if (!(v >= 0.0 && v <= 1.0))
        throw UsageError("option '--" + option + "' needs a value from 0 to 1, not '" + text.substr(eq + 1) + "'");
    return static_cast<float>(v);
}

// The record built from the options alone, on top of the Init record.
NorvelleProgram recordFromOptions(const Options& options) {
    NorvelleProgram record;
    bool changed = false;
    for (const Options::Given& given : options.given()) {
        const std::string& option = given.name;
        if (option == "seed") {
            const long long seed = parseInteger(option, given.value);
            if (seed < 1 || seed > 0xFFFFFFFFLL)
                throw UsageError("option '--seed' needs a seed from 1 to 4294967295, not '" + given.value + "'");
            changed |= record.seed != static_cast<uint32_t>(seed);
            record.seed = static_cast<uint32_t>(seed);
        } else if (option == "implementation") {
            const long long implementation = parseInteger(option, given.value);
            if (implementation < 0 || implementation > CURRENT_IMPLEMENTATION)
                throw UsageError("option '--implementation' needs a number from 0 to 10, not '" + given.value + "'");
            changed |= record.implementation != implementation;
            record.implementation = static_cast<int32_t>(implementation);
        } else if (option == "cloned") {
            changed |= !record.cloned;
            record.cloned = true;
        } else if (option == "pitch") {
            const float pitch = static_cast<float>(parseReal(option, given.value));
            changed |= record.pitch != pitch;
            record.pitch = pitch;
        } else if (option == "param" || option == "gene") {
            std::string name;
            const float value = unitValue(option, given.value, name);
            if (option == "param") {
                const int index = findParameter(name);
                if (index < 0) throw UsageError("unknown parameter '" + name + "'");
                changed |= record.param(index) != value;
                record.setParam(index, value);
            } else {
                const int index = findGene(name);
                if (index < 0) throw UsageError("unknown gene '" + name + "'");
                changed |= record.genes[index] != value;
                record.genes[index] = value;
            }
        }
    }
    record.computeBranchDeviations();
    record.touch(changed);
    return record;
}

std::string number(float v) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.9g", static_cast<double>(v));
    return buffer;
}

std::string jsonName(const std::u16string& text) {
    std::string out = "\"";
    for (char16_t c : text) {
        if (c == u'"' || c == u'\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c >= 0x20 && c < 0x7F) {
            out += static_cast<char>(c);
        } else {
            char buffer[8];
            std::snprintf(buffer, sizeof buffer, "\\u%04x", static_cast<unsigned>(c));
            out += buffer;
        }
    }
    return out + "\"";
}

// The planted record as JSON, with the field names of inspect.
std::string recordJson(const NorvelleProgram& r) {
    std::string j = "{\n";
    j += "  \"name\": " + jsonName(r.getName()) + ",\n";
    j += "  \"implementation\": " + std::to_string(r.implementation) + ",\n";
    j += "  \"seed\": " + std::to_string(r.seed) + ",\n";
    j += std::string("  \"cloned\": ") + (r.cloned ? "true" : "false") + ",\n";
    j += "  \"pitch\": " + number(r.pitch) + ",\n";
    j += std::string("  \"modified\": ") + (r.modified ? "true" : "false") + ",\n";
    j += "  \"params\": {";
    for (int i = 0; i < PARAM_COUNT; ++i) {
        j += std::string(i ? ", " : "") + "\"" + std::string(PARAMETER_TABLE[i].name) + "\": " +
             number(r.param(i));
    }
    j += "},\n  \"genes\": {";
    for (int i = 0; i < GENE_COUNT; ++i) {
        j += std::string(i ? ", " : "") + "\"" + std::string(GENE_TABLE[i].name) + "\": " +
             number(r.genes[i]);
    }
    j += "},\n  \"branchDeviations\": [\n";
    for (int k = 0; k < BRANCH_COUNT; ++k) {
        j += "    [";
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) j += (i ? ", " : "") + number(r.branchDeviations[k][i]);
        j += k + 1 < BRANCH_COUNT ? "],\n" : "]\n";
    }
    j += "  ]\n}\n";
    return j;
}

}  // namespace

int runPlant(const std::vector<std::string>& args) {
    Options options({
        {"branch", 0, true, false}, {"rng", 0, true, false},   {"init", 0, false, false},
        {"seed", 0, true, false},   {"implementation", 0, true, false},
        {"cloned", 0, false, false}, {"pitch", 0, true, false}, {"param", 0, true, true},
        {"gene", 0, true, true},
    });
    options.parse(args);
    if (!options.positional().empty())
        throw UsageError("patch files are not readable in this build yet; build the patch with the record options");
    if (!options.has("branch")) throw UsageError("option '--branch' is required");
    const long long branch = parseInteger("branch", options.value("branch"));
    if (branch < 0 || branch >= BRANCH_COUNT)
        throw UsageError("option '--branch' needs a branch from 0 to 11, not '" + options.value("branch") + "'");

    ProcessGenerator& generator = ProcessGenerator::instance();
    if (options.has("rng")) {
        const std::string rng = options.value("rng");
        const std::size_t colon = rng.find(':');
        if (colon == std::string::npos) throw UsageError("option '--rng' needs A:B, not '" + rng + "'");
        generator.setWords(parseWord("rng", rng.substr(0, colon)), parseWord("rng", rng.substr(colon + 1)));
    }

    const NorvelleProgram source = recordFromOptions(options);
    const NorvelleProgram planted = plantBranch(source, static_cast<int>(branch), generator);
    std::fputs(recordJson(planted).c_str(), stdout);
    return 0;
}

}  // namespace cli
