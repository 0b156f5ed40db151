// The MIDI configuration dialog as Windows shows it: a modal dialog owned
// by the editor's window, with the controls of the dialog the panel draws
// (the channels, the pitch wheel range and the velocity curve as drop-down
// lists, the two check boxes, the note of the reassigned controllers, and
// the buttons Reset, Load..., Save..., Make Default, Cancel and OK), made
// from a template in memory. Every change reaches the instance at once;
// Cancel, escape and the close box put back what was there when it opened.
#pragma once

#include <windows.h>

#include "fomal/EditorServices.h"

class Win32MidiConfigDialog : public Fomal::NativeMidiConfigDialog {
public:
    // owner: the editor's child window.
    explicit Win32MidiConfigDialog(HWND owner) : owner_(owner) {}

    void show(Fomal::EditorServices& editor) override;

private:
    HWND owner_;
};
