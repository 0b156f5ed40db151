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

bool clickMaskAnswers(std::uint32_t mask, std::uint32_t event) {
    constexpr std::uint32_t MOMENTS = CLICK_BIT | PRESS_BIT | RELEASE_BIT | DOWN_BIT | UP_BIT | CONTEXT_BIT;
    constexpr std::uint32_t MODIFIERS = SHIFT_BIT | CONTROL_BIT | ALT_BIT | COMMAND_BIT;
    constexpr std::uint32_t BUTTONS = LEFT_BIT | RIGHT_BIT;
    if ((mask & MAC_BIT) && !(mask & WINDOWS_BIT)) return false;
    if ((mask & (MOMENTS | MODIFIERS | BUTTONS)) == 0) mask |= CLICK_BIT;
    if ((mask & MOMENTS & event) != (mask & MOMENTS)) return false;
    if ((mask & MODIFIERS) != (event & MODIFIERS)) return false;
    std::uint32_t button = mask & BUTTONS;
    if (button == 0) button = (mask & CONTEXT_BIT) ? RIGHT_BIT : LEFT_BIT;
    return (button & event) != 0;
}

}  // namespace Fomal
