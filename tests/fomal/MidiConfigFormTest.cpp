// The texts and rules of the MIDI configuration dialog that every window
// of it shares: the values of the choices in order, the changes heard by
// the host at once, the note, Cancel's putting back.
#include "fomal/MidiConfigForm.h"

#include <gtest/gtest.h>

#include <string>

#include "fomal/StillHost.h"

namespace {

using namespace Fomal::MidiConfigForm;

// A host that counts the changes it hears and keeps its text as the
// settings written out.
class CountingHost : public Fomal::StillHost {
public:
    void changeMidiSettings(const Fomal::MidiSettings& s) override {
        ++changes;
        StillHost::changeMidiSettings(s);
    }
    std::string midiConfigText() const override {
        const Fomal::MidiSettings s = midiSettings();
        return std::to_string(s.inputChannel) + " " + std::to_string(s.pitchWheelRange);
    }
    void setMidiConfigText(std::string_view text) override {
        ++restored;
        Fomal::MidiSettings s = midiSettings();
        const std::string t(text);
        s.inputChannel = std::stoi(t.substr(0, t.find(' ')));
        s.pitchWheelRange = std::stoi(t.substr(t.find(' ') + 1));
        StillHost::changeMidiSettings(s);
    }
    int changes = 0;
    int restored = 0;
};

}  // namespace

TEST(MidiConfigFormTest, TheChoicesHaveTheirValuesInOrder) {
    EXPECT_EQ(valueCount(inputChannel), 17);
    EXPECT_EQ(valueCount(outputChannel), 17);
    EXPECT_EQ(valueCount(pitchWheel), 13);
    EXPECT_EQ(valueCount(velocityCurve), 3);
    EXPECT_EQ(positionText(inputChannel, 0), "none");
    EXPECT_EQ(positionText(inputChannel, 1), "1");
    EXPECT_EQ(positionText(outputChannel, 16), "16");
    EXPECT_EQ(positionText(pitchWheel, 0), "0");
    EXPECT_EQ(positionText(pitchWheel, 12), "12");
    EXPECT_EQ(positionText(velocityCurve, 0), "soft");
    EXPECT_EQ(positionText(velocityCurve, 1), "standard");
    EXPECT_EQ(positionText(velocityCurve, 2), "hard");

    const Fomal::MidiSettings defaults;
    EXPECT_EQ(positionOf(defaults, inputChannel), 0);  // every channel
    EXPECT_EQ(positionOf(defaults, outputChannel), 1);
    EXPECT_EQ(positionOf(defaults, pitchWheel), 12);
    EXPECT_EQ(positionOf(defaults, velocityCurve), 1);
    EXPECT_FALSE(isChecked(defaults, programChanges));
    EXPECT_TRUE(isChecked(defaults, selectWithNotes));
}

TEST(MidiConfigFormTest, TheTextsAreTheDialogsOwn) {
    EXPECT_EQ(TITLE, "MIDI Config");
    EXPECT_EQ(STEPPER_LABELS[inputChannel], "Input channel:");
    EXPECT_EQ(STEPPER_LABELS[velocityCurve], "Velocity curve:");
    EXPECT_EQ(CHECK_TITLES[programChanges], "&Enable MIDI program changes");
    EXPECT_EQ(CHECK_TITLES[selectWithNotes], "Select &branches with MIDI notes");
    EXPECT_EQ(BUTTON_TITLES[resetButton], "&Reset");
    EXPECT_EQ(BUTTON_TITLES[defaultButton], "&Make Default");
    EXPECT_EQ(BUTTON_TITLES[cancelButton], "&Cancel");
    EXPECT_EQ(BUTTON_TITLES[okButton], "OK");
    Fomal::MidiSettings s;
    s.reassignedControllers = 3;
    EXPECT_EQ(reassignedNote(s), "(There are 3 MIDI controllers reassigned in this configuration.)");
    const Fomal::AlertRequest alert = madeDefaultAlert();
    EXPECT_EQ(alert.title, "Tendrane");
    EXPECT_EQ(alert.type, "info");
    EXPECT_EQ(alert.text, "The current MIDI configuration has been made default.");
}

TEST(MidiConfigFormTest, EveryChangeReachesTheHostAtOnce) {
    CountingHost host;
    setPosition(host, inputChannel, 5);
    EXPECT_EQ(host.midiSettings().inputChannel, 4);
    setPosition(host, outputChannel, 0);
    EXPECT_EQ(host.midiSettings().outputChannel, -1);
    setPosition(host, pitchWheel, 7);
    EXPECT_EQ(host.midiSettings().pitchWheelRange, 7);
    setPosition(host, velocityCurve, 2);
    EXPECT_EQ(host.midiSettings().velocityCurve, 2);
    toggle(host, programChanges);
    EXPECT_TRUE(host.midiSettings().programChanges);
    toggle(host, selectWithNotes);
    EXPECT_FALSE(host.midiSettings().selectWithNotes);
    EXPECT_EQ(host.changes, 6);
}

TEST(MidiConfigFormTest, SteppingComesRoundPastEitherEnd) {
    CountingHost host;
    step(host, inputChannel, -1);  // none comes round to 16
    EXPECT_EQ(host.midiSettings().inputChannel, 15);
    step(host, inputChannel, 1);
    EXPECT_EQ(host.midiSettings().inputChannel, -1);
    step(host, velocityCurve, 2);
    EXPECT_EQ(host.midiSettings().velocityCurve, 0);
}

TEST(MidiConfigFormTest, CancelPutsBackOnlyWhatChanged) {
    CountingHost host;
    const std::string opened = host.midiConfigText();
    restore(host, opened);
    EXPECT_EQ(host.restored, 0);
    setPosition(host, inputChannel, 3);
    setPosition(host, pitchWheel, 2);
    restore(host, opened);
    EXPECT_EQ(host.restored, 1);
    EXPECT_EQ(host.midiSettings().inputChannel, -1);
    EXPECT_EQ(host.midiSettings().pitchWheelRange, 12);
}
