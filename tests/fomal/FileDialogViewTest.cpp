// The open and save dialog the panel draws: folders before files, only the
// files of the type shown, folders entered by a click, a file taken by a
// second click or return, a name typed for saving, a question before a
// file is replaced, and nothing at all when cancelled.
#include "fomal/FileDialogView.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "tests/fomal/ViewTestSupport.h"

namespace fs = std::filesystem;

namespace {

struct Files {
    fs::path dir;
    Files() {
        dir = fs::temp_directory_path() /
              ("tendrane-dialog-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
        fs::create_directories(dir / "Basses");
        fs::create_directories(dir / ".hidden");
        for (const char* name : {"Deep Sea.tdrn", "Bell.tdrn", "notes.txt"}) std::ofstream(dir / name) << "x";
        std::ofstream(dir / "Basses" / "Sub.tdrn") << "x";
    }
    ~Files() { fs::remove_all(dir); }
};

struct Dialog {
    viewtest::Editor editor{"views: { }"};
    std::vector<std::string> chosen;

    Fomal::FileDialogView& open(const Files& files, bool save, std::string name = {}) {
        Fomal::FileDialogRequest request;
        request.save = save;
        request.title = save ? "Save Patch As" : "Open Patch";
        request.folder = files.dir.string();
        request.fileName = std::move(name);
        request.filters = {Fomal::FileFilter{"Tendrane Patch", {"*.tdrn"}}};
        request.extension = "tdrn";
        editor.core.actions().dialogs().showFileDialog(request, [this](const std::string& path) { chosen.push_back(path); });
        return *view();
    }
    Fomal::FileDialogView* view() {
        return editor.core.overlay().empty() ? nullptr
                                             : dynamic_cast<Fomal::FileDialogView*>(editor.core.overlay().back().get());
    }
    void key(const std::string& name, std::uint32_t character = 0) { editor.core.keyDown({name, character, 0}); }
};

}  // namespace

TEST(FileDialogViewTest, ListsFoldersThenFilesOfTheTypeShownWithoutHiddenOnes) {
    Files files;
    Dialog d;
    Fomal::FileDialogView& v = d.open(files, false);
    EXPECT_EQ(v.entryNames(), (std::vector<std::string>{"..", "Basses/", "Bell.tdrn", "Deep Sea.tdrn"}));
    // All files: the text file shows too.
    ASSERT_TRUE(v.choose("All Files (*.*)"));
    EXPECT_EQ(v.entryNames(), (std::vector<std::string>{"..", "Basses/", "Bell.tdrn", "Deep Sea.tdrn", "notes.txt"}));
}

TEST(FileDialogViewTest, AFolderIsEnteredAndAFileTakenBySecondChoice) {
    Files files;
    Dialog d;
    Fomal::FileDialogView& v = d.open(files, false);
    ASSERT_TRUE(v.choose("Basses"));
    EXPECT_EQ(v.entryNames(), (std::vector<std::string>{"..", "Sub.tdrn"}));
    ASSERT_TRUE(v.choose(".."));
    ASSERT_TRUE(v.choose("Deep Sea.tdrn"));
    EXPECT_TRUE(d.chosen.empty());  // selected only
    ASSERT_TRUE(v.choose("Deep Sea.tdrn"));
    ASSERT_EQ(d.chosen.size(), 1u);
    EXPECT_EQ(d.chosen[0], (files.dir / "Deep Sea.tdrn").string());
    EXPECT_EQ(d.view(), nullptr);
}

TEST(FileDialogViewTest, KeysMoveTheSelectionAndReturnTakesIt) {
    Files files;
    Dialog d;
    d.open(files, false);
    d.key("down");  // ..
    d.key("down");  // Basses/
    d.key("down");  // Bell.tdrn
    d.key("return");
    ASSERT_EQ(d.chosen.size(), 1u);
    EXPECT_EQ(d.chosen[0], (files.dir / "Bell.tdrn").string());
}

TEST(FileDialogViewTest, CancelAndEscapeChooseNothing) {
    Files files;
    Dialog d;
    ASSERT_TRUE(d.open(files, false).choose("Cancel"));
    EXPECT_EQ(d.view(), nullptr);
    d.open(files, true, "Mine.tdrn");
    d.key("escape");
    EXPECT_EQ(d.view(), nullptr);
    EXPECT_TRUE(d.chosen.empty());
    EXPECT_FALSE(fs::exists(files.dir / "Mine.tdrn"));
}

TEST(FileDialogViewTest, SavingTakesTheTypedNameWithItsExtension) {
    Files files;
    Dialog d;
    Fomal::FileDialogView& v = d.open(files, true, "Radix.tdrn");
    EXPECT_EQ(v.fileName(), "Radix.tdrn");
    for (int i = 0; i < 10; ++i) d.key("backspace");
    for (char c : std::string("Low Pad")) d.key(c == ' ' ? "space" : std::string(1, c), std::uint32_t(c));
    EXPECT_EQ(v.fileName(), "Low Pad");
    ASSERT_TRUE(v.choose("Save"));
    ASSERT_EQ(d.chosen.size(), 1u);
    EXPECT_EQ(d.chosen[0], (files.dir / "Low Pad.tdrn").string());
}

TEST(FileDialogViewTest, ReplacingAFileIsAskedFirst) {
    Files files;
    Dialog d;
    Fomal::FileDialogView& v = d.open(files, true, "Bell.tdrn");
    ASSERT_TRUE(v.choose("Save"));
    EXPECT_TRUE(d.chosen.empty());
    EXPECT_EQ(v.status(), "\"Bell.tdrn\" exists. Replace it?");
    ASSERT_TRUE(v.choose("Replace"));
    ASSERT_EQ(d.chosen.size(), 1u);
    EXPECT_EQ(d.chosen[0], (files.dir / "Bell.tdrn").string());
}

TEST(FileDialogViewTest, ANameWithASlashIsRefused) {
    Files files;
    Dialog d;
    Fomal::FileDialogView& v = d.open(files, true, "a/b");
    ASSERT_TRUE(v.choose("Save"));
    EXPECT_TRUE(d.chosen.empty());
    EXPECT_EQ(v.status(), "A file name can't contain \"/\".");
}

TEST(FileDialogViewTest, AFolderThatIsGoneOpensTheNearestAbove) {
    Files files;
    Dialog d;
    Fomal::FileDialogRequest request;
    request.title = "Open Patch";
    request.folder = (files.dir / "gone" / "deeper").string();
    d.editor.core.actions().dialogs().showFileDialog(request, [](const std::string&) {});
    ASSERT_NE(d.view(), nullptr);
    EXPECT_EQ(d.view()->folder().utf8(), files.dir.string());
}

TEST(FileDialogViewTest, FilterTitlesAndPatterns) {
    EXPECT_EQ(Fomal::filterTitle({"Tendrane Patch", {"*.tdrn"}}), "Tendrane Patch (*.tdrn)");
    EXPECT_EQ(Fomal::filterTitle({"Two", {"*.a", "*.b"}}), "Two (*.a; *.b)");
    EXPECT_EQ(Fomal::filterTitle(Fomal::allFilesFilter()), "All Files (*.*)");
    EXPECT_TRUE(Fomal::matchesPattern("Deep.TDRN", "*.tdrn"));
    EXPECT_FALSE(Fomal::matchesPattern("tdrn", "*.tdrn"));
    EXPECT_FALSE(Fomal::matchesPattern("a.tdrn.bak", "*.tdrn"));
    EXPECT_TRUE(Fomal::matchesPattern("anything", "*.*"));
}
