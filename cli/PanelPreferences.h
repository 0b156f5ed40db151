// What the headless panel shows of the machine's preferences: everything as
// stored, except the tutorial's place, which each run decides for itself so
// that the same events give the same picture on any machine, whoever used
// the panel before. A returning player has finished the tutorial and it
// does not open by itself; a first start has never seen it, and it opens
// at its first page. What the run's scripts write to those keys stays with
// the run; everything else they write reaches the machine's store. One
// object serves every run of a process, since what holds on to the store
// (the start-up bank) lives as long as the process.
#pragma once

#include <string>
#include <string_view>

#include "patch/PreferencesStore.h"

namespace cli {

class PanelPreferences : public PreferenceBackend {
public:
    PanelPreferences();
    // A new run: a first start, or a returning player's.
    void startRun(bool firstStart);

    void lock() override;
    void unlock() override;
    std::string read() override;
    void write(std::string_view bytes) override;

private:
    PreferenceBackend& machine_;
    PreferenceMap tutorial_;  // the run's own values of the tutorial's keys
};

}  // namespace cli
