// The system clipboard as the scripts' `readClipboard` and
// `writeClipboard` reach it. A window that owns the platform's clipboard
// puts itself in while it is open; otherwise the text stays within the
// process.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Fomal {

class Clipboard {
public:
    virtual ~Clipboard() = default;
    // The clipboard's text, or nothing when it holds none.
    virtual std::optional<std::string> read() = 0;
    virtual void write(std::string_view text) = 0;

    // The clipboard of the process now: the one set last, else the
    // process's own.
    static Clipboard& system();
    // Sets the platform's clipboard; null returns to the process's own.
    static void setSystem(Clipboard* clipboard);
};

}  // namespace Fomal
