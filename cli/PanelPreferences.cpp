#include "cli/PanelPreferences.h"

#include <iterator>

#include "patch/Preferences.h"

namespace cli {

namespace {

// The keys whose stored values a run does not see.
constexpr std::string_view TUTORIAL_KEYS[] = {"completedTutorial", "lastTutorialPage"};

bool isTutorialKey(std::string_view key) {
    for (std::string_view k : TUTORIAL_KEYS)
        if (k == key) return true;
    return false;
}

// The product's own values inside the machine's store.
PreferenceMap productValues(const PreferenceMap& store) {
    const auto it = store.find(Preferences::STORE_KEY);
    return it == store.end() ? PreferenceMap() : Preferences::parseText(it->second);
}

void setProductValues(PreferenceMap& store, const PreferenceMap& values) {
    store[std::string(Preferences::STORE_KEY)] = Preferences::formatText(values);
}

}  // namespace

PanelPreferences::PanelPreferences() : machine_(machineOwnPreferenceBackend()) {}

void PanelPreferences::startRun(bool firstStart) {
    tutorial_.clear();
    if (!firstStart) tutorial_["completedTutorial"] = "true";
}

void PanelPreferences::lock() { machine_.lock(); }
void PanelPreferences::unlock() { machine_.unlock(); }

std::string PanelPreferences::read() {
    PreferenceMap store = decodePreferenceMap(machine_.read());
    PreferenceMap values = productValues(store);
    for (std::string_view key : TUTORIAL_KEYS) {
        const auto it = values.find(key);
        if (it != values.end()) values.erase(it);
    }
    for (const auto& [key, value] : tutorial_) values[key] = value;
    setProductValues(store, values);
    return encodePreferenceMap(store);
}

void PanelPreferences::write(std::string_view bytes) {
    PreferenceMap store = decodePreferenceMap(bytes);
    PreferenceMap values = productValues(store);
    // The run keeps what it wrote of the tutorial; the machine keeps what it had.
    tutorial_.clear();
    const PreferenceMap stored = productValues(decodePreferenceMap(machine_.read()));
    for (auto it = values.begin(); it != values.end();) {
        if (isTutorialKey(it->first)) {
            tutorial_.insert(*it);
            it = values.erase(it);
        } else {
            ++it;
        }
    }
    for (const auto& [key, value] : stored)
        if (isTutorialKey(key)) values[key] = value;
    setProductValues(store, values);
    machine_.write(encodePreferenceMap(store));
}

}  // namespace cli
