// The events file of `tendrane panel`: one event a line, as a user's hands
// and keyboard would give them to the editor. Blank lines and lines that
// start with '#' are skipped.
//
//   move X Y                     down X Y [MODS]     up X Y [MODS]
//   click X Y [MODS]             drag X1 Y1 X2 Y2 [STEPS] [MODS]
//   key NAME [MODS]              wait MS             note PITCH VELOCITY
//   noteoff PITCH                suspend             resume
//   shot FILE.png                choose TITLE
//
// MODS: any of shift, control, alt and right (the right button).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

struct PanelEvent {
    enum class Kind { move, down, up, click, drag, key, wait, note, noteOff, suspend, resume, shot, choose };
    Kind kind = Kind::move;
    int line = 0;  // in the file, for messages
    int x = 0, y = 0, x2 = 0, y2 = 0;
    int steps = 10;               // drag: the moves between press and release
    std::uint32_t modifiers = 0;  // the editor's modifier and button bits
    std::int64_t ms = 0;          // wait
    int pitch = 0, velocity = 0;  // note, noteoff
    std::string text;             // key name, shot file, choose title
};

// The whole file, or a UsageError naming the line and what is wrong with
// it; nothing runs from a file with a bad line.
std::vector<PanelEvent> parsePanelEvents(std::string_view text);

}  // namespace cli
