// The mouse cursors a view can ask for by name.
#pragma once

#include <string_view>

namespace Fomal {

enum class Cursor {
    inherited,  // no `cursor` key: the parent's counts
    arrow,
    iBeam,
    wait,
    cross,
    upArrow,
    sizeAll,
    sizeNWSE,
    sizeNESW,
    sizeWE,
    sizeNS,
    no,
    hand,
    appStarting,
    help,
};

// The names of the layouts; any other fails with "Unknown cursor: " and the name.
Cursor parseCursor(std::string_view name);

}  // namespace Fomal
