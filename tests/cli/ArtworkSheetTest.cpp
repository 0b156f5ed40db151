#include "cli/ArtworkSheet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "cli/Command.h"
#include "pixels/Png.h"

namespace {

// Every image the panel's layouts name.
const char* const PANEL_IMAGES[] = {
    "BGOverlay", "BottomSlider", "BottomSliderTrack", "CCLabelBackgrounds", "CCPlantBackgrounds",
    "CCRotationBackgrounds", "CCWheelBackgrounds", "CloseCross", "DisabledLeftArrow", "DisabledRightArrow",
    "Display", "DisplayLights", "DNAButtonFilm", "GreenKnob", "HelpButtonFilm", "icoMenuBtn", "icoRedoBtn",
    "icoRedoBtnDis", "icoUndoBtn", "icoUndoBtnDis", "KeyRingFilm", "leftArrow", "LeftDisplayButtonDown",
    "MIDILabelCharacters", "miniSeed", "NavClose", "NavCloseDisabled", "NavNext", "NavNextDisabled", "NavPrevious",
    "NavPreviousDisabled", "rightArrow", "RightDisplayButtonDown", "RoundButtonFilm", "RoundButtonFilmDis", "seed",
    "WhiteCloseCross", "WhiteKnobDark", "WhiteKnobLight", "AboutBoxOverlay"};

const cli::SheetEntry* find(const cli::ArtworkSheet& s, const std::string& name) {
    for (const cli::SheetEntry& e : s.images)
        if (e.name == name) return &e;
    return nullptr;
}

}  // namespace

TEST(ArtworkSheetTest, EveryImageOfThePanelIsOnTheSheetWithItsFrames) {
    const cli::ArtworkSheet sheet = cli::drawArtworkSheet();
    EXPECT_EQ(sheet.images.size(), std::size(PANEL_IMAGES));
    for (const char* name : PANEL_IMAGES) EXPECT_NE(find(sheet, name), nullptr) << name;
    // Films as the layouts cut them.
    ASSERT_NE(find(sheet, "KeyRingFilm"), nullptr);
    EXPECT_EQ(find(sheet, "KeyRingFilm")->frames, 12);
    EXPECT_EQ(find(sheet, "KeyRingFilm")->width, 300);
    EXPECT_EQ(find(sheet, "RoundButtonFilm")->frames, 2);
    EXPECT_EQ(find(sheet, "RoundButtonFilm")->width, 41);
    EXPECT_EQ(find(sheet, "DNAButtonFilm")->frames, 4);
    EXPECT_EQ(find(sheet, "MIDILabelCharacters")->frames, 20);
    EXPECT_EQ(find(sheet, "CCPlantBackgrounds")->width, 110);
    EXPECT_EQ(find(sheet, "BGOverlay")->width, 384);
    EXPECT_EQ(find(sheet, "BGOverlay")->height, 512);
    EXPECT_EQ(sheet.fonts.size(), 8u);
    EXPECT_GT(sheet.height, 512);
    EXPECT_EQ(sheet.pixels.size(), std::size_t(sheet.width) * std::size_t(sheet.height));
}

TEST(ArtworkSheetTest, TheCommandWritesTheSheet) {
    const std::filesystem::path out = std::filesystem::temp_directory_path() / "tendrane-artwork-sheet-test.png";
    std::filesystem::remove(out);
    ASSERT_EQ(cli::runArtworkSheet({"-o", out.string()}), 0);
    std::ifstream in(out, std::ios::binary);
    const std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const OrlPixels::DecodedPng d = OrlPixels::decodePng(bytes.data(), bytes.size());
    const cli::ArtworkSheet sheet = cli::drawArtworkSheet();
    EXPECT_EQ(d.width, sheet.width);
    EXPECT_EQ(d.height, sheet.height);
    std::filesystem::remove(out);
}
