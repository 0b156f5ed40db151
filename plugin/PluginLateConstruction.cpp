// The end of an instance's construction when a host creates it: the program
// slots from the process's startup bank (or the factory patches), the MIDI
// configuration from the preferences.
#include <vector>

#include "patch/FactoryPatches.h"
#include "patch/MidiConfigDefaults.h"
#include "patch/StartupBank.h"
#include "plugin/PluginBankSlots.h"
#include "plugin/PluginCore.h"
#include "platform/OrlThreads/TimerService.h"

void PluginCore::lateConstruction() {
    std::vector<NorvelleProgram> slots(PROGRAM_COUNT);
    int current = 0;
    try {
        bankSlots_ = std::make_unique<PluginBankSlots>(*this);
        bankTimer_ = std::make_unique<OrlThreads::TimerService>();
        bankLink_ = std::make_unique<StartupBankLink>(StartupBank::process(), *bankSlots_, bankTimer_.get());
        current = bankLink_->copyInto(slots);
    } catch (...) {
        // No bank on this machine to link to: the factory patches, or Init.
        bankLink_.reset();
        try {
            slots = factoryBank();
        } catch (...) {
            slots.assign(PROGRAM_COUNT, NorvelleProgram());
        }
        current = 0;
    }
    for (int i = 0; i < PROGRAM_COUNT; ++i) programs_[i].publish(slots[static_cast<std::size_t>(i)]);
    if (current < 0 || current >= PROGRAM_COUNT) current = 0;
    currentProgram_.store(current);
    previousProgram_.store(current);
    curProgram = current;

    try {
        midiConfig_.publish(loadDefaultMidiConfig());
    } catch (...) {
        // The record's own defaults stay.
    }
    finishConstruction();
}
