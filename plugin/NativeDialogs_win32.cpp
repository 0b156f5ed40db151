#include "plugin/NativeDialogs_win32.h"

#include <commdlg.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Exceptions.h"
#include "platform/Utf16.h"

namespace {

struct ButtonSet {
    std::string_view words;
    UINT flags;
};

constexpr ButtonSet BUTTON_SETS[] = {
    {"ok", MB_OK},           {"ok cancel", MB_OKCANCEL},       {"retry cancel", MB_RETRYCANCEL},
    {"yes no", MB_YESNO},    {"yes no cancel", MB_YESNOCANCEL}, {"abort retry ignore", MB_ABORTRETRYIGNORE},
};

struct AlertIcon {
    std::string_view type;
    UINT flags;
};

constexpr AlertIcon ALERT_ICONS[] = {
    {"plain", 0}, {"info", MB_ICONINFORMATION}, {"question", MB_ICONQUESTION}, {"warning", MB_ICONWARNING},
    {"error", MB_ICONERROR},
};

struct Answer {
    int id;
    std::string_view word;
};

constexpr Answer ANSWERS[] = {{IDOK, "ok"},     {IDCANCEL, "cancel"}, {IDYES, "yes"},      {IDNO, "no"},
                              {IDRETRY, "retry"}, {IDABORT, "abort"},  {IDIGNORE, "ignore"}};

constexpr UINT DEFAULT_BUTTONS[] = {MB_DEFBUTTON1, MB_DEFBUTTON2, MB_DEFBUTTON3};

std::wstring wide(std::string_view utf8) {
    const std::u16string text = platform::utf8ToUtf16(utf8).value_or(u"?");
    return std::wstring(text.begin(), text.end());
}

// Fills a menu with the entries, numbering the choosable ones from 1 into
// `chosen`.
void fill(HMENU menu, const std::vector<Fomal::PopupItem>& items, std::vector<const Fomal::PopupItem*>& chosen) {
    for (const Fomal::PopupItem& item : items) {
        if (item.separator()) {
            AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
            continue;
        }
        const std::wstring title = wide(item.title);  // '&' marks the access key here too
        if (!item.items.empty()) {
            HMENU sub = CreatePopupMenu();
            fill(sub, item.items, chosen);
            AppendMenuW(menu, MF_POPUP | MF_STRING | (item.enabled ? 0u : MF_GRAYED), reinterpret_cast<UINT_PTR>(sub),
                        title.c_str());
            continue;
        }
        chosen.push_back(&item);
        AppendMenuW(menu, MF_STRING | (item.enabled ? 0u : MF_GRAYED) | (item.checked ? MF_CHECKED : 0u),
                    UINT_PTR(chosen.size()), title.c_str());
    }
}

}  // namespace

std::string Win32Dialogs::alert(const Fomal::AlertRequest& alert, std::string_view text) {
    UINT flags = MB_OK;
    for (const ButtonSet& set : BUTTON_SETS) {
        std::string joined;
        for (const std::string& w : alert.buttons) joined += (joined.empty() ? "" : " ") + w;
        if (set.words == joined) flags = set.flags;
    }
    for (const AlertIcon& icon : ALERT_ICONS)
        if (icon.type == alert.type) flags |= icon.flags;
    for (std::size_t i = 0; i < alert.buttons.size() && i < std::size(DEFAULT_BUTTONS); ++i)
        if (alert.buttons[i] == alert.defaultButton) flags |= DEFAULT_BUTTONS[i];
    const int id = MessageBoxW(owner_, wide(text).c_str(), wide(alert.title).c_str(), flags | MB_TASKMODAL);
    for (const Answer& a : ANSWERS)
        if (a.id == id) return std::string(a.word);
    // Closed without a button: the box's way out.
    return alert.buttons.size() > 1 ? alert.buttons.back() : alert.buttons.front();
}

const Fomal::PopupItem* Win32Dialogs::popup(const std::vector<Fomal::PopupItem>& items, float x, float y) {
    HMENU menu = CreatePopupMenu();
    if (menu == nullptr) return nullptr;
    std::vector<const Fomal::PopupItem*> chosen;
    fill(menu, items, chosen);
    POINT at{LONG(std::lround(x)), LONG(std::lround(y))};
    ClientToScreen(owner_, &at);
    const UINT id = UINT(TrackPopupMenuEx(menu, TPM_RETURNCMD | TPM_NONOTIFY | TPM_LEFTALIGN | TPM_TOPALIGN, at.x, at.y,
                                          owner_, nullptr));
    DestroyMenu(menu);  // its submenus go with it
    return id >= 1 && id <= chosen.size() ? chosen[id - 1] : nullptr;
}

bool Win32Dialogs::fileDialog(const Fomal::FileDialogRequest& request, std::string& path) {
    // The filter: each entry's title, then its patterns joined by ';', each
    // part ending in a zero, the whole in two.
    std::vector<Fomal::FileFilter> filters = request.filters;
    filters.push_back(Fomal::allFilesFilter());
    std::wstring filter;
    for (const Fomal::FileFilter& f : filters) {
        filter += wide(Fomal::filterTitle(f));
        filter.push_back(L'\0');
        std::string patterns;
        for (std::size_t i = 0; i < f.patterns.size(); ++i) patterns += (i > 0 ? ";" : "") + f.patterns[i];
        filter += wide(patterns);
        filter.push_back(L'\0');
    }
    filter.push_back(L'\0');

    std::vector<wchar_t> file(32768, L'\0');
    const std::wstring proposed = wide(request.fileName);
    proposed.copy(file.data(), std::min(proposed.size(), file.size() - 1));
    const std::wstring folder = wide(request.folder);
    const std::wstring title = wide(request.title);
    const std::wstring extension = wide(request.extension);

    OPENFILENAMEW ofn = {};
    ofn.lStructSize = sizeof ofn;
    ofn.hwndOwner = owner_;
    ofn.lpstrFilter = filter.c_str();
    ofn.nFilterIndex = 1;
    ofn.lpstrFile = file.data();
    ofn.nMaxFile = DWORD(file.size());
    ofn.lpstrInitialDir = folder.empty() ? nullptr : folder.c_str();
    ofn.lpstrTitle = title.c_str();
    ofn.lpstrDefExt = extension.empty() ? nullptr : extension.c_str();
    ofn.Flags = OFN_EXPLORER | OFN_NOCHANGEDIR | OFN_HIDEREADONLY |
                (request.save ? OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST : OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST);
    const BOOL chosen = request.save ? GetSaveFileNameW(&ofn) : GetOpenFileNameW(&ofn);
    path.clear();
    if (!chosen) {
        // A cancelled dialog is no error; a dialog that could not open is.
        if (CommDlgExtendedError() != 0) throw Exception("Open file dialog error");
        return true;
    }
    const std::wstring name(file.data());
    path = platform::utf16ToUtf8Lossy(std::u16string(name.begin(), name.end()));
    return true;
}
