#include "Images.h"

#include "Palette.h"

namespace artwork {

const std::vector<ImageMaker>& allImages() {
    static const std::vector<ImageMaker> table = {
        {"BGOverlay", drawBGOverlay},
        {"Display", drawDisplay},
        {"DisplayLights", drawDisplayLights},
        {"AboutBoxOverlay", drawAboutBoxOverlay},
        {"WhiteKnobDark", [](int s) { return drawKnob(s, 56, rgba(0xE4, 0xE2, 0xDA), rgba(0x6E, 0x70, 0x68)); }},
        {"WhiteKnobLight", [](int s) { return drawKnob(s, 56, rgba(0xFF, 0xFF, 0xFA), rgba(0xA4, 0xA8, 0x9C)); }},
        {"GreenKnob", [](int s) { return drawKnob(s, 52, rgba(0xB4, 0xF0, 0x6C), rgba(0x2C, 0x62, 0x0C)); }},
        {"BottomSlider", drawBottomSlider},
        {"BottomSliderTrack", drawBottomSliderTrack},
        {"seed", [](int s) { return drawSeed(s, 25); }},
        {"miniSeed", [](int s) { return drawSeed(s, 11); }},
        {"RoundButtonFilm", [](int s) { return drawRoundButtonFilm(s, false); }},
        {"RoundButtonFilmDis", [](int s) { return drawRoundButtonFilm(s, true); }},
        {"DNAButtonFilm", drawDNAButtonFilm},
        {"icoMenuBtn", [](int s) { return drawMenuIcon(s, false); }},
        {"icoUndoBtn", [](int s) { return drawUndoIcon(s, false, false); }},
        {"icoUndoBtnDis", [](int s) { return drawUndoIcon(s, false, true); }},
        {"icoRedoBtn", [](int s) { return drawUndoIcon(s, true, false); }},
        {"icoRedoBtnDis", [](int s) { return drawUndoIcon(s, true, true); }},
        {"leftArrow", [](int s) { return drawArrow(s, false, false); }},
        {"DisabledLeftArrow", [](int s) { return drawArrow(s, false, true); }},
        {"rightArrow", [](int s) { return drawArrow(s, true, false); }},
        {"DisabledRightArrow", [](int s) { return drawArrow(s, true, true); }},
        {"LeftDisplayButtonDown", [](int s) { return drawDisplayButtonFilm(s, false); }},
        {"RightDisplayButtonDown", [](int s) { return drawDisplayButtonFilm(s, true); }},
        {"CloseCross", [](int s) { return drawCloseCross(s, false); }},
        {"WhiteCloseCross", [](int s) { return drawCloseCross(s, true); }},
        {"NavPrevious", [](int s) { return drawNavFilm(s, 0, false); }},
        {"NavPreviousDisabled", [](int s) { return drawNavFilm(s, 0, true); }},
        {"NavNext", [](int s) { return drawNavFilm(s, 1, false); }},
        {"NavNextDisabled", [](int s) { return drawNavFilm(s, 1, true); }},
        {"NavClose", [](int s) { return drawNavFilm(s, 2, false); }},
        {"NavCloseDisabled", [](int s) { return drawNavFilm(s, 2, true); }},
        {"HelpButtonFilm", drawHelpButtonFilm},
        {"KeyRingFilm", drawKeyRingFilm},
        {"CCLabelBackgrounds", [](int s) { return drawCCBackgrounds(s, nullptr, 35); }},
        {"CCPlantBackgrounds", [](int s) { return drawCCBackgrounds(s, "Plant Seed", 110); }},
        {"CCWheelBackgrounds", [](int s) { return drawCCBackgrounds(s, "Mod Wheel", 110); }},
        {"CCRotationBackgrounds", [](int s) { return drawCCBackgrounds(s, "Rotation", 110); }},
        {"MIDILabelCharacters", drawMIDILabelCharacters},
    };
    return table;
}

}  // namespace artwork
