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
#include <cstring>
#include <string>

#include "plugin/Win32Clipboard_win32.h"

namespace {

int failures = 0;

void check(bool ok, const char* what) {
    if (ok) return;
    ++failures;
    std::printf("FAILED: %s\n", what);
}

// The clipboard's text as another program reads it.
std::wstring readRaw(HWND owner) {
    std::wstring text;
    if (!OpenClipboard(owner)) return L"<not opened>";
    if (HANDLE data = GetClipboardData(CF_UNICODETEXT)) {
        if (const auto* p = static_cast<const wchar_t*>(GlobalLock(data))) {
            text = p;
            GlobalUnlock(data);
        }
    } else {
        text = L"<no text>";
    }
    CloseClipboard();
    return text;
}

// Text put there by another program.
bool writeRaw(HWND owner, const std::wstring& text) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t));
    if (block == nullptr) return false;
    std::memcpy(GlobalLock(block), text.c_str(), (text.size() + 1) * sizeof(wchar_t));
    GlobalUnlock(block);
    if (!OpenClipboard(owner)) {
        GlobalFree(block);
        return false;
    }
    EmptyClipboard();
    const bool ok = SetClipboardData(CF_UNICODETEXT, block) != nullptr;
    if (!ok) GlobalFree(block);
    CloseClipboard();
    return ok;
}

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
    check(writeRaw(owner, L"one\r\ntwo \U0001D11E"), "could not put text on the clipboard");
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
    std::printf("%s: %d failed checks\n", failures == 0 ? "passed" : "FAILED", failures);
    return failures;
}
