// The system clipboard as the scripts' `readClipboard` and
// `writeClipboard` reach it. A window that owns the platform's clipboard
// puts itself in for the thread that runs its editor's work; otherwise
// the text stays within the process.
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

    // The clipboard of the calling thread now: the one set last on it,
    // else the process's own.
    static Clipboard& system();
    // Sets the platform's clipboard for the calling thread; null returns
    // to the process's own.
    static void setSystem(Clipboard* clipboard);

    // Sets a clipboard for the life of a scope.
    class Use {
    public:
        explicit Use(Clipboard& clipboard) : previous_(current()) { setSystem(&clipboard); }
        ~Use() { setSystem(previous_); }
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;

    private:
        Clipboard* previous_;
    };

private:
    static Clipboard* current();
};

}  // namespace Fomal
