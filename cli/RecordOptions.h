// The record options shared by the commands that work on one patch (inspect,
// plant, render): they build a record from nothing or adjust the record read
// from a patch file.
//
//   --init                  start from the Init record (the default without a file)
//   --seed S                seed, 1 to 4294967295
//   --implementation I      0 to CURRENT_IMPLEMENTATION
//   --cloned                all branches share one seed
//   --pitch P               pitch offset in octaves
//   --param NAME=VALUE      a global parameter, normalized 0 to 1 (repeatable)
//   --gene NAME=VALUE       a gene, 0 to 1 (repeatable)
#pragma once

#include <string>
#include <vector>

#include "cli/Options.h"
#include "patch/NorvelleProgram.h"

namespace cli {

// The option specs, to be added to a command's own.
std::vector<OptionSpec> recordOptionSpecs();

// The usage lines of the record options, as a literal so that a command's
// usage text can take it in, and as a constant.
#define TENDRANE_RECORD_OPTIONS_USAGE                                                  \
    "Record options (applied on top of FILE, or of the Init record):\n"                \
    "  --init                  start from the Init record\n"                          \
    "  --seed S                the seed, 1 to 4294967295\n"                           \
    "  --implementation I      the implementation, 0 to 10\n"                         \
    "  --cloned                all twelve branches share one seed\n"                  \
    "  --pitch P               the pitch offset in octaves\n"                         \
    "  --param NAME=VALUE      a global parameter, normalized 0 to 1 (repeatable)\n"  \
    "  --gene NAME=VALUE       a gene, 0 to 1 (repeatable)\n"
extern const char* const kRecordOptionsUsage;

// True when any record option was given.
bool hasRecordOptions(const Options& options);

// The record: read from `file` when it is not empty (the patch text), else
// the Init record; then the options are applied on top in the order given,
// the branch deviations recomputed and a fresh change stamp taken. A value
// that differs from what the record held marks it modified. Throws
// UsageError for unknown names and values out of range, and the patch
// reader's own exceptions for an unreadable file.
NorvelleProgram buildRecord(const Options& options, const std::string& file);

}  // namespace cli
