#include "plugin/MidiConfigDialog_win32.h"

#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "fomal/EditorHost.h"
#include "fomal/MidiConfigForm.h"
#include "platform/Exceptions.h"
#include "platform/Utf16.h"
#include "plugin/NativeDialogs_win32.h"

namespace {

using namespace Fomal::MidiConfigForm;

// The controls' numbers. OK and Cancel have the numbers the dialog
// manager gives the return and escape keys.
constexpr int BUTTON_IDS[BUTTON_COUNT] = {1001, 1002, 1003, 1004, IDCANCEL, IDOK};
constexpr int FIRST_CHOICE = 1101;
constexpr int FIRST_CHECK = 1201;
constexpr int NOTE_ID = 1301;
constexpr WORD NO_ID = 0xFFFF;

// The system's control classes by their atoms.
constexpr WORD BUTTON_CLASS = 0x0080;
constexpr WORD STATIC_CLASS = 0x0082;
constexpr WORD COMBO_CLASS = 0x0085;

// The layout, in dialog units.
constexpr short MARGIN = 7;
constexpr short WIDTH = 220;
constexpr short LABEL_WIDTH = 70;
constexpr short CHOICE_LEFT = MARGIN + LABEL_WIDTH + 4;
constexpr short CHOICE_WIDTH = 80;
constexpr short CHOICE_ROW = 16;
constexpr short LIST_HEIGHT = 140;  // a choice's list when dropped down
constexpr short CHECK_HEIGHT = 10;
constexpr short CHECK_ROW = 14;
constexpr short NOTE_HEIGHT = 18;
constexpr short BUTTON_HEIGHT = 14;
constexpr short BUTTON_GAP = 4;
constexpr short WIDE_BUTTON = 46;
constexpr short DEFAULT_BUTTON = 56;
constexpr short NARROW_BUTTON = 50;

std::wstring wide(std::string_view utf8) {
    const std::u16string text = platform::utf8ToUtf16(utf8).value_or(u"?");
    return std::wstring(text.begin(), text.end());
}

// A dialog template in memory: the dialog's header, then its controls,
// each on a four-byte boundary.
class DialogTemplate {
public:
    DialogTemplate(std::string_view title, short width, short height) {
        const DWORD style = DS_MODALFRAME | DS_SETFONT | DS_CENTER | WS_POPUP | WS_CAPTION | WS_SYSMENU;
        addDword(style);
        addDword(0);
        words_.push_back(0);  // the count of controls, set as they come
        add(0);
        add(0);
        add(width);
        add(height);
        words_.push_back(0);  // no menu
        words_.push_back(0);  // the dialog class
        addText(title);
        words_.push_back(8);  // point size of the font
        addText("MS Shell Dlg");
    }

    void control(WORD kind, std::string_view title, int id, DWORD style, short x, short y, short width,
                 short height) {
        if (words_.size() % 2 != 0) words_.push_back(0);
        addDword(style | WS_CHILD | WS_VISIBLE);
        addDword(0);
        add(x);
        add(y);
        add(width);
        add(height);
        words_.push_back(WORD(id));
        words_.push_back(0xFFFF);
        words_.push_back(kind);
        addText(title);
        words_.push_back(0);  // no creation data
        ++words_[COUNT_AT];
    }

    const DLGTEMPLATE* get() const { return reinterpret_cast<const DLGTEMPLATE*>(words_.data()); }

private:
    static constexpr std::size_t COUNT_AT = 4;  // the count's place, in words

    void add(short value) { words_.push_back(WORD(value)); }
    void addDword(DWORD value) {
        words_.push_back(LOWORD(value));
        words_.push_back(HIWORD(value));
    }
    void addText(std::string_view text) {
        for (wchar_t c : wide(text)) words_.push_back(WORD(c));
        words_.push_back(0);
    }

    // Words keep the template's start on the boundary that it needs.
    std::vector<WORD> words_;
};

// The controls from the top, in the order the tab key visits them.
DialogTemplate makeTemplate() {
    short y = MARGIN;
    const short checksTop = short(MARGIN + STEPPER_COUNT * CHOICE_ROW + 4);
    const short noteTop = short(checksTop + CHECK_COUNT * CHECK_ROW + 4);
    const short upperButtons = short(noteTop + NOTE_HEIGHT + 6);
    const short lowerButtons = short(upperButtons + BUTTON_HEIGHT + 6);
    DialogTemplate t(TITLE, WIDTH, short(lowerButtons + BUTTON_HEIGHT + MARGIN));
    for (int s = 0; s < STEPPER_COUNT; ++s) {
        t.control(STATIC_CLASS, STEPPER_LABELS[s], NO_ID, SS_LEFT, MARGIN, short(y + 2), LABEL_WIDTH, 8);
        t.control(COMBO_CLASS, "", FIRST_CHOICE + s, CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP | (s == 0 ? WS_GROUP : 0),
                  CHOICE_LEFT, y, CHOICE_WIDTH, LIST_HEIGHT);
        y = short(y + CHOICE_ROW);
    }
    for (int c = 0; c < CHECK_COUNT; ++c)
        t.control(BUTTON_CLASS, CHECK_TITLES[c], FIRST_CHECK + c, BS_CHECKBOX | WS_TABSTOP, MARGIN,
                  short(checksTop + c * CHECK_ROW), WIDTH - 2 * MARGIN, CHECK_HEIGHT);
    t.control(STATIC_CLASS, reassignedNote(Fomal::MidiSettings()), NOTE_ID, SS_LEFT | SS_NOPREFIX, MARGIN, noteTop,
              WIDTH - 2 * MARGIN, NOTE_HEIGHT);
    short x = MARGIN;
    for (int b = resetButton; b <= defaultButton; ++b) {
        const short width = b == defaultButton ? DEFAULT_BUTTON : WIDE_BUTTON;
        t.control(BUTTON_CLASS, BUTTON_TITLES[b], BUTTON_IDS[b], BS_PUSHBUTTON | WS_TABSTOP, x, upperButtons, width,
                  BUTTON_HEIGHT);
        x = short(x + width + BUTTON_GAP);
    }
    const short right = WIDTH - MARGIN;
    t.control(BUTTON_CLASS, BUTTON_TITLES[cancelButton], IDCANCEL, BS_PUSHBUTTON | WS_TABSTOP,
              short(right - 2 * NARROW_BUTTON - BUTTON_GAP), lowerButtons, NARROW_BUTTON, BUTTON_HEIGHT);
    t.control(BUTTON_CLASS, BUTTON_TITLES[okButton], IDOK, BS_DEFPUSHBUTTON | WS_TABSTOP,
              short(right - NARROW_BUTTON), lowerButtons, NARROW_BUTTON, BUTTON_HEIGHT);
    return t;
}

// What the dialog's procedure works on while it is open.
struct Session {
    Fomal::EditorServices& editor;
};

Fomal::EditorHost& hostOf(HWND dialog) {
    return reinterpret_cast<Session*>(GetWindowLongPtrW(dialog, DWLP_USER))->editor.host();
}

// Every control shows what the configuration holds now.
void showSettings(HWND dialog) {
    const Fomal::MidiSettings settings = hostOf(dialog).midiSettings();
    for (int s = 0; s < STEPPER_COUNT; ++s)
        SendDlgItemMessageW(dialog, FIRST_CHOICE + s, CB_SETCURSEL, WPARAM(positionOf(settings, s)), 0);
    for (int c = 0; c < CHECK_COUNT; ++c)
        CheckDlgButton(dialog, FIRST_CHECK + c, isChecked(settings, c) ? BST_CHECKED : BST_UNCHECKED);
    SetDlgItemTextW(dialog, NOTE_ID, wide(reassignedNote(settings)).c_str());
}

void fillChoices(HWND dialog) {
    for (int s = 0; s < STEPPER_COUNT; ++s)
        for (int p = 0; p < valueCount(s); ++p)
            SendDlgItemMessageW(dialog, FIRST_CHOICE + s, CB_ADDSTRING, 0,
                                reinterpret_cast<LPARAM>(wide(positionText(s, p)).c_str()));
}

// A file chosen in the system's open or save dialog, owned by this one;
// empty when none was.
std::string chooseFile(HWND dialog, bool save) {
    std::string path;
    Win32Dialogs(dialog).fileDialog(hostOf(dialog).midiConfigDialog(save), path);
    return path;
}

void press(HWND dialog, int button) {
    Fomal::EditorHost& host = hostOf(dialog);
    switch (button) {
        case resetButton: host.resetMidiConfig(); break;
        case loadButton:
            if (const std::string path = chooseFile(dialog, false); !path.empty()) host.loadMidiConfig(path);
            break;
        case saveButton:
            if (const std::string path = chooseFile(dialog, true); !path.empty()) host.saveMidiConfig(path);
            break;
        case defaultButton: {
            host.makeMidiConfigDefault();
            const Fomal::AlertRequest alert = madeDefaultAlert();
            Win32Dialogs(dialog).alert(alert, alert.text);
            break;
        }
        default: break;
    }
}

// A command of a control; true when it was one of the dialog's.
bool command(HWND dialog, int id, int code) {
    for (int s = 0; s < STEPPER_COUNT; ++s) {
        if (id != FIRST_CHOICE + s) continue;
        if (code != CBN_SELCHANGE) return false;
        const LRESULT position = SendDlgItemMessageW(dialog, id, CB_GETCURSEL, 0, 0);
        if (position >= 0 && position < valueCount(s)) setPosition(hostOf(dialog), s, int(position));
        return true;
    }
    for (int c = 0; c < CHECK_COUNT; ++c) {
        if (id != FIRST_CHECK + c) continue;
        if (code != BN_CLICKED) return false;
        toggle(hostOf(dialog), c);
        return true;
    }
    if (id == IDOK || id == IDCANCEL) {
        EndDialog(dialog, id);
        return true;
    }
    for (int b = resetButton; b <= defaultButton; ++b) {
        if (id != BUTTON_IDS[b]) continue;
        press(dialog, b);
        return true;
    }
    return false;
}

INT_PTR CALLBACK dialogProcedure(HWND dialog, UINT message, WPARAM w, LPARAM l) {
    switch (message) {
        case WM_INITDIALOG:
            SetWindowLongPtrW(dialog, DWLP_USER, l);
            fillChoices(dialog);
            showSettings(dialog);
            return TRUE;
        case WM_COMMAND: {
            bool done = false;
            try {
                done = command(dialog, LOWORD(w), HIWORD(w));
            } catch (...) {
                // A file that did not read or write: the error alert, and the
                // configuration as it was.
                done = true;
                reinterpret_cast<Session*>(GetWindowLongPtrW(dialog, DWLP_USER))
                    ->editor.reportFailure(std::current_exception());
            }
            if (done && IsWindow(dialog)) showSettings(dialog);
            return done ? TRUE : FALSE;
        }
        default: return FALSE;
    }
}

HINSTANCE thisModule() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&thisModule), &module);
    return module;
}

}  // namespace

void Win32MidiConfigDialog::show(Fomal::EditorServices& editor) {
    const std::string opened = editor.host().midiConfigText();
    Session session{editor};
    const DialogTemplate t = makeTemplate();
    const INT_PTR answer =
        DialogBoxIndirectParamW(thisModule(), t.get(), owner_, &dialogProcedure, reinterpret_cast<LPARAM>(&session));
    if (answer == -1) throw Exception("Could not open the MIDI configuration dialog");
    // Closed first, so that a text that no longer reads shows its alert
    // over the panel.
    if (answer != IDOK) restore(editor.host(), opened);
}
