// The events a view receives: mouse presses, moves and releases in panel
// coordinates, the wheel, and keys. Modifiers and buttons are the bits of
// the click masks, so that a view's `actions` compare with them directly.
#pragma once

#include <cstdint>
#include <string>

#include "fomal/ClickMask.h"

namespace Fomal {

struct MouseEvent {
    int x = 0;
    int y = 0;
    // SHIFT_BIT, CONTROL_BIT, ALT_BIT, COMMAND_BIT; LEFT_BIT or RIGHT_BIT;
    // CONTEXT_BIT for the context-menu gesture.
    std::uint32_t modifiers = 0;

    bool shift() const { return (modifiers & SHIFT_BIT) != 0; }
    // The platform's reset modifier: control here, command on the other platform.
    bool resetModifier() const { return (modifiers & CONTROL_BIT) != 0; }
};

struct KeyEvent {
    std::string name;            // "left", "return", "escape", ... or the character itself
    std::uint32_t character = 0; // the character typed, 0 for keys without one
    std::uint32_t modifiers = 0; // as for the mouse
};

}  // namespace Fomal
