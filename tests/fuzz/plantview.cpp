// Fuzz target: the plant view's keys and patch values through its frames.
// The input is the keys of a `plant` layout object (placed at the main
// panel's bounds unless it gives its own), then a line "--" and numbers:
// seed, Rotation, ModWheel, WheelScale, Atonality, Branch1 to Branch12,
// cloned and suspended (non-zero), a note level, then pairs x y of mouse
// positions: the first pair presses, the others drag, the last releases.
// Whatever the values, the view opens or is refused with an alert, its
// ticks, a planting, the drag and the paint end, every value the drag
// writes is within 0 to 1, and the same state paints the same pixels twice.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "fomal/Clock.h"
#include "fomal/EditorCore.h"
#include "fomal/StillHost.h"
#include "notation/LeadingNumbers.h"
#include "patch/NorvelleProgram.h"
#include "views/LivingViews.h"
#include "views/PlantView.h"
#include "views/ProgramHost.h"

namespace {

class FuzzHost : public Fomal::StillHost, public views::ProgramHost {
public:
    NorvelleProgram current;
    bool hostSuspended = false;
    VisualState sound;
    int selected = -1;

    bool suspended() const override { return hostSuspended; }
    NorvelleProgram program() const override { return current; }
    void writeProgram(const NorvelleProgram& record) override { current = record; }
    void saveUndo(std::string_view) override {}
    void setParameter(int index, float value) override {
        if (!(value >= 0.0f && value <= 1.0f)) std::abort();
        current.setParam(index, value);
    }
    float parameter(int index) const override { return current.param(index); }
    void preview(const NorvelleProgram*) override {}
    int selectedBranch() const override { return selected; }
    void selectBranch(int branch) override { selected = branch; }
    bool visualState(VisualState& state) const override {
        state = sound;
        return true;
    }
};

// A patch value: 0 to 1, as the record keeps them.
float unit(double v) { return v >= 0.0 && v <= 1.0 ? static_cast<float>(v) : v > 1.0 ? 1.0f : 0.0f; }

int coordinate(double v) { return std::isfinite(v) && std::fabs(v) < 100000.0 ? static_cast<int>(v) : 0; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t split = input.find("\n--");
    const std::string_view keysText = input.substr(0, split);
    std::string_view valuesText = split == std::string_view::npos ? std::string_view() : input.substr(split + 3);
    std::vector<double> values;
    while (values.size() < 40) {
        const LeadingNumber n = leadingDouble(valuesText);
        if (n.length == 0) break;
        values.push_back(n.value);
        valuesText.remove_prefix(n.length);
    }
    auto value = [&](std::size_t i, double fallback) { return i < values.size() ? values[i] : fallback; };

    views::registerLivingViews();
    FuzzHost host;
    const double seed = value(0, 1.0);
    host.current.seed = seed >= 1.0 && seed < 4294967296.0 ? static_cast<uint32_t>(seed) : 1u;
    const int params[] = {Param::Rotation, Param::ModWheel, Param::WheelScale, Param::Atonality};
    for (int i = 0; i < 4; ++i) host.current.setParam(params[i], unit(value(1 + i, host.current.param(params[i]))));
    for (int b = 0; b < BRANCH_COUNT; ++b)
        host.current.setParam(Param::Branch1 + b, unit(value(5 + b, host.current.param(Param::Branch1 + b))));
    host.current.cloned = value(17, 0.0) != 0.0;
    host.hostSuspended = value(18, 0.0) != 0.0;
    for (int b = 0; b < BRANCH_COUNT; ++b) {
        host.sound.levelLow[b] = unit(value(19, 0.0));
        host.sound.flash[b] = unit(value(19, 0.0));
    }

    Fomal::VirtualClock clock;
    Fomal::EditorCore core(host, clock);
    core.onAlert = [](const std::string&, const std::string&) {};
    const std::string layout = "views: { { type: \"plant\", label: \"plant\", bounds: { 74, 146, 236, 236 }, " +
                               std::string(keysText) + " } }";
    try {
        core.openLayoutText(layout);
    } catch (const std::exception&) {
        return 0;  // refused keys
    }
    Fomal::View* found = core.root() != nullptr ? core.root()->findView("plant") : nullptr;
    auto* plant = dynamic_cast<views::PlantView*>(found);
    if (plant == nullptr) return 0;  // refused keys: the alert said why

    for (int i = 0; i < 20; ++i) {
        clock.advance(25);
        core.idle();
    }
    // A drag of the mouse positions given.
    std::vector<int> mouse;
    for (std::size_t i = 20; i + 1 < values.size(); i += 2) {
        mouse.push_back(coordinate(values[i]));
        mouse.push_back(coordinate(values[i + 1]));
    }
    if (mouse.size() >= 2) {
        core.mouseDown({mouse[0], mouse[1], Fomal::LEFT_BIT | (mouse.size() > 6 ? Fomal::SHIFT_BIT : 0u)});
        for (std::size_t i = 2; i + 1 < mouse.size(); i += 2) core.mouseMove({mouse[i], mouse[i + 1], Fomal::LEFT_BIT});
        core.mouseUp({mouse[mouse.size() - 2], mouse[mouse.size() - 1], Fomal::LEFT_BIT});
    }
    // A planting of what is chosen, to its landing or a bounded time.
    if (plant->canPerformOwn("plant", "")) plant->performOwn("plant", "");
    for (int i = 0; i < 400 && plant->motion().plantingBranch >= 0; ++i) {
        clock.advance(25);
        core.idle();
    }
    for (int p = 0; p < PARAM_COUNT; ++p)
        if (!(host.current.param(p) >= 0.0f && host.current.param(p) <= 1.0f)) std::abort();

    const OrlPixels::IntRect whole(0, 0, Fomal::EditorCore::WIDTH, Fomal::EditorCore::HEIGHT);
    core.invalidate(whole);
    core.paint();
    const std::vector<OrlPixels::Pixel> first(core.pixels().begin(), core.pixels().end());
    core.invalidate(whole);
    core.paint();
    const std::vector<OrlPixels::Pixel> second(core.pixels().begin(), core.pixels().end());
    if (first != second) std::abort();
    return 0;
}
