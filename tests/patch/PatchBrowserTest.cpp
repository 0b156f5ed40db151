// The patch browser: the default folder is made with the factory patches
// in it on first use, the folder follows the patch's file, then the folder
// last chosen, and the list is read again after a save.
#include "patch/PatchBrowser.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "patch/FactoryPatches.h"
#include "patch/PatchFiles.h"
#include "patch/Preferences.h"

namespace fs = std::filesystem;

namespace {

// A folder of the test's own, with preferences of its own: tests that run
// at the same time in other processes choose folders too.
struct Place {
    fs::path dir;
    std::optional<std::string> savedConfig;
    Place() {
        dir = fs::temp_directory_path() /
              ("tendrane-browser-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
        fs::create_directories(dir / "config");
        if (const char* was = std::getenv("XDG_CONFIG_HOME")) savedConfig = was;
        setenv("XDG_CONFIG_HOME", (dir / "config").c_str(), 1);
    }
    ~Place() {
        if (savedConfig) setenv("XDG_CONFIG_HOME", savedConfig->c_str(), 1);
        else unsetenv("XDG_CONFIG_HOME");
        fs::remove_all(dir);
    }
    OrlFiles::Path path(const std::string& rel) const { return OrlFiles::Path::parse((dir / rel).string()); }
};

}  // namespace

TEST(PatchBrowserTest, TheDefaultFolderIsMadeWithTheFactoryPatchesOnFirstUse) {
    Place p;
    PatchBrowser browser(p.path("data/Tendrane/Patches"));
    NorvelleProgram init;
    EXPECT_EQ(browser.folderFor(init), p.path("data/Tendrane/Patches"));
    const std::vector<OrlFiles::Path>& list = browser.list(browser.folderFor(init));
    ASSERT_EQ(list.size(), std::size_t(FACTORY_PATCH_COUNT));
    // Each file is its factory patch, named after it.
    for (int i = 0; i < FACTORY_PATCH_COUNT; ++i) {
        const NorvelleProgram factory = factoryProgram(i);
        const std::u16string name = factory.getName();
        const NorvelleProgram file =
            readPatchFile(p.path("data/Tendrane/Patches/" + std::string(name.begin(), name.end()) + ".tdrn"));
        EXPECT_EQ(file.seed, factory.seed) << i;
    }
    // A folder the user emptied stays empty: the patches come only once.
    for (const OrlFiles::Path& f : std::vector<OrlFiles::Path>(list)) fs::remove(f.utf8());
    EXPECT_TRUE(browser.list(browser.folderFor(init), true).empty());
}

TEST(PatchBrowserTest, AnEmptyFolderGivesAnEmptyList) {
    Place p;
    fs::create_directories(p.dir / "empty");
    PatchBrowser browser(p.path("default"));
    EXPECT_TRUE(browser.list(p.path("empty")).empty());
}

TEST(PatchBrowserTest, TheFolderFollowsThePatchThenTheLastChoice) {
    Place p;
    fs::create_directories(p.dir / "mine");
    fs::create_directories(p.dir / "chosen");
    PatchBrowser browser(p.path("default"));
    NorvelleProgram record;
    record.path = p.path("mine/Deep Sea.tdrn").text();
    EXPECT_EQ(browser.folderFor(record), p.path("mine"));
    record.path.clear();
    browser.chose(p.path("chosen/x.tdrn"));
    EXPECT_EQ(browser.folderFor(record), p.path("chosen"));
    // A chosen folder that is gone leaves the default.
    fs::remove_all(p.dir / "chosen");
    EXPECT_EQ(browser.folderFor(record), p.path("default"));
}

TEST(PatchBrowserTest, StepsGoThroughTheFolderAndASaveIsSeen) {
    Place p;
    fs::create_directories(p.dir / "set");
    for (const char* name : {"a.tdrn", "b.tdrn"}) savePatchFile(factoryProgram(1), p.path(std::string("set/") + name));
    PatchBrowser browser(p.path("default"));
    NorvelleProgram record = readPatchFile(p.path("set/a.tdrn"));
    EXPECT_EQ(browser.step(record, 1), p.path("set/b.tdrn"));
    EXPECT_FALSE(browser.step(record, -1));
    record = readPatchFile(p.path("set/b.tdrn"));
    EXPECT_FALSE(browser.step(record, 1));
    // A patch without a file goes nowhere.
    EXPECT_FALSE(browser.step(NorvelleProgram(), 1));
    // A file saved after the last is next once the save is told.
    savePatchFile(record, p.path("set/c.tdrn"));
    EXPECT_FALSE(browser.step(record, 1));  // still the cached list
    browser.saved(p.path("set/c.tdrn"));
    EXPECT_EQ(browser.step(record, 1), p.path("set/c.tdrn"));
}
