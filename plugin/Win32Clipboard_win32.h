// The Windows clipboard for an editor window: text goes out and comes in
// as CF_UNICODETEXT. The scripts' text is UTF-8 with "\n" line ends; on
// the clipboard the lines end in "\r\n", as other programs expect there.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

#include "fomal/Clipboard.h"

class Win32Clipboard : public Fomal::Clipboard {
public:
    // How often, and how far apart, opening is tried while another program
    // holds the clipboard open.
    static constexpr int OPEN_ATTEMPTS = 10;
    static constexpr DWORD OPEN_PAUSE_MS = 10;

    // owner: the window that owns what the editor copies.
    explicit Win32Clipboard(HWND owner) : owner_(owner) {}

    std::optional<std::string> read() override;
    void write(std::string_view text) override;

    // The conversions on their own: UTF-8 with "\n" to the clipboard's
    // UTF-16 with "\r\n", and back. Bytes that are not UTF-8 count as
    // Latin-1 characters.
    static std::u16string toClipboardText(std::string_view text);
    static std::string fromClipboardText(std::u16string_view text);

private:
    bool open();

    HWND owner_;
};
