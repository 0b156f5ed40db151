#include "cli/RecordOptions.h"

#include "patch/ProgramText.h"
#include "platform/OrlFiles/File.h"
#include "platform/OrlFiles/Path.h"

namespace cli {

const char* const kRecordOptionsUsage = TENDRANE_RECORD_OPTIONS_USAGE;

std::vector<OptionSpec> recordOptionSpecs() {
    return {
        {"init", 0, false, false},  {"seed", 0, true, false},  {"implementation", 0, true, false},
        {"cloned", 0, false, false}, {"pitch", 0, true, false}, {"param", 0, true, true},
        {"gene", 0, true, true},
    };
}

bool hasRecordOptions(const Options& options) {
    for (const OptionSpec& spec : recordOptionSpecs())
        if (options.has(spec.name)) return true;
    return false;
}

namespace {

// The patch text of a file, read as the plug-in reads it. The record keeps
// no path: what is printed from it doesn't depend on how the file was named.
NorvelleProgram readFile(const std::string& file) {
    return readProgramText(OrlFiles::readWholeFile(OrlFiles::Path::parse(file)));
}

struct NamedValue {
    std::string name;
    float value;
};

// NAME=VALUE with VALUE a number from 0 to 1.
NamedValue namedUnitValue(const std::string& option, const std::string& text) {
    const std::size_t eq = text.find('=');
    if (eq == std::string::npos || eq == 0)
        throw UsageError("option '--" + option + "' needs NAME=VALUE, not '" + text + "'");
    NamedValue result{text.substr(0, eq), 0.0f};
    const double v = parseReal(option, text.substr(eq + 1));
    if (!(v >= 0.0 && v <= 1.0))
        throw UsageError("option '--" + option + "' needs a value from 0 to 1, not '" + text.substr(eq + 1) + "'");
    result.value = static_cast<float>(v);
    return result;
}

}  // namespace

NorvelleProgram buildRecord(const Options& options, const std::string& file) {
    if (!file.empty() && options.has("init"))
        throw UsageError("give either a patch file or --init, not both");
    NorvelleProgram record = file.empty() ? NorvelleProgram() : readFile(file);

    bool changed = false;
    for (const Options::Given& given : options.given()) {
        const std::string& name = given.name;
        if (name == "seed") {
            const long long seed = parseInteger(name, given.value);
            if (seed < 1 || seed > 0xFFFFFFFFLL)
                throw UsageError("option '--seed' needs a seed from 1 to 4294967295, not '" + given.value + "'");
            changed |= record.seed != static_cast<uint32_t>(seed);
            record.seed = static_cast<uint32_t>(seed);
        } else if (name == "implementation") {
            const long long implementation = parseInteger(name, given.value);
            if (implementation < 0 || implementation > CURRENT_IMPLEMENTATION)
                throw UsageError("option '--implementation' needs a number from 0 to " +
                                 std::to_string(CURRENT_IMPLEMENTATION) + ", not '" + given.value + "'");
            changed |= record.implementation != static_cast<int32_t>(implementation);
            record.implementation = static_cast<int32_t>(implementation);
        } else if (name == "cloned") {
            changed |= !record.cloned;
            record.cloned = true;
        } else if (name == "pitch") {
            const float pitch = static_cast<float>(parseReal(name, given.value));
            changed |= record.pitch != pitch;
            record.pitch = pitch;
        } else if (name == "param") {
            const NamedValue v = namedUnitValue(name, given.value);
            const int index = findParameter(v.name);
            if (index < 0) throw UsageError("unknown parameter '" + v.name + "'");
            changed |= record.param(index) != v.value;
            record.setParam(index, v.value);
        } else if (name == "gene") {
            const NamedValue v = namedUnitValue(name, given.value);
            const int index = findGene(v.name);
            if (index < 0) throw UsageError("unknown gene '" + v.name + "'");
            changed |= record.genes[index] != v.value;
            record.genes[index] = v.value;
        }
    }
    record.computeBranchDeviations();
    record.touch(changed);
    return record;
}

}  // namespace cli
