// The editor window's clipboard under a Windows clipboard: what the editor
// copies is CF_UNICODETEXT with "\r\n" line ends for other programs, and
// what they copy reads back as the editor's UTF-8 with "\n".
//
//   editor_clipboard
//
// Every failed check prints a line starting with "FAILED"; the exit status
// is the count of them.
#include <windows.h>

#include <cstdio>
#include <optional>
#include <string>

#include "plugin/Win32Clipboard_win32.h"
#include "tests/host/windows/WinTestSupport.h"

using namespace wintest;

namespace {

// The clipboard's text as another program reads it.
std::wstring readRaw(HWND owner) { return clipboardUnits(owner).value_or(L"<no text>"); }

}  // namespace

int main() {
    setvbuf(stdout, nullptr, _IONBF, 0);
    HWND owner = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 1, 1, HWND_MESSAGE, nullptr, nullptr, nullptr);
    check(owner != nullptr, "no window to own the clipboard");
    Win32Clipboard clipboard(owner);

    // Out: UTF-8 with "\n" becomes UTF-16 with "\r\n"; a "\r\n" stays one.
    const std::string patch = "Tendrane {\n\tName: \"Gr\xC3\xBCn \xE2\x99\xAB\"\r\n}\n";
    clipboard.write(patch);
    const std::wstring raw = readRaw(owner);
    std::printf("written: %zu UTF-16 units\n", raw.size());
    check(raw == L"Tendrane {\r\n\tName: \"Gr\u00FCn \u266B\"\r\n}\r\n", "the clipboard holds other text than written");
    // Back in: "\r\n" reads as "\n".
    const std::optional<std::string> back = clipboard.read();
    check(back.has_value(), "the editor reads no text back");
    check(back && *back == "Tendrane {\n\tName: \"Gr\xC3\xBCn \xE2\x99\xAB\"\n}\n", "the text read back differs");

    // In from another program, with a character beyond the first plane.
    check(putOnClipboard(owner, L"one\r\ntwo \U0001D11E"), "could not put text on the clipboard");
    const std::optional<std::string> other = clipboard.read();
    check(other && *other == "one\ntwo \xF0\x9D\x84\x9E", "another program's text reads wrong");

    // Bytes that are not UTF-8 still go out, as Latin-1.
    clipboard.write("caf\xE9");
    check(readRaw(owner) == L"caf\u00E9", "text that is not UTF-8 did not go out as Latin-1");

    // A clipboard without text reads as nothing.
    if (OpenClipboard(owner)) {
        EmptyClipboard();
        CloseClipboard();
    }
    check(!clipboard.read().has_value(), "an empty clipboard reads as text");

    if (owner != nullptr) DestroyWindow(owner);
    std::printf("%s: %d failed checks\n", failedChecks() == 0 ? "passed" : "FAILED", failedChecks());
    return failedChecks();
}
