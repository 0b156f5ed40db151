#include "platform/OrlFiles/Exception.h"
#include "platform/OrlFiles/File.h"
#include "platform/OrlFiles/Files.h"

#include "tests/platform/ScratchFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

using namespace OrlFiles;

void put(const std::string& file, const std::string& content) {
    std::ofstream(file, std::ios::binary) << content;
}

template <class F>
std::string failureOf(F&& operation) {
    try {
        operation();
    } catch (const OrlFiles::Exception& e) {
        return e.what();
    }
    return "(no failure)";
}

std::vector<std::u16string> namesOf(const std::vector<FolderEntry>& entries) {
    std::vector<std::u16string> names;
    for (const auto& e : entries)
        names.push_back(e.path.name());
    return names;
}

TEST(ListFolder, FindsTheExtensionWithoutRegardToCaseSortedByName) {
    testsupport::ScratchFolder folder;
    put(folder.file("a.tdrn"), "");
    put(folder.file("B.TDRN"), "");
    put(folder.file("c.txt"), "");
    put(folder.file("tdrn"), "");
    put(folder.file("d.tdrnx"), "");
    std::filesystem::create_directory(folder.file("sub.tdrn"));
    const auto entries = listFolder(Path::parse(folder.path()), u"tdrn");
    EXPECT_EQ(namesOf(entries), (std::vector<std::u16string>{u"B.TDRN", u"a.tdrn", u"sub.tdrn"}));
    EXPECT_FALSE(entries[0].isFolder);
    EXPECT_TRUE(entries[2].isFolder);
    EXPECT_EQ(entries[1].path, Path::parse(folder.file("a.tdrn")));
}

TEST(ListFolder, WithoutAnExtensionListsEverythingButDotAndDotDot) {
    testsupport::ScratchFolder folder;
    put(folder.file("x"), "");
    put(folder.file(".hidden"), "");
    std::filesystem::create_directory(folder.file("y"));
    EXPECT_EQ(namesOf(listFolder(Path::parse(folder.path()))),
              (std::vector<std::u16string>{u".hidden", u"x", u"y"}));
}

TEST(ListFolder, AMissingFolderFails) {
    testsupport::ScratchFolder folder;
    EXPECT_EQ(failureOf([&] { listFolder(Path::parse(folder.file("none")), u"tdrn"); }),
              "Error listing file directory [2 : No such file or directory]");
}

TEST(FileInformation, SizeKindAndTimes) {
    testsupport::ScratchFolder folder;
    put(folder.file("a"), "12345");
    const auto info = fileInfo(Path::parse(folder.file("a")));
    EXPECT_EQ(info.size, 5u);
    EXPECT_FALSE(info.isFolder);
    EXPECT_FALSE(info.readOnly);
    // 2020-01-01 in ticks since 1601; any file made now is later.
    EXPECT_GT(info.lastWrite.ticks, 132223104000000000);
    EXPECT_TRUE(fileInfo(Path::parse(folder.path())).isFolder);
    EXPECT_TRUE(exists(Path::parse(folder.file("a"))));
    EXPECT_FALSE(exists(Path::parse(folder.file("b"))));
    EXPECT_EQ(failureOf([&] { fileInfo(Path::parse(folder.file("b"))); }),
              "Error obtaining file or directory info [2 : No such file or directory]");
}

TEST(FileInformation, CreationTimeIsGivenWhereTheFileSystemKeepsIt) {
    testsupport::ScratchFolder folder;
    put(folder.file("a"), "");
    const auto info = fileInfo(Path::parse(folder.file("a")));
    if (!info.creation)
        GTEST_SKIP() << "this file system keeps no creation time";
    EXPECT_LE(*info.creation, info.lastWrite);
    EXPECT_GT(info.creation->ticks, 132223104000000000);
}

TEST(FolderOperations, CreateRenameAndDelete) {
    testsupport::ScratchFolder folder;
    const Path a = Path::parse(folder.file("a"));
    const Path b = Path::parse(folder.file("b"));
    createFolder(a);
    EXPECT_TRUE(fileInfo(a).isFolder);
    EXPECT_EQ(failureOf([&] { createFolder(a); }), "Error creating directory [17 : File exists]");
    renameOrMove(a, b);
    EXPECT_FALSE(exists(a));
    EXPECT_TRUE(exists(b));
    EXPECT_EQ(failureOf([&] { renameOrMove(a, b); }),
              "Error renaming or moving file or directory [2 : No such file or directory]");
    put(folder.file("b/f"), "x");
    EXPECT_EQ(failureOf([&] { OrlFiles::remove(b); }), "Error deleting file or directory [39 : Directory not empty]");
    OrlFiles::remove(b.child(u"f"));
    OrlFiles::remove(b);
    EXPECT_FALSE(exists(b));
    EXPECT_EQ(failureOf([&] { OrlFiles::remove(b); }),
              "Error deleting file or directory [2 : No such file or directory]");
}

TEST(FolderOperations, CopyTakesEverythingInside) {
    testsupport::ScratchFolder folder;
    std::filesystem::create_directories(folder.file("from/deep"));
    put(folder.file("from/one.txt"), "1");
    put(folder.file("from/deep/two.txt"), "22");
    copyFolder(Path::parse(folder.file("from")), Path::parse(folder.file("to")));
    EXPECT_EQ(readWholeFile(Path::parse(folder.file("to/one.txt"))), "1");
    EXPECT_EQ(readWholeFile(Path::parse(folder.file("to/deep/two.txt"))), "22");
    EXPECT_EQ(failureOf([&] { copyFolder(Path::parse(folder.file("from")), Path::parse(folder.file("to"))); }),
              "Error copying directory [17 : File exists]");
    EXPECT_EQ(failureOf([&] { copyFolder(Path::parse(folder.file("none")), Path::parse(folder.file("to2"))); }),
              "Error copying directory [2 : No such file or directory]");
}

TEST(FileTimes, AccessAndWriteTimesCanBeSet) {
    testsupport::ScratchFolder folder;
    const Path a = Path::parse(folder.file("a"));
    put(a.utf8(), "x");
    const FileTime access{125000000000000000};
    const FileTime write{126000000000001230};
    setTimes(a, std::nullopt, access, write);
    auto info = fileInfo(a);
    EXPECT_EQ(info.lastAccess, access);
    EXPECT_EQ(info.lastWrite, write);
    // An empty time stays as it was.
    setTimes(a, std::nullopt, std::nullopt, FileTime{127000000000000000});
    info = fileInfo(a);
    EXPECT_EQ(info.lastAccess, access);
    EXPECT_EQ(info.lastWrite, FileTime{127000000000000000});
    EXPECT_EQ(failureOf([&] { setTimes(Path::parse(folder.file("none")), std::nullopt, access, write); }),
              "Error updating time info on file or directory [2 : No such file or directory]");
}

TEST(FileAttributes, ReadOnlyCanBeSetAndCleared) {
    testsupport::ScratchFolder folder;
    const Path a = Path::parse(folder.file("a"));
    put(a.utf8(), "x");
    setAttributes(a, Attributes{true, false});
    EXPECT_TRUE(fileInfo(a).readOnly);
    setAttributes(a, Attributes{false, false});
    EXPECT_FALSE(fileInfo(a).readOnly);
    EXPECT_EQ(failureOf([&] { setAttributes(Path::parse(folder.file("none")), Attributes{}); }),
              "Error updating attributes on file or directory [2 : No such file or directory]");
}

TEST(FileStream, WriteSeekReadAndSize) {
    testsupport::ScratchFolder folder;
    const Path a = Path::parse(folder.file("a.bin"));
    File f = File::create(a);
    f.write("hello world");
    EXPECT_EQ(f.size(), 11u);
    f.seek(6);
    char buffer[16] = {};
    EXPECT_EQ(f.read(buffer, sizeof buffer), 5u);
    EXPECT_EQ(std::string(buffer, 5), "world");
    EXPECT_EQ(f.read(buffer, sizeof buffer), 0u);
    f.close();
    EXPECT_EQ(readWholeFile(a), "hello world");

    File g = File::openForReadingAndWriting(a);
    g.write("J");
    g.close();
    EXPECT_EQ(readWholeFile(a), "Jello world");
    // Creating again empties the file.
    File::create(a);
    EXPECT_EQ(readWholeFile(a), "");
}

TEST(FileStream, FailuresCarryTheirMessages) {
    testsupport::ScratchFolder folder;
    EXPECT_EQ(failureOf([&] { File::openForReading(Path::parse(folder.file("none"))); }),
              "Error opening file [2 : No such file or directory]");
    EXPECT_EQ(failureOf([&] { File::openForReadingAndWriting(Path::parse(folder.file("none"))); }),
              "Error opening file [2 : No such file or directory]");
    EXPECT_EQ(failureOf([&] { File::create(Path::parse(folder.file("none/a"))); }),
              "Error creating file [2 : No such file or directory]");

    put(folder.file("r"), "abc");
    File readOnly = File::openForReading(Path::parse(folder.file("r")));
    EXPECT_EQ(failureOf([&] { readOnly.write("x"); }), "Error writing to file [9 : Bad file descriptor]");

    File onFolder = File::openForReading(Path::parse(folder.path()));
    char c;
    EXPECT_EQ(failureOf([&] { onFolder.read(&c, 1); }), "Error reading from file [21 : Is a directory]");

    File closed;
    EXPECT_EQ(failureOf([&] { closed.size(); }), "Error obtaining size of file [9 : Bad file descriptor]");
}

TEST(FileStream, MovingHandsTheFileOver) {
    testsupport::ScratchFolder folder;
    File a = File::create(Path::parse(folder.file("a")));
    File b = std::move(a);
    EXPECT_FALSE(a.isOpen());
    EXPECT_TRUE(b.isOpen());
    b.write("x");
    EXPECT_EQ(b.size(), 1u);
}

}  // namespace
