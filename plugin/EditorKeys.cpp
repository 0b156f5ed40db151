#include "plugin/EditorKeys.h"

#include <string>
#include <string_view>

#include "fomal/ClickMask.h"

namespace {

struct KeyName {
    VstInt32 key;
    std::string_view name;
};

constexpr KeyName KEY_NAMES[] = {
    {VKEY_BACK, "backspace"}, {VKEY_TAB, "tab"},        {VKEY_RETURN, "return"},  {VKEY_ENTER, "enter"},
    {VKEY_ESCAPE, "escape"},  {VKEY_SPACE, "space"},    {VKEY_LEFT, "left"},      {VKEY_RIGHT, "right"},
    {VKEY_UP, "up"},          {VKEY_DOWN, "down"},      {VKEY_HOME, "home"},      {VKEY_END, "end"},
    {VKEY_PAGEUP, "pageUp"},  {VKEY_PAGEDOWN, "pageDown"}, {VKEY_DELETE, "delete"}, {VKEY_INSERT, "insert"},
    {VKEY_HELP, "help"},      {VKEY_F1, "f1"},          {VKEY_F2, "f2"},          {VKEY_F3, "f3"},
    {VKEY_F4, "f4"},          {VKEY_F5, "f5"},          {VKEY_F6, "f6"},          {VKEY_F7, "f7"},
    {VKEY_F8, "f8"},          {VKEY_F9, "f9"},          {VKEY_F10, "f10"},        {VKEY_F11, "f11"},
    {VKEY_F12, "f12"},
};

// The number pad types its characters.
constexpr char NUMPAD[] = "0123456789*+,-./";

}  // namespace

std::optional<Fomal::KeyEvent> keyEventFromHost(VstInt32 character, VstIntPtr virtualKey, float modifiers) {
    Fomal::KeyEvent e;
    const int bits = int(modifiers);
    if (bits & MODIFIER_SHIFT) e.modifiers |= Fomal::SHIFT_BIT;
    if (bits & MODIFIER_ALTERNATE) e.modifiers |= Fomal::ALT_BIT;
    if (bits & MODIFIER_CONTROL) e.modifiers |= Fomal::CONTROL_BIT;
    if (bits & MODIFIER_COMMAND) e.modifiers |= Fomal::COMMAND_BIT;
    for (const KeyName& k : KEY_NAMES)
        if (virtualKey == k.key) {
            e.name = std::string(k.name);
            if (k.key == VKEY_SPACE) e.character = ' ';
            return e;
        }
    char c = 0;
    if (virtualKey >= VKEY_NUMPAD0 && virtualKey <= VKEY_DIVIDE) c = NUMPAD[virtualKey - VKEY_NUMPAD0];
    else if (virtualKey == VKEY_EQUALS) c = '=';
    else if (character > 32 && character < 127) c = char(character);
    if (c == 0) return std::nullopt;
    e.name = std::string(1, c);
    e.character = std::uint32_t(static_cast<unsigned char>(c));
    return e;
}
