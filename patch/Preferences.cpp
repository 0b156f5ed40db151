#include "patch/Preferences.h"

#include "notation/Notation.h"
#include "notation/NotationReaders.h"
#include "platform/Exceptions.h"
#include "notation/Escape.h"

namespace {

bool isPlainKey(std::string_view key) {
    if (key.empty()) return false;
    for (char c : key)
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '$'))
            return false;
    return true;
}

std::string storedText(const PreferenceMap& map) {
    auto it = map.find(Preferences::STORE_KEY);
    return it == map.end() ? std::string() : it->second;
}

}  // namespace

PreferenceMap Preferences::parseText(std::string_view text) {
    PreferenceMap values;
    const notation::Object object = notation::parseObject(text);
    for (const auto& [key, raw] : object.entries()) {
        try {
            values[key] = notation::readString(raw);
        } catch (const Exception&) {
            values[key] = raw;  // an unterminated quote: keep what stands there
        }
    }
    return values;
}

std::string Preferences::formatText(const PreferenceMap& values) {
    std::string t = "{\n";
    for (const auto& [key, value] : values) {
        t += isPlainKey(key) ? key : notation::escape(key);
        t += ": ";
        t += notation::escape(value);
        t += ",\n";
    }
    t += "}";
    return t;
}

Preferences::Preferences(PreferenceBackend& backend) : backend_(backend) {
    values_ = parseText(storedText(readPreferenceMap(backend_)));
}

std::optional<std::string> Preferences::get(std::string_view key) const {
    auto it = values_.find(key);
    if (it == values_.end()) return std::nullopt;
    return it->second;
}

void Preferences::set(std::string_view key, std::string value) {
    values_[std::string(key)] = std::move(value);
    changed_.insert(std::string(key));
}

std::string Preferences::text() const { return formatText(values_); }

void Preferences::store() {
    updatePreferenceMap(
        [this](PreferenceMap& map) {
            PreferenceMap now = parseText(storedText(map));
            for (const std::string& key : changed_) now[key] = values_[key];
            values_ = now;
            map[std::string(STORE_KEY)] = formatText(now);
        },
        backend_);
    changed_.clear();
}

std::optional<std::string> Preferences::read(std::string_view key, PreferenceBackend& backend) {
    return Preferences(backend).get(key);
}

void Preferences::write(std::string_view key, std::string value, PreferenceBackend& backend) {
    updatePreferenceMap(
        [&](PreferenceMap& map) {
            PreferenceMap now = parseText(storedText(map));
            now[std::string(key)] = std::move(value);
            map[std::string(STORE_KEY)] = formatText(now);
        },
        backend);
}
