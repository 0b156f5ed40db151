// Patch files: a loaded patch is named after its file, a saved one is
// written with Windows line ends and reads back the same, the list of a
// folder holds its patch files in path order, and the steps stop at the
// ends.
#include "patch/PatchFiles.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "patch/FactoryPatches.h"
#include "patch/ProgramText.h"

namespace fs = std::filesystem;

namespace {

struct Folder {
    fs::path dir;
    Folder() {
        dir = fs::temp_directory_path() /
              ("tendrane-patchfiles-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
        fs::create_directories(dir);
    }
    ~Folder() { fs::remove_all(dir); }
    OrlFiles::Path path(const std::string& name) const { return OrlFiles::Path::parse((dir / name).string()); }
    void write(const std::string& name, const std::string& text) const {
        std::ofstream(dir / name, std::ios::binary) << text;
    }
    std::string read(const std::string& name) const {
        std::ifstream in(dir / name, std::ios::binary);
        return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    }
};

}  // namespace

TEST(PatchFilesTest, ALoadedPatchIsNamedAfterItsFileWhateverItsNameSays) {
    Folder f;
    NorvelleProgram p = factoryProgram(3);
    p.setName(u"Something Else");
    f.write("Deep Sea.tdrn", writeProgramText(p, true));
    const NorvelleProgram loaded = readPatchFile(f.path("Deep Sea.tdrn"));
    EXPECT_EQ(loaded.getName(), u"Deep Sea");
    EXPECT_EQ(loaded.path, f.path("Deep Sea.tdrn").text());
    EXPECT_EQ(loaded.seed, p.seed);
    EXPECT_FALSE(loaded.modified);
}

TEST(PatchFilesTest, SettingThePathKeepsModifiedAndTakesAStampOnlyOnChange) {
    Folder f;
    NorvelleProgram p = factoryProgram(0);
    p.modified = true;
    const std::uint32_t before = p.stamp();
    setProgramPath(p, f.path("Low Drone.tdrn"));
    EXPECT_EQ(p.getName(), u"Low Drone");
    EXPECT_TRUE(p.modified);
    const std::uint32_t renamed = p.stamp();
    EXPECT_NE(renamed, before);
    setProgramPath(p, f.path("Low Drone.tdrn"));
    EXPECT_EQ(p.stamp(), renamed);
}

TEST(PatchFilesTest, AFileThatDoesNotParseFailsAndAMissingOneToo) {
    Folder f;
    f.write("Broken.tdrn", "TendranePatch: { Version: 99 }");
    EXPECT_THROW(readPatchFile(f.path("Broken.tdrn")), std::exception);
    EXPECT_THROW(readPatchFile(f.path("Missing.tdrn")), std::exception);
}

TEST(PatchFilesTest, SavingWritesTheFileFormWithCrLfAndReadsBackTheSame) {
    Folder f;
    NorvelleProgram p = factoryProgram(5);
    p.modified = true;
    const NorvelleProgram saved = savePatchFile(p, f.path("Bell Tower.tdrn"));
    EXPECT_FALSE(saved.modified);
    EXPECT_EQ(saved.getName(), u"Bell Tower");
    const std::string text = f.read("Bell Tower.tdrn");
    EXPECT_EQ(text, withCrLf(writeProgramText(saved, true)));
    EXPECT_NE(text.find("\r\n"), std::string::npos);
    // No line end is bare.
    for (std::size_t i = text.find('\n'); i != std::string::npos; i = text.find('\n', i + 1)) ASSERT_EQ(text[i - 1], '\r');
    const NorvelleProgram again = readPatchFile(f.path("Bell Tower.tdrn"));
    EXPECT_EQ(writeProgramText(again, true), writeProgramText(saved, true));
    // No temporary file is left beside it.
    EXPECT_EQ(std::distance(fs::directory_iterator(f.dir), fs::directory_iterator()), 1);
}

TEST(PatchFilesTest, TheListHoldsPatchFilesInPathOrderOnly) {
    Folder f;
    for (const char* name : {"b.tdrn", "A.tdrn", "c.TDRN", "notes.txt", "d.tdrn.bak"}) f.write(name, "x");
    fs::create_directories(f.dir / "folder.tdrn");
    const std::vector<OrlFiles::Path> list = listPatchFiles(f.path(""));
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0], f.path("A.tdrn"));
    EXPECT_EQ(list[1], f.path("b.tdrn"));
    EXPECT_EQ(list[2], f.path("c.TDRN"));
    EXPECT_TRUE(listPatchFiles(f.path("no such folder")).empty());
}

TEST(PatchFilesTest, StepsStopAtTheEndsAndOutsideTheList) {
    Folder f;
    const std::vector<OrlFiles::Path> list = {f.path("a.tdrn"), f.path("b.tdrn"), f.path("c.tdrn")};
    EXPECT_EQ(stepPatchFile(list, f.path("b.tdrn"), 1), f.path("c.tdrn"));
    EXPECT_EQ(stepPatchFile(list, f.path("b.tdrn"), -1), f.path("a.tdrn"));
    EXPECT_FALSE(stepPatchFile(list, f.path("c.tdrn"), 1));
    EXPECT_FALSE(stepPatchFile(list, f.path("a.tdrn"), -1));
    EXPECT_FALSE(stepPatchFile(list, f.path("z.tdrn"), 1));
    EXPECT_FALSE(stepPatchFile({}, f.path("a.tdrn"), 1));
}

TEST(PatchFilesTest, PatchNamesBecomeFileNames) {
    EXPECT_EQ(patchFileName(u"Radix Gravis"), u"Radix Gravis");
    EXPECT_EQ(patchFileName(u"a/b:c*d?"), u"a b c d");
    EXPECT_EQ(patchFileName(u"  ."), u"Untitled");
    EXPECT_EQ(patchFileName(u""), u"Untitled");
}
