// The plant on the main panel through `tendrane panel`: patches at rest, a
// random seed, a branch dragged and being dragged, a planting while the
// seed falls and after it landed, notes held, and a suspended plant fully
// decayed, each pixel for pixel as stored within the plant's disc
// (TENDRANE_WRITE_GOLDEN=1 replaces the stored pictures, only after looking
// at them).
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "pixels/Png.h"

namespace {

const std::filesystem::path GOLDEN = std::filesystem::path(TENDRANE_SOURCE_DIR) / "tests/golden/panel";

// The plant's middle on the panel, and the disc within its radius of 118
// that holds nearly all it draws (the rotation handle reaches a little
// beyond), inside the key ring.
constexpr int PLANT_X = 192, PLANT_Y = 264, PLANT_DISC = 113;

std::vector<std::uint8_t> readFile(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::vector<std::uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

std::filesystem::path tempPath(const std::string& name) {
    return std::filesystem::temp_directory_path() /
           ("tendrane-plant-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) + "-" + name);
}

struct PanelRun {
    int status = -1;
    std::string out, err;
};

// The main panel after the events, written to `png`.
PanelRun panel(std::vector<std::string> args, const std::string& events, const std::filesystem::path& png) {
    const std::filesystem::path file = tempPath("events.txt");
    std::ofstream(file) << events;
    args.push_back("--events");
    args.push_back(file.string());
    if (!png.empty()) {
        args.push_back("-o");
        args.push_back(png.string());
    }
    PanelRun run;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    run.status = cli::runPanel(args);
    run.err = testing::internal::GetCapturedStderr();
    run.out = testing::internal::GetCapturedStdout();
    std::filesystem::remove(file);
    return run;
}

// Runs the panel and compares its picture with tests/golden/panel/NAME.png.
void expectGolden(const std::string& name, const std::vector<std::string>& args, const std::string& events) {
    const std::filesystem::path png = tempPath(name + ".png");
    const PanelRun run = panel(args, events, png);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "") << name;
    const std::vector<std::uint8_t> made = readFile(png);
    std::filesystem::remove(png);
    ASSERT_FALSE(made.empty()) << name;
    const char* write = std::getenv("TENDRANE_WRITE_GOLDEN");
    if (write != nullptr && std::string(write) == "1")
        std::ofstream(GOLDEN / (name + ".png"), std::ios::binary)
            .write(reinterpret_cast<const char*>(made.data()), std::streamsize(made.size()));
    const std::vector<std::uint8_t> stored = readFile(GOLDEN / (name + ".png"));
    ASSERT_FALSE(stored.empty()) << name;
    const OrlPixels::DecodedPng a = OrlPixels::decodePng(made.data(), made.size());
    const OrlPixels::DecodedPng b = OrlPixels::decodePng(stored.data(), stored.size());
    ASSERT_EQ(a.width, 384);
    ASSERT_EQ(a.height, 512);
    ASSERT_EQ(b.pixels.size(), a.pixels.size()) << name;
    // The pictures are of the whole panel, but only the plant's disc is
    // compared: the views around it (the key ring lit by notes, the
    // sliders) have tests of their own and may change without the plant.
    std::size_t differing = 0, compared = 0;
    for (int y = 0; y < 512; ++y)
        for (int x = 0; x < 384; ++x) {
            const int dx = x - PLANT_X, dy = y - PLANT_Y;
            if (dx * dx + dy * dy > PLANT_DISC * PLANT_DISC) continue;
            const std::size_t i = std::size_t(y) * 384 + std::size_t(x);
            differing += a.pixels[i] != b.pixels[i];
            ++compared;
        }
    EXPECT_GT(compared, 40000u);
    EXPECT_EQ(differing, 0u) << name;
}

// The plant's middle on the panel is (192, 264); at rotation 0 branch 1
// grows straight down, its scale starting 23 px out and 83 px long.
constexpr const char* DRAG_BRANCH_1 = "wait 100\ndrag 192 290 192 340 10\nwait 2000\n";

}  // namespace

TEST(PanelPlantTest, TheInitPatchsPlantStandsSmallAroundTheSeed) {
    expectGolden("plant-init", {}, "wait 100\n");
}

TEST(PanelPlantTest, FactoryPatchesGrowTheirOwnPlants) {
    for (const char* n : {"1", "5", "9"}) expectGolden(std::string("plant-factory-") + n, {"--factory", n}, "wait 100\n");
}

TEST(PanelPlantTest, ARandomSeedWithSomeBranchesTheWheelAndARotation) {
    expectGolden("plant-seed-12345",
                 {"--seed", "12345", "--param", "Branch1=0.8", "--param", "Branch4=0.5", "--param", "Branch7=0.3",
                  "--param", "Branch10=1", "--param", "Rotation=0.1", "--param", "ModWheel=0.3"},
                 "wait 100\n");
}

TEST(PanelPlantTest, ADraggedBranchGrowsAndCarriesTheChosenSeed) {
    expectGolden("plant-dragged", {}, DRAG_BRANCH_1);
}

TEST(PanelPlantTest, ADraggedBranchIsWrittenToThePatch) {
    const PanelRun run = panel({"--print-patch"}, DRAG_BRANCH_1, {});
    ASSERT_EQ(run.status, 0) << run.err;
    // 340 - 264 = 76 px out: (76 - 23) / 83 of the scale.
    EXPECT_NE(run.out.find("Branch1: 63.85542154 %"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Branch2: 0.00000000 %"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Branch12: 0.00000000 %"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("ModWheel: 0.00000000 %"), std::string::npos) << run.out;
}

TEST(PanelPlantTest, OneUndoTakesBackTheWholeDragAndRedoBringsItBack) {
    // The undo button is at { 85, 29, 41, 41 }, redo at { 125, 29, 41, 41 }.
    const PanelRun undone = panel({"--print-patch"}, std::string(DRAG_BRANCH_1) + "click 105 49\nwait 100\n", {});
    ASSERT_EQ(undone.status, 0) << undone.err;
    EXPECT_NE(undone.out.find("Branch1: 0.00000000 %"), std::string::npos) << undone.out;
    const PanelRun redone =
        panel({"--print-patch"}, std::string(DRAG_BRANCH_1) + "click 105 49\nwait 100\nclick 145 49\nwait 100\n", {});
    ASSERT_EQ(redone.status, 0) << redone.err;
    EXPECT_NE(redone.out.find("Branch1: 63.85542154 %"), std::string::npos) << redone.out;
}

TEST(PanelPlantTest, WhileABranchIsDraggedItsGuidesTheRingAndTheHandleShow) {
    expectGolden("plant-dragging", {"--factory", "1"}, "wait 100\ndown 192 290\nmove 192 310\nmove 192 320\nwait 1000\n");
}

TEST(PanelPlantTest, APlantingDropsTheSeedWhileTheOldPlantWithers) {
    // Branch 1 chosen, then the seed button.
    const std::string events = "wait 100\nclick 192 330\nwait 100\nclick 192 264\nwait 200\n";
    expectGolden("plant-planting", {"--factory", "5"}, events);
    expectGolden("plant-planted", {"--factory", "5"}, events + "wait 3000\n");
}

TEST(PanelPlantTest, HeldNotesGlowOnTheirBranches) {
    expectGolden("plant-notes", {"--factory", "9"}, "wait 100\nnote 60 120\nnote 64 110\nnote 67 100\nwait 80\n");
}

TEST(PanelPlantTest, ASuspendedPlantDroopsAndFades) {
    expectGolden("plant-suspended", {"--factory", "5"}, "wait 100\nsuspend\nwait 5000\n");
}
