// The X selection CLIPBOARD for an editor window: what the panel copies,
// the window owns and hands to whoever asks; what it pastes, it asks the
// owner for. Every call runs on the thread that holds the window's lock,
// since the window's display is used from that thread alone.
#pragma once

#include <X11/Xlib.h>

#include <optional>
#include <string>

#include "fomal/Clipboard.h"

class X11Clipboard : public Fomal::Clipboard {
public:
    // How long a paste waits for another program to answer.
    static constexpr int ANSWER_WAIT_MS = 1000;

    X11Clipboard(Display* display, Window window);

    std::optional<std::string> read() override;
    void write(std::string_view text) override;

    // The window's event loop hands these over: another program asks for
    // the text, or took the selection away.
    void answer(const XSelectionRequestEvent& request);
    void lost() { owned_ = false; }

private:
    std::optional<std::string> fetch(Atom target);

    Display* display_;
    Window window_;
    Atom clipboard_, utf8_, targets_, text_, property_;
    std::string copied_;
    bool owned_ = false;
};
