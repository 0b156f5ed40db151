// The plant of `tendrane inspect --plant` as JSON: the main panel's plant of
// the patch at rest, its lines in drawing order.
#pragma once

#include <string>

#include "patch/NorvelleProgram.h"
#include "views/PlantGeometry.h"

namespace cli {

// %.17g; null for a value that is not finite.
std::string jsonDouble(double value);

// { "lines": [ ... ] } with one line of text per plant line: branch,
// generation, color [R, G, B], alpha (%.9g), points [[x, y], ...] (%.17g) and
// pieces [[first, last, byte], ...]. Lines after the first start with
// `indent`.
std::string plantJson(const views::PlantGeometry& plant, const std::string& indent);

// The inspection of a record with its "plant" member added.
std::string inspectJsonWithPlant(const NorvelleProgram& record, float sampleRate);

}  // namespace cli
