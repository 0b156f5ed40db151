// Keys that a host forwards to the editor through the dispatcher, as the
// editor's key events: the named keys by name, others by their character.
#pragma once

#include <optional>

#include "fomal/ViewEvents.h"
#include "plugin/VstAbi.h"

// index, value and opt of effEditKeyDown; nothing for a key the editor has
// no use for (a modifier alone, a key with neither name nor character).
std::optional<Fomal::KeyEvent> keyEventFromHost(VstInt32 character, VstIntPtr virtualKey, float modifiers);
