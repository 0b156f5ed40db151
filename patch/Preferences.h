// The plain preferences: the folders last used, the default MIDI
// configuration, the tutorial position and whatever else a script stores.
// They live in the preference store under the key "Tendrane" as a text in
// object notation, one `key: value,` per line inside braces, each value
// escaped so that quotes and line ends survive.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "patch/PreferencesStore.h"

class Preferences {
public:
    static constexpr std::string_view STORE_KEY = "Tendrane";

    // Takes the lock, reads the store, parses the text, releases the lock.
    explicit Preferences(PreferenceBackend& backend = machinePreferenceBackend());

    // The value, or nothing for a missing key.
    std::optional<std::string> get(std::string_view key) const;
    void set(std::string_view key, std::string value);

    // Takes the lock, reads the store again, puts this object's changed keys
    // into what is stored now, writes it back and releases the lock. So two
    // writers of different keys both survive; the last writer of a key wins.
    void store();

    // The text form of this object's values.
    std::string text() const;

    // The script natives' one-shot forms: one whole read, or read, change and
    // store.
    static std::optional<std::string> read(std::string_view key,
                                           PreferenceBackend& backend = machinePreferenceBackend());
    static void write(std::string_view key, std::string value,
                      PreferenceBackend& backend = machinePreferenceBackend());

    static PreferenceMap parseText(std::string_view text);
    static std::string formatText(const PreferenceMap& values);

private:
    PreferenceBackend& backend_;
    PreferenceMap values_;
    std::set<std::string, std::less<>> changed_;
};
