// The constants an editor reads from the text resource "globals.txt" when
// it opens. A constant kept per platform is read by the key "windows", the
// side whose conventions this interface follows everywhere.
#pragma once

#include <string>

#include "fomal/HintWindow.h"

namespace Fomal {

struct EditorConstants {
    HintWindowStyle hintWindow;
    int undoHistory = 100;
    int mouseClickVelocity = 100;
    std::string defaultProgramsPath = "..\\Tendrane Patches\\";
    std::string documentationPath = "..\\Tendrane Docs\\";
};

// Fails with the reader's message, or "Could not load text resource".
EditorConstants readEditorConstants();

}  // namespace Fomal
