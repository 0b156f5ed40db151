#include "views/PlantInteraction.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "fomal/EditorHost.h"
#include "fomal/EditorServices.h"
#include "fomal/MessageCatalogue.h"
#include "patch/ParameterTable.h"
#include "views/PlantView.h"

namespace views {

namespace {

constexpr double TWO_PI = 6.283185307179586;

const char* const NOTE_NAMES[12] = {"C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B"};

void replaceAll(std::string& text, std::string_view code, std::string_view by) {
    for (std::size_t at = text.find(code); at != std::string::npos; at = text.find(code, at + by.size()))
        text.replace(at, code.size(), by);
}

double distanceFromCentre(const PlantView& view, const Fomal::MouseEvent& e) {
    const double dx = e.x - view.centerX(), dy = e.y - view.centerY();
    return std::sqrt(dx * dx + dy * dy);
}

// The writes of one drag: the undo state is saved before the first change,
// and each parameter changed begins its gesture with the host's automation
// at its first change and ends it with the drag.
class ParameterEdit {
public:
    explicit ParameterEdit(PlantView& view) : view_(view) {}

    void write(int index, float value, std::string_view undoLabel) {
        ProgramHost* program = view_.program();
        if (program == nullptr) return;
        value = std::clamp(value, 0.0f, 1.0f);
        if (!(value == value)) return;
        if (program->parameter(index) == value) return;
        if (!saved_) {
            program->saveUndo(undoLabel);
            saved_ = true;
        }
        if (std::find(begun_.begin(), begun_.end(), index) == begun_.end()) {
            view_.editor().host().beginEdit(PARAMETER_TABLE[index].name);
            begun_.push_back(index);
        }
        program->setParameter(index, value);
    }
    // Ends the gestures; true when the drag changed anything.
    bool finish() {
        for (const int index : begun_) view_.editor().host().endEdit(PARAMETER_TABLE[index].name);
        begun_.clear();
        return saved_;
    }

private:
    PlantView& view_;
    bool saved_ = false;
    std::vector<int> begun_;
};

float parameter(const PlantView& view, int index) {
    return view.program() != nullptr ? view.program()->parameter(index) : 0.0f;
}

// The note a branch plays now.
int branchPitchClass(const PlantView& view, int branch) {
    const long steps = ((std::lround(12.0f * parameter(view, Param::Rotation)) % 12) + 12) % 12;
    return static_cast<int>((branch + steps) % 12);
}

class BranchDrag : public PlantDrag {
public:
    using PlantDrag::PlantDrag;

    void begin(const Fomal::MouseEvent& e) override {
        lastDistance_ = distanceFromCentre(view_, e);
        lastValue_ = view_.motion().target[branch_];
        all_ = view_.program() != nullptr && view_.program()->program().cloned;
        if (e.resetModifier()) {
            // A control-click takes the branch back to its root.
            retracted_ = true;
            writeValue(0.0f);
            finish();
        }
    }

    void move(const Fomal::MouseEvent& e) override {
        if (retracted_) return;
        const double distance = distanceFromCentre(view_, e);
        // Shift counts each pixel as a small step from where the value is.
        double shown = e.shift() ? lastValue_ + (distance - lastDistance_) * view_.overlay().fineTranslation
                                 : view_.valueOf(distance);
        shown = std::clamp(shown, 0.0, 1.0);
        lastDistance_ = distance;
        lastValue_ = shown;
        // What the mod wheel adds is not the branch's own.
        const double wheel = double(parameter(view_, Param::ModWheel)) * parameter(view_, Param::WheelScale);
        const double own = wheel < 1.0 ? (shown - wheel) / (1.0 - wheel) : shown;
        writeValue(static_cast<float>(std::clamp(own, 0.0, 1.0)));
    }

    void end(const Fomal::MouseEvent&) override {
        if (!retracted_) finish();
    }

    std::string hint() const override {
        std::string text = Fomal::MessageCatalogue::product().lookup("Branch ^N (^B) = ^V");
        fill(text);
        replaceAll(text, "^V", view_.editor().host().controlText(PARAMETER_TABLE[Param::Branch1 + branch_].name));
        return text;
    }

private:
    void fill(std::string& text) const {
        replaceAll(text, "^N", plantNoteName(branchPitchClass(view_, branch_)));
        replaceAll(text, "^B", std::to_string(branch_ + 1));
    }

    void writeValue(float value) {
        if (all_) {
            for (int i = 0; i < BRANCH_COUNT; ++i) edit_.write(Param::Branch1 + i, value, "Change Branches");
        } else {
            std::string label = "Change Branch ^N (^B)";
            fill(label);
            edit_.write(Param::Branch1 + branch_, value, label);
        }
    }

    void finish() {
        if (edit_.finish()) view_.sendTrigger("draggedBranch");
    }

    ParameterEdit edit_{view_};
    double lastDistance_ = 0.0;
    double lastValue_ = 0.0;
    bool retracted_ = false;
    bool all_ = false;
};

class WheelDrag : public PlantDrag {
public:
    using PlantDrag::PlantDrag;

    void begin(const Fomal::MouseEvent& e) override {
        lastDistance_ = distanceFromCentre(view_, e);
        lastValue_ = parameter(view_, Param::ModWheel);
    }

    void move(const Fomal::MouseEvent& e) override {
        const double distance = distanceFromCentre(view_, e);
        // The ring sits `modWheelAdjust` off the branch scale; it follows the mouse.
        double value = e.shift() ? lastValue_ + (distance - lastDistance_) * view_.overlay().fineTranslation
                                 : view_.valueOf(distance - view_.overlay().modWheelAdjust);
        value = std::clamp(value, 0.0, 1.0);
        lastDistance_ = distance;
        lastValue_ = value;
        edit_.write(Param::ModWheel, static_cast<float>(value), "Change Wheel");
    }

    void end(const Fomal::MouseEvent&) override {
        if (edit_.finish()) view_.sendTrigger("changedModWheel");
    }

    std::string hint() const override {
        // The catalogue words the message; the value goes into its code.
        std::string text = Fomal::MessageCatalogue::product().lookup("ModWheel = ^V");
        replaceAll(text, "^V", view_.editor().host().controlText("ModWheel"));
        return text;
    }

private:
    ParameterEdit edit_{view_};
    double lastDistance_ = 0.0;
    double lastValue_ = 0.0;
};

class RotationDrag : public PlantDrag {
public:
    using PlantDrag::PlantDrag;

    void begin(const Fomal::MouseEvent& e) override {
        pressAngle_ = angleOf(e);
        pressRotation_ = parameter(view_, Param::Rotation);
    }

    void move(const Fomal::MouseEvent& e) override {
        double value = pressRotation_ + (angleOf(e) - pressAngle_) / TWO_PI;
        value -= std::floor(value);
        if (!(value >= 0.0 && value < 1.0)) value = 0.0;
        edit_.write(Param::Rotation, static_cast<float>(value), "Rotation");
    }

    void end(const Fomal::MouseEvent&) override {
        if (edit_.finish()) view_.sendTrigger("changedRotation");
    }

    std::string hint() const override { return view_.editor().host().controlText("Rotation"); }

private:
    double angleOf(const Fomal::MouseEvent& e) const { return std::atan2(e.y - view_.centerY(), e.x - view_.centerX()); }

    ParameterEdit edit_{view_};
    double pressAngle_ = 0.0;
    double pressRotation_ = 0.0;
};

}  // namespace

const char* plantNoteName(int pitchClass) { return NOTE_NAMES[((pitchClass % 12) + 12) % 12]; }

std::unique_ptr<PlantDrag> makeBranchDrag(PlantView& view, int branch) { return std::make_unique<BranchDrag>(view, branch); }
std::unique_ptr<PlantDrag> makeWheelDrag(PlantView& view) { return std::make_unique<WheelDrag>(view); }
std::unique_ptr<PlantDrag> makeRotationDrag(PlantView& view) { return std::make_unique<RotationDrag>(view); }

}  // namespace views
