#include "fomal/Trigger.h"

#include <cctype>

#include "fomal/NotationNames.h"

namespace Fomal {

bool Trigger::answers(std::string_view name) const {
    for (const std::string& w : when)
        if (w == name) return true;
    return false;
}

std::vector<Trigger> readTriggers(std::string_view raw) {
    std::vector<Trigger> triggers;
    for (const std::string& entry : parseArray(raw)) {
        const Object keys = parseObject(entry);
        Trigger t;
        const std::string when = keys.get("when");
        if (!when.empty() && when.front() == '{') {
            for (const std::string& name : parseArray(when)) t.when.push_back(readString(name));
        } else {
            t.when.push_back(readString(when));
        }
        t.action = readString(keys.get("action"));
        t.params = keys.get("params");
        triggers.push_back(std::move(t));
    }
    return triggers;
}

std::string withTriggerName(std::string_view text, std::string_view name) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        // `$0`, `$n`, `$this` are a script's own names and stay.
        const unsigned char next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
        if (c == '$' && !(std::isalnum(next) || next == '_' || next == '$'))
            out += name;
        else
            out += c;
    }
    return out;
}

}  // namespace Fomal
