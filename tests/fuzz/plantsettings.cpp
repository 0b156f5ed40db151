// Fuzz target: plant settings text and patch values through one frame of the
// plant's growth. The input is a layout object of plant keys, then a line
// "--" and the frame's values as numbers: seed, Rotation, ModWheel,
// WheelScale, Atonality, Branch1 to Branch12, decay, note level, sway phase
// and cloned (non-zero). Missing values keep the Init patch's, standing and
// silent. Whatever the values, the frame is bounded work, its lines have 2
// to 64 points with pieces running from the first to the last, and the same
// input grows the same plant twice.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string_view>
#include <vector>

#include "notation/LeadingNumbers.h"
#include "notation/Notation.h"
#include "patch/NorvelleProgram.h"
#include "views/PlantMainPanel.h"
#include "views/PlantRenderer.h"
#include "views/PlantSettings.h"

namespace {

void check(const views::PlantGeometry& g, const views::PlantRenderer& renderer) {
    if (renderer.stepsTaken() > views::PlantRenderer::FRAME_STEP_BUDGET) std::abort();
    for (const views::PlantLine& l : g.lines()) {
        if (l.pointCount < 2 || l.pointCount > std::size_t(views::PlantRenderer::MAX_POINTS)) std::abort();
        if (l.branch < 0 || l.branch >= BRANCH_COUNT) std::abort();
        if (l.generation < 0 || l.generation > views::PlantRenderer::MAX_TWIG_GENERATION) std::abort();
        int at = 0;
        for (const views::PlantPiece& p : g.pieces(l)) {
            if (p.first != at || p.last <= at) std::abort();
            at = p.last;
        }
        if (at != int(l.pointCount) - 1) std::abort();
    }
}

bool sameGeometry(const views::PlantGeometry& a, const views::PlantGeometry& b) {
    if (a.lines().size() != b.lines().size()) return false;
    for (std::size_t i = 0; i < a.lines().size(); ++i) {
        const auto pa = a.points(a.lines()[i]), pb = b.points(b.lines()[i]);
        if (pa.size() != pb.size() || std::memcmp(pa.data(), pb.data(), pa.size_bytes()) != 0) return false;
        const auto qa = a.pieces(a.lines()[i]), qb = b.pieces(b.lines()[i]);
        if (qa.size() != qb.size()) return false;
        for (std::size_t k = 0; k < qa.size(); ++k)
            if (qa[k].first != qb[k].first || qa[k].last != qb[k].last || qa[k].byte != qb[k].byte) return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t split = input.find("\n--");
    const std::string_view keysText = input.substr(0, split);
    std::string_view valuesText = split == std::string_view::npos ? std::string_view() : input.substr(split + 3);

    std::vector<double> values;
    while (values.size() < 21) {
        const LeadingNumber n = leadingDouble(valuesText);
        if (n.length == 0) break;
        values.push_back(n.value);
        valuesText.remove_prefix(n.length);
    }
    auto value = [&](std::size_t i, double fallback) { return i < values.size() ? values[i] : fallback; };

    views::PlantSettings settings;
    views::PlantShapeSettings shape;
    try {
        const notation::Object keys = notation::parseObject(keysText);
        settings = views::readPlantSettings(keys);
        shape = views::readPlantShapeSettings(keys);
    } catch (const std::exception&) {
        // Refused settings are the expected outcome for most inputs.
        return 0;
    }

    NorvelleProgram record;
    const double seed = value(0, 1.0);
    record.seed = seed >= 0.0 && seed < 4294967296.0 ? static_cast<uint32_t>(seed) : 1u;
    const int params[] = {Param::Rotation, Param::ModWheel, Param::WheelScale, Param::Atonality};
    for (int i = 0; i < 4; ++i) record.setParam(params[i], static_cast<float>(value(1 + i, record.param(params[i]))));
    for (int b = 0; b < BRANCH_COUNT; ++b)
        record.setParam(Param::Branch1 + b, static_cast<float>(value(5 + b, record.param(Param::Branch1 + b))));
    record.cloned = value(20, 0.0) != 0.0;

    views::PlantRenderer renderer(settings);
    views::PlantFrame frame = views::restingPlantFrame(record, views::mainPanelPlant().bounds, shape, renderer);
    frame.decay = static_cast<float>(value(17, 0.0));
    for (int b = 0; b < BRANCH_COUNT; ++b) {
        frame.level[b] = static_cast<float>(value(18, 0.0));
        frame.phase[b] = static_cast<float>(value(19, 0.0)) * float(b);
    }
    views::PlantGeometry first, second;
    renderer.growBranches(first, frame, shape);
    check(first, renderer);
    renderer.growBranches(second, frame, shape);
    if (!sameGeometry(first, second)) std::abort();
    return 0;
}
