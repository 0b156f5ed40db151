#include "fomal/ClickMask.h"

#include <string>

#include "platform/Exceptions.h"

namespace Fomal {

namespace {

struct Word {
    std::string_view text;
    std::uint32_t bit;
};

constexpr Word WORDS[] = {
    {"click", CLICK_BIT},     {"shift", SHIFT_BIT}, {"control", CONTROL_BIT}, {"alt", ALT_BIT},
    {"command", COMMAND_BIT}, {"left", LEFT_BIT},   {"right", RIGHT_BIT},     {"context", CONTEXT_BIT},
    {"press", PRESS_BIT},     {"release", RELEASE_BIT}, {"down", DOWN_BIT},   {"up", UP_BIT},
    {"windows", WINDOWS_BIT}, {"mac", MAC_BIT},
};

std::string_view trimmed(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
    return s;
}

}  // namespace

std::uint32_t parseClickMask(std::string_view text) {
    std::uint32_t mask = 0;
    if (trimmed(text).empty()) return 0;
    for (;;) {
        const std::size_t plus = text.find('+');
        const std::string_view word = trimmed(text.substr(0, plus));
        bool known = false;
        for (const Word& w : WORDS) {
            if (w.text == word) {
                mask |= w.bit;
                known = true;
            }
        }
        if (!known) throw FormatException("Invalid click mask constant: " + std::string(word));
        if (plus == std::string_view::npos) break;
        text.remove_prefix(plus + 1);
    }
    return mask;
}

}  // namespace Fomal
