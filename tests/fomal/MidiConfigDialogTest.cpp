// The MIDI configuration dialog the panel draws, over a host that keeps
// the settings as plain values: the arrows and the value of a stepper step
// it, a check box and its text toggle it, return keeps and escape puts
// back, and the panel below hears no press while the dialog is open.
#include "fomal/MidiConfigDialog.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tests/fomal/ViewTestSupport.h"

namespace {

// A host whose whole configuration is its settings, written as a text
// the dialog can put back.
class SettingsHost : public Fomal::StillHost {
public:
    std::string midiConfigText() const override {
        const Fomal::MidiSettings s = midiSettings();
        return std::to_string(s.inputChannel) + " " + std::to_string(s.outputChannel) + " " +
               std::to_string(s.pitchWheelRange) + " " + std::to_string(s.velocityCurve) + " " +
               std::to_string(int(s.programChanges)) + " " + std::to_string(int(s.selectWithNotes));
    }
    void setMidiConfigText(std::string_view text) override {
        ++restored;
        Fomal::MidiSettings s;
        int programChanges = 0, selectWithNotes = 0;
        std::sscanf(std::string(text).c_str(), "%d %d %d %d %d %d", &s.inputChannel, &s.outputChannel,
                    &s.pitchWheelRange, &s.velocityCurve, &programChanges, &selectWithNotes);
        s.programChanges = programChanges != 0;
        s.selectWithNotes = selectWithNotes != 0;
        changeMidiSettings(s);
    }
    int restored = 0;
};

constexpr const char* PANEL =
    "views: { { type: \"click\", label: \"below\", bounds: { 0, 0, 384, 512 },"
    "           actions: { { \"\", \"alert\", { text: \"pressed below\" } } } } }";

struct Dialog {
    SettingsHost host;
    Fomal::VirtualClock clock;
    Fomal::EditorCore core{host, clock};
    std::vector<std::string> alerts;

    Dialog() {
        core.onAlert = [this](const std::string& title, const std::string& text) { alerts.push_back(title + ": " + text); };
        core.openLayoutText(PANEL);
        core.actions().perform(*core.root(), "midiConfig", "", true);
    }
    Fomal::MidiConfigDialog* view() {
        return core.overlay().empty() ? nullptr : dynamic_cast<Fomal::MidiConfigDialog*>(core.overlay().back().get());
    }
    void click(int x, int y) {
        core.mouseDown({x, y, Fomal::LEFT_BIT});
        core.mouseUp({x, y, Fomal::LEFT_BIT});
    }
    void clickIn(const OrlPixels::IntRect& r, int dx = -1) {
        click(dx < 0 ? r.left + r.width / 2 : r.left + dx, r.top + r.height / 2);
    }
    Fomal::MidiSettings settings() const { return host.midiSettings(); }
};

}  // namespace

TEST(MidiConfigDialogViewTest, TheArrowsAndTheValueStepAStepperRound) {
    Dialog d;
    ASSERT_NE(d.view(), nullptr);
    const OrlPixels::IntRect input = d.view()->stepperBox(Fomal::MidiConfigDialog::inputChannel);
    d.clickIn(input, 3);  // the down arrow: none comes round to 16
    EXPECT_EQ(d.settings().inputChannel, 15);
    EXPECT_EQ(d.view()->shownValue(Fomal::MidiConfigDialog::inputChannel), "16");
    d.clickIn(input, input.width - 3);  // the up arrow: back to none
    EXPECT_EQ(d.settings().inputChannel, -1);
    d.clickIn(input);  // the value steps up
    EXPECT_EQ(d.settings().inputChannel, 0);
    EXPECT_EQ(d.view()->shownValue(Fomal::MidiConfigDialog::inputChannel), "1");

    const OrlPixels::IntRect curve = d.view()->stepperBox(Fomal::MidiConfigDialog::velocityCurve);
    d.clickIn(curve, curve.width - 3);
    EXPECT_EQ(d.settings().velocityCurve, 2);
    EXPECT_EQ(d.view()->shownValue(Fomal::MidiConfigDialog::velocityCurve), "hard");
    d.clickIn(curve, curve.width - 3);
    EXPECT_EQ(d.settings().velocityCurve, 0);
    EXPECT_EQ(d.view()->shownValue(Fomal::MidiConfigDialog::velocityCurve), "soft");

    const OrlPixels::IntRect wheel = d.view()->stepperBox(Fomal::MidiConfigDialog::pitchWheel);
    d.clickIn(wheel, 3);
    EXPECT_EQ(d.settings().pitchWheelRange, 11);
    const OrlPixels::IntRect output = d.view()->stepperBox(Fomal::MidiConfigDialog::outputChannel);
    d.clickIn(output, 3);
    EXPECT_EQ(d.settings().outputChannel, -1);
    EXPECT_TRUE(d.alerts.empty());
}

TEST(MidiConfigDialogViewTest, ACheckBoxAndItsTextToggleIt) {
    Dialog d;
    const OrlPixels::IntRect program = d.view()->checkRow(0);
    d.clickIn(program, 5);  // the box
    EXPECT_TRUE(d.settings().programChanges);
    d.clickIn(program, 40);  // the text
    EXPECT_FALSE(d.settings().programChanges);
    d.clickIn(d.view()->checkRow(1), 5);
    EXPECT_FALSE(d.settings().selectWithNotes);
    // A press that leaves the control before the release does nothing.
    d.core.mouseDown({program.left + 5, program.top + 10, Fomal::LEFT_BIT});
    d.core.mouseUp({program.left + 5, program.top - 40, Fomal::LEFT_BIT});
    EXPECT_FALSE(d.settings().programChanges);
}

TEST(MidiConfigDialogViewTest, ReturnKeepsAndEscapePutsBack) {
    Dialog d;
    ASSERT_TRUE(d.core.choose("Pitch wheel: 3"));
    d.core.keyDown({"return", 0, 0});
    EXPECT_EQ(d.view(), nullptr);
    EXPECT_EQ(d.settings().pitchWheelRange, 3);
    EXPECT_EQ(d.host.restored, 0);

    d.core.actions().perform(*d.core.root(), "midiConfig", "", true);
    ASSERT_NE(d.view(), nullptr);
    ASSERT_TRUE(d.core.choose("Pitch wheel: 9"));
    ASSERT_TRUE(d.core.choose("Enable MIDI program changes"));
    d.core.keyDown({"escape", 0, 0});
    EXPECT_EQ(d.view(), nullptr);
    EXPECT_EQ(d.settings().pitchWheelRange, 3);
    EXPECT_FALSE(d.settings().programChanges);
    EXPECT_EQ(d.host.restored, 1);
}

TEST(MidiConfigDialogViewTest, TheButtonsAnswerClicksAndThePanelBelowHearsNone) {
    Dialog d;
    ASSERT_TRUE(d.core.choose("Input channel: 5"));
    d.clickIn(d.view()->buttonBox(0));  // Reset
    EXPECT_EQ(d.settings(), Fomal::MidiSettings());
    // Outside the box: the dialog keeps the press.
    d.click(4, 4);
    EXPECT_TRUE(d.alerts.empty());
    ASSERT_NE(d.view(), nullptr);
    ASSERT_TRUE(d.core.choose("Velocity curve: hard"));
    d.clickIn(d.view()->buttonBox(4));  // Cancel
    EXPECT_EQ(d.view(), nullptr);
    EXPECT_EQ(d.settings().velocityCurve, 1);

    d.core.actions().perform(*d.core.root(), "midiConfig", "", true);
    ASSERT_TRUE(d.core.choose("Velocity curve: soft"));
    d.clickIn(d.view()->buttonBox(5));  // OK
    EXPECT_EQ(d.view(), nullptr);
    EXPECT_EQ(d.settings().velocityCurve, 0);
}

TEST(MidiConfigDialogViewTest, AnUnknownTitleIsNotChosen) {
    Dialog d;
    EXPECT_FALSE(d.core.choose("Through channel:"));
    EXPECT_FALSE(d.core.choose("Velocity curve: steep"));
    EXPECT_NE(d.view(), nullptr);
}

namespace {

// A window's own dialog: it notes that it was shown and changes what a
// user would.
class OwnDialog : public Fomal::NativeMidiConfigDialog {
public:
    void show(Fomal::EditorServices& editor) override {
        ++shown;
        Fomal::MidiSettings s = editor.host().midiSettings();
        s.pitchWheelRange = 5;
        editor.host().changeMidiSettings(s);
    }
    int shown = 0;
};

}  // namespace

TEST(MidiConfigDialogViewTest, AWindowWithADialogOfItsOwnShowsThatOne) {
    Dialog d;
    d.core.keyDown({"escape", 0, 0});
    ASSERT_EQ(d.view(), nullptr);
    OwnDialog own;
    d.core.useNativeMidiConfigDialog(&own);
    d.core.actions().perform(*d.core.root(), "midiConfig", "", true);
    EXPECT_EQ(own.shown, 1);
    EXPECT_TRUE(d.core.overlay().empty());
    EXPECT_EQ(d.settings().pitchWheelRange, 5);
    // Without it the panel draws its own again.
    d.core.useNativeMidiConfigDialog(nullptr);
    d.core.actions().perform(*d.core.root(), "midiConfig", "", true);
    EXPECT_EQ(own.shown, 1);
    EXPECT_NE(d.view(), nullptr);
    EXPECT_TRUE(d.alerts.empty());
}
