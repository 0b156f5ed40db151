// A record as JSON, for the commands that print one (inspect, chunk read).
// Field names are the record's own: record fields, parameter and gene names,
// and the BranchParams field names. Floats print with %.9g so that a 32-bit
// value reads back to the same bits.
#pragma once

#include <string>
#include <string_view>

#include "patch/NorvelleProgram.h"

namespace cli {

// %.9g; null for a value that is not finite (JSON has no such numbers).
std::string jsonFloat(float value);
// A quoted JSON string of UTF-8 text.
std::string jsonString(std::string_view utf8);

// The record's members, without the braces, one per line, each line starting
// with `indent`: name, implementation, seed, cloned, pitch, modified, params
// (by name), genes (by name), branchDeviations (12 rows of 36).
std::string recordJsonMembers(const NorvelleProgram& record, const std::string& indent);

// The whole inspection: the record's members and, for each of the twelve
// branches, its effective length, its 36 mutated genes (by name) and its
// decoded coefficients (by field name) at the given sample rate.
std::string inspectJson(const NorvelleProgram& record, float sampleRate);

}  // namespace cli
