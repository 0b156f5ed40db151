// The editor's alerts, popup menus and file dialogs as Windows draws them:
// a message box, a popup menu and the common dialogs, owned by the editor's
// window.
#pragma once

#include <windows.h>

#include "fomal/ActionDispatcher.h"

class Win32Dialogs : public Fomal::NativeDialogs {
public:
    // owner: the editor's child window; menus open at panel coordinates
    // within it.
    explicit Win32Dialogs(HWND owner) : owner_(owner) {}

    std::string alert(const Fomal::AlertRequest& alert, std::string_view text) override;
    const Fomal::PopupItem* popup(const std::vector<Fomal::PopupItem>& items, float x, float y) override;
    // The common open and save dialogs.
    bool fileDialog(const Fomal::FileDialogRequest& request, std::string& path) override;

private:
    HWND owner_;
};
