// The MIDI configuration dialog of the Windows editor, driven as a user
// would: a Windows host opens the editor, picks "MIDI Config..." in the
// main menu (the system's popup menu) by its access key, and a second
// thread finds the system's dialog that opens, reads its controls in
// order, chooses an input channel in its drop-down list, checks "Enable
// MIDI program changes" and presses OK; the instance's configuration (read
// from the host's chunk) changes at once and stays. Make Default stores it
// for new instances and says so in a message box owned by the dialog. The
// second time the dialog shows what is stored; a change, Reset and Cancel
// leave the configuration as it was when the dialog opened.
//
//   editor_midi_config PLUGIN
//
// Every failed check prints a line starting with "FAILED"; the exit status
// is the count of them, or 77 when the plug-in says it has no editor.
#include <windows.h>

#include <atomic>
#include <cstdio>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "patch/Chunk.h"
#include "patch/FactoryPatches.h"
#include "patch/MidiConfigText.h"
#include "patch/Preferences.h"
#include "tests/host/PluginHost.h"
#include "tests/host/windows/WinEditorHost.h"
#include "tests/host/windows/WinTestSupport.h"

using namespace wintest;
using testhost::Instance;

namespace {

// The controls' numbers in the dialog, as the dialog's template has them.
constexpr int INPUT_CHANNEL = 1101, PITCH_WHEEL = 1103, VELOCITY_CURVE = 1104;
constexpr int PROGRAM_CHANGES = 1201;
constexpr int RESET = 1001, MAKE_DEFAULT = 1004;

// The instance's MIDI configuration, as the host's chunk of the bank keeps it.
MidiConfigRecord storedConfig(Instance& in) {
    void* data = nullptr;
    const VstIntPtr size = in.call(effGetChunk, 0, 0, &data);
    if (size <= 0 || data == nullptr) {
        check(false, "the plug-in gave no chunk");
        return {};
    }
    try {
        const ChunkContents contents = inspectChunk(static_cast<const uint8_t*>(data), std::size_t(size));
        return readMidiConfig(u"", contents.midiConfigText);
    } catch (const std::exception& e) {
        check(false, "the chunk does not read: %s", e.what());
        return {};
    }
}

// The dialog's controls in order (the order the tab key visits them), as
// their texts: a drop-down list's text is the value it shows.
std::vector<std::wstring> controlTexts(HWND dialog) {
    std::vector<std::wstring> texts;
    for (HWND c = GetWindow(dialog, GW_CHILD); c != nullptr; c = GetWindow(c, GW_HWNDNEXT))
        texts.push_back(windowText(c));
    return texts;
}

void checkTexts(HWND dialog, const std::vector<std::wstring>& expected, const char* when) {
    const std::vector<std::wstring> shown = controlTexts(dialog);
    std::string line;
    for (const std::wstring& t : shown) line += (line.empty() ? "" : " | ") + utf8(t);
    std::printf("dialog %s: %s\n", when, line.c_str());
    check(shown == expected, "the dialog %s shows other controls or texts than expected", when);
}

std::vector<std::wstring> expectedTexts(const wchar_t* input, const wchar_t* wheel, const wchar_t* curve) {
    return {L"Input channel:", input, L"Output channel:", L"1", L"Pitch wheel:", wheel, L"Velocity curve:", curve,
            L"&Enable MIDI program changes", L"Select &branches with MIDI notes",
            L"(There are 0 MIDI controllers reassigned in this configuration.)", L"&Reset", L"&Load...", L"&Save...",
            L"&Make Default", L"&Cancel", L"OK"};
}

// Sent to the dialog's thread and waited for, as a user's input is: the
// dialog's own loop takes it.
LRESULT send(HWND w, UINT message, WPARAM wp, LPARAM lp) {
    DWORD_PTR result = 0;
    if (!SendMessageTimeoutW(w, message, wp, lp, SMTO_NORMAL, 5000, &result)) check(false, "message %#x timed out", message);
    return LRESULT(result);
}

// A choice in a drop-down list, told to the dialog as the list tells it.
void choose(HWND dialog, int id, int position) {
    HWND list = GetDlgItem(dialog, id);
    send(list, CB_SETCURSEL, WPARAM(position), 0);
    send(dialog, WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE), reinterpret_cast<LPARAM>(list));
}

void press(HWND dialog, int id) { send(GetDlgItem(dialog, id), BM_CLICK, 0, 0); }

struct Found {
    HWND except;
    HWND box;
};

BOOL CALLBACK findBox(HWND hwnd, LPARAM found) {
    auto* f = reinterpret_cast<Found*>(found);
    if (hwnd == f->except || !IsWindowVisible(hwnd) || windowClass(hwnd) != L"#32770") return TRUE;
    f->box = hwnd;
    return FALSE;
}

// The texts of a message box's static controls, joined.
std::wstring boxText(HWND box) {
    std::wstring text;
    for (HWND c = GetWindow(box, GW_CHILD); c != nullptr; c = GetWindow(c, GW_HWNDNEXT))
        if (windowClass(c) == L"Static") text += windowText(c);
    return text;
}

// Make Default: the button's press runs a message box inside the dialog's
// loop, so it is posted; the box is found among the dialog thread's windows,
// read and closed.
void makeDefault(HWND dialog) {
    PostMessageW(GetDlgItem(dialog, MAKE_DEFAULT), BM_CLICK, 0, 0);
    Found found{dialog, nullptr};
    const ULONGLONG end = GetTickCount64() + 10000;
    while (found.box == nullptr && GetTickCount64() < end) {
        Sleep(20);
        EnumThreadWindows(GetWindowThreadProcessId(dialog, nullptr), &findBox, reinterpret_cast<LPARAM>(&found));
    }
    check(found.box != nullptr, "Make Default showed no message box");
    if (found.box == nullptr) return;
    const std::wstring text = boxText(found.box);
    std::printf("Make Default: \"%s\" in a box titled \"%s\"\n", utf8(text).c_str(),
                utf8(windowText(found.box)).c_str());
    check(text == L"The current MIDI configuration has been made default.", "Make Default's box says something else");
    check(windowText(found.box) == L"Tendrane", "Make Default's box has another title");
    check(GetWindow(found.box, GW_OWNER) == dialog, "Make Default's box is not owned by the dialog");
    PostMessageW(found.box, WM_COMMAND, IDOK, 0);
    const ULONGLONG gone = GetTickCount64() + 10000;
    while (IsWindow(found.box) && GetTickCount64() < gone) Sleep(20);
    check(!IsWindow(found.box), "Make Default's box did not close");
}

// The process's menus and dialogs, watched: the main menu gets the access
// key of "MIDI Config...", and the dialog that opens is handed to the
// test's steps, once. Anything else is a failure.
class DialogDriver {
public:
    // The next menu gets 'm'; the dialog that opens then gets `steps`.
    void expect(std::function<void(HWND)> steps) {
        std::lock_guard<std::mutex> hold(lock_);
        steps_ = std::move(steps);
        menuAnswered_.store(false);
        done_.store(false);
    }
    bool menuAnswered() const { return menuAnswered_.load(); }
    bool done() const { return done_.load(); }

private:
    void menu(HWND hwnd) {
        std::lock_guard<std::mutex> hold(lock_);
        if (steps_ && !menuAnswered_.load()) {
            PostMessageW(hwnd, WM_CHAR, L'm', 0);
            menuAnswered_.store(true);
        } else {
            check(false, "a popup menu opened that nothing asked for");
            PostMessageW(hwnd, WM_KEYDOWN, VK_ESCAPE, 0);
        }
    }

    void dialog(HWND hwnd) {
        std::function<void(HWND)> steps;
        {
            std::lock_guard<std::mutex> hold(lock_);
            steps.swap(steps_);
        }
        if (steps && windowText(hwnd) == L"MIDI Config") {
            steps(hwnd);
            done_.store(true);
        } else {
            check(false, "a dialog opened: %s", utf8(windowText(hwnd)).c_str());
            PostMessageW(hwnd, WM_COMMAND, IDCANCEL, 0);
        }
    }

    std::mutex lock_;
    std::function<void(HWND)> steps_;  // under lock_
    std::atomic<bool> menuAnswered_{false}, done_{false};
    WindowWatch watch_{[this](HWND hwnd) { menu(hwnd); }, [this](HWND hwnd) { dialog(hwnd); }};
};

// Opens the dialog from the main menu and lets the driver take it through
// `steps`.
void throughTheDialog(Instance& in, HWND editor, DialogDriver& driver, std::function<void(HWND)> steps) {
    driver.expect(std::move(steps));
    click(in, editor, MENU_X, MENU_Y);
    pumpFor(&in, 20000, [&] { return driver.done(); });
    check(driver.menuAnswered(), "the main menu did not open as a popup menu");
    check(driver.done(), "no MIDI configuration dialog of the system's opened from the main menu");
    pumpFor(&in, 200);
}

void okKeeps(Instance& in, HWND editor, DialogDriver& driver) {
    const MidiConfigRecord before = storedConfig(in);
    check(before.inputMidiChannel == -1 && !before.supportMidiProgramChange,
          "the instance does not start with the default configuration");
    throughTheDialog(in, editor, driver, [&](HWND dialog) {
        check(GetWindow(dialog, GW_OWNER) == GetAncestor(editor, GA_ROOT),
              "the dialog is not owned by the host's window that holds the editor");
        checkTexts(dialog, expectedTexts(L"none", L"12", L"standard"), "as it opened");
        choose(dialog, INPUT_CHANNEL, 4);  // channel 4
        press(dialog, PROGRAM_CHANGES);
        // The instance has heard it before the dialog closes.
        const MidiConfigRecord meanwhile = storedConfig(in);
        std::printf("while open: input channel %d, program changes %d\n", meanwhile.inputMidiChannel,
                    int(meanwhile.supportMidiProgramChange));
        check(meanwhile.inputMidiChannel == 3, "the input channel is %d while the dialog is open, not 3",
              meanwhile.inputMidiChannel);
        check(meanwhile.supportMidiProgramChange, "program changes are off while the dialog is open");
        check(IsDlgButtonChecked(dialog, PROGRAM_CHANGES) == BST_CHECKED, "the check box does not show its check");
        makeDefault(dialog);
        press(dialog, IDOK);
    });
    const MidiConfigRecord after = storedConfig(in);
    std::printf("after OK: input channel %d, program changes %d, pitch wheel %d\n", after.inputMidiChannel,
                int(after.supportMidiProgramChange), after.pitchWheelRange);
    check(after.inputMidiChannel == 3, "OK left the input channel at %d, not 3", after.inputMidiChannel);
    check(after.supportMidiProgramChange, "OK did not keep program changes on");
    check(after.pitchWheelRange == 12 && after.velocityCurve == 1, "OK changed what nobody touched");
    // What new instances start with now.
    const std::string stored = Preferences::read("defaultMidiConfig").value_or("");
    const MidiConfigRecord made = readMidiConfig(u"", stored);
    check(made.inputMidiChannel == 3 && made.supportMidiProgramChange,
          "the default stored by Make Default is not the configuration: \"%s\"", stored.c_str());
}

void cancelPutsBack(Instance& in, HWND editor, DialogDriver& driver) {
    const std::string before = writeMidiConfig(storedConfig(in), false);
    throughTheDialog(in, editor, driver, [&](HWND dialog) {
        checkTexts(dialog, expectedTexts(L"4", L"12", L"standard"), "opened again");
        check(IsDlgButtonChecked(dialog, PROGRAM_CHANGES) == BST_CHECKED, "the check box does not show what is stored");
        choose(dialog, PITCH_WHEEL, 2);
        choose(dialog, VELOCITY_CURVE, 2);
        const MidiConfigRecord meanwhile = storedConfig(in);
        check(meanwhile.pitchWheelRange == 2 && meanwhile.velocityCurve == 2,
              "pitch wheel %d and velocity curve %d while open, not 2 and 2", meanwhile.pitchWheelRange,
              meanwhile.velocityCurve);
        press(dialog, RESET);
        checkTexts(dialog, expectedTexts(L"none", L"12", L"standard"), "after Reset");
        check(storedConfig(in).inputMidiChannel == -1, "Reset did not reach the instance");
        press(dialog, IDCANCEL);
    });
    const std::string after = writeMidiConfig(storedConfig(in), false);
    std::printf("after Cancel: the configuration is %s\n", after == before ? "what it was" : "not what it was");
    check(after == before, "Cancel did not put back the configuration:\n%s\ninstead of\n%s", after.c_str(),
          before.c_str());
}

}  // namespace

int main(int argc, char** argv) {
    if (!calledWith(argc, 1, "editor_midi_config PLUGIN")) return 2;
    HWND host = startEditorHost(argv[1]);
    if (host == nullptr) return 1;
    {
        auto in = instanceWith(factoryProgram(0));
        if (const int status = editorMissing(*in)) return status;
        check(in->call(effEditOpen, 0, 0, host) == 1, "effEditOpen failed");
        pumpFor(in.get(), 300);
        const HWND editor = editorWindow(host);
        check(editor != nullptr, "no editor window");
        if (editor != nullptr) {
            DialogDriver driver;
            okKeeps(*in, editor, driver);
            cancelPutsBack(*in, editor, driver);
        }
        in->call(effEditClose);
        pumpFor(nullptr, 50);
    }
    DestroyWindow(host);
    if (failedChecks() == 0) std::printf("passed: the MIDI configuration dialog\n");
    return failedChecks();
}
