#include "plugin/Win32Clipboard_win32.h"

#include <cstring>

#include "platform/Utf16.h"

std::u16string Win32Clipboard::toClipboardText(std::string_view text) {
    std::u16string wide;
    if (std::optional<std::u16string> converted = platform::utf8ToUtf16(text)) {
        wide = std::move(*converted);
    } else {
        for (char c : text) wide.push_back(char16_t(static_cast<unsigned char>(c)));
    }
    std::u16string out;
    out.reserve(wide.size() + wide.size() / 16);
    for (std::size_t i = 0; i < wide.size(); ++i) {
        if (wide[i] == u'\n' && (i == 0 || wide[i - 1] != u'\r')) out.push_back(u'\r');
        out.push_back(wide[i]);
    }
    return out;
}

std::string Win32Clipboard::fromClipboardText(std::u16string_view text) {
    std::u16string joined;
    joined.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') continue;
        joined.push_back(text[i]);
    }
    return platform::utf16ToUtf8Lossy(joined);
}

bool Win32Clipboard::open() {
    for (int attempt = 0; attempt < OPEN_ATTEMPTS; ++attempt) {
        if (OpenClipboard(owner_)) return true;
        Sleep(OPEN_PAUSE_MS);
    }
    return false;
}

std::optional<std::string> Win32Clipboard::read() {
    if (!IsClipboardFormatAvailable(CF_UNICODETEXT) || !open()) return std::nullopt;
    std::optional<std::string> text;
    if (HANDLE data = GetClipboardData(CF_UNICODETEXT)) {
        if (const auto* units = static_cast<const char16_t*>(GlobalLock(data))) {
            // The text ends at its terminating zero, and never past the block.
            const std::size_t limit = GlobalSize(data) / sizeof(char16_t);
            std::size_t n = 0;
            while (n < limit && units[n] != 0) ++n;
            text = fromClipboardText(std::u16string_view(units, n));
            GlobalUnlock(data);
        }
    }
    CloseClipboard();
    return text;
}

void Win32Clipboard::write(std::string_view text) {
    const std::u16string units = toClipboardText(text);
    const std::size_t bytes = (units.size() + 1) * sizeof(char16_t);
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes);
    if (block == nullptr) return;
    void* place = GlobalLock(block);
    if (place == nullptr) {
        GlobalFree(block);
        return;
    }
    std::memcpy(place, units.c_str(), bytes);
    GlobalUnlock(block);
    if (!open()) {
        GlobalFree(block);
        return;
    }
    EmptyClipboard();
    // The clipboard owns the block once it took it.
    if (SetClipboardData(CF_UNICODETEXT, block) == nullptr) GlobalFree(block);
    CloseClipboard();
}
