// Click masks: which mouse events an entry of a view's `actions` answers.
// A mask is a `+`-joined list of words, each one bit of a mask word.
#pragma once

#include <cstdint>
#include <string_view>

namespace Fomal {

enum ClickMaskBit : std::uint32_t {
    CLICK_BIT = 1u << 0,    // letting go inside the view
    SHIFT_BIT = 1u << 1,
    CONTROL_BIT = 1u << 2,
    ALT_BIT = 1u << 3,
    COMMAND_BIT = 1u << 4,
    LEFT_BIT = 1u << 5,
    RIGHT_BIT = 1u << 6,
    CONTEXT_BIT = 1u << 7,  // the context-menu button or gesture
    PRESS_BIT = 1u << 8,    // a press as such
    RELEASE_BIT = 1u << 9,  // letting go after a tracked press
    DOWN_BIT = 1u << 10,    // the moment of pressing
    UP_BIT = 1u << 11,      // the moment of letting go, inside or outside
    WINDOWS_BIT = 1u << 12,
    MAC_BIT = 1u << 13,
};

// "click", "shift", "control", "alt", "command", "left", "right", "context",
// "press", "release", "down", "up", "windows", "mac", joined by `+`, blanks
// around words allowed. Any other word fails with "Invalid click mask
// constant: " and the word. An empty text is the empty mask.
std::uint32_t parseClickMask(std::string_view text);

// The bits of a mouse event: the moment (DOWN_BIT and PRESS_BIT when
// pressing, UP_BIT and RELEASE_BIT when letting go, CLICK_BIT when letting
// go inside), the button (LEFT_BIT, or RIGHT_BIT with CONTEXT_BIT on its
// press) and the modifiers held.
//
// An entry answers an event when every moment word it names is there, its
// modifiers are exactly those held (so a control-click is not a click),
// its button is the event's (an entry that names none answers the left
// button, or the right one when it names "context"), and it is for this
// platform (an entry that names "mac" and not "windows" never answers
// here). An empty mask stands for "click", as a lone `action` does.
bool clickMaskAnswers(std::uint32_t mask, std::uint32_t event);

}  // namespace Fomal
