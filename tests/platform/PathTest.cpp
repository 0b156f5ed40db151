#include "platform/OrlFiles/Exception.h"
#include "platform/OrlFiles/Path.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using OrlFiles::Path;
using OrlFiles::PathStyle;
using Root = OrlFiles::Path::Root;

Path win(std::string_view text) {
    return Path::parse(text, PathStyle::windows);
}
Path posix(std::string_view text) {
    return Path::parse(text, PathStyle::posix);
}

std::string failureOf(std::string_view text, PathStyle style) {
    try {
        Path::parse(text, style);
    } catch (const OrlFiles::Exception& e) {
        return e.message();  // what() would stop at a NUL in the text
    }
    return "(no failure)";
}

TEST(Path, IsEmptyByDefault) {
    const Path p;
    EXPECT_TRUE(p.empty());
    EXPECT_TRUE(p.parts().empty());
    EXPECT_TRUE(p.text().empty());
    EXPECT_EQ(p, Path());
}

TEST(Path, CopiesAreIndependent) {
    const Path a = posix("/home/user/a.tdrn");
    Path b = a;
    b = b.parent().child(u"b.tdrn");
    EXPECT_EQ(a.utf8(), "/home/user/a.tdrn");
    EXPECT_EQ(b.utf8(), "/home/user/b.tdrn");
}

TEST(PosixPath, AbsoluteAndRelativeForms) {
    const Path a = posix("/usr//share/./tendrane/");
    EXPECT_EQ(a.root(), Root::separator);
    EXPECT_TRUE(a.isAbsolute());
    EXPECT_EQ(a.parts(), (std::vector<std::u16string>{u"usr", u"share", u"tendrane"}));
    EXPECT_EQ(a.utf8(), "/usr/share/tendrane");

    const Path r = posix("patches/../x.tdrn");
    EXPECT_EQ(r.root(), Root::none);
    EXPECT_FALSE(r.isAbsolute());
    EXPECT_EQ(r.parts(), (std::vector<std::u16string>{u"patches", u"..", u"x.tdrn"}));
}

TEST(PosixPath, RootAloneAndCurrentFolder) {
    EXPECT_EQ(posix("/").utf8(), "/");
    EXPECT_TRUE(posix("/").parts().empty());
    EXPECT_EQ(posix(".").utf8(), ".");
    EXPECT_EQ(posix("./").utf8(), ".");
    EXPECT_EQ(posix(".").child(u"a").utf8(), "a");
}

TEST(PosixPath, BackslashesAndColonsArePartOfNames) {
    const Path p = posix("/a\\b/c:d");
    EXPECT_EQ(p.parts(), (std::vector<std::u16string>{u"a\\b", u"c:d"}));
}

TEST(PosixPath, NonAsciiNamesBecomeSixteenBitText) {
    const Path p = posix("/tmp/Gr\xC3\xBC\xC3\x9F" "e/\xF0\x9F\x8E\xB9.tdrn");
    EXPECT_EQ(p.parts()[1], u"Gr\u00FC\u00DFe");
    EXPECT_EQ(p.parts()[2], u"\U0001F3B9.tdrn");
    EXPECT_EQ(p.utf8(), "/tmp/Gr\xC3\xBC\xC3\x9F" "e/\xF0\x9F\x8E\xB9.tdrn");
}

TEST(PathParse, FailsWithTheTextInTheMessage) {
    EXPECT_EQ(failureOf("", PathStyle::posix), "Error interpreting path : ");
    EXPECT_EQ(failureOf("", PathStyle::windows), "Error interpreting path : ");
    EXPECT_EQ(failureOf(std::string_view("a\0b", 3), PathStyle::posix), std::string("Error interpreting path : a\0b", 29));
    EXPECT_EQ(failureOf("bad\xFFutf8", PathStyle::posix), "Error interpreting path : bad\xFFutf8");
    EXPECT_EQ(failureOf("C:\\a<b", PathStyle::windows), "Error interpreting path : C:\\a<b");
    EXPECT_EQ(failureOf("C:\\a\\b:c", PathStyle::windows), "Error interpreting path : C:\\a\\b:c");
}

TEST(WindowsPath, DriveForms) {
    const Path a = win("C:\\Program Files\\Tendrane\\");
    EXPECT_EQ(a.root(), Root::drive);
    EXPECT_EQ(a.rootName(), u"C:");
    EXPECT_TRUE(a.isAbsolute());
    EXPECT_EQ(a.parts(), (std::vector<std::u16string>{u"Program Files", u"Tendrane"}));
    EXPECT_EQ(a.text(), u"C:\\Program Files\\Tendrane");

    EXPECT_EQ(win("d:/x/y").text(), u"d:\\x\\y");
    EXPECT_EQ(win("C:\\").text(), u"C:\\");

    const Path relative = win("C:patches\\a.tdrn");
    EXPECT_EQ(relative.root(), Root::driveRelative);
    EXPECT_FALSE(relative.isAbsolute());
    EXPECT_EQ(relative.text(), u"C:patches\\a.tdrn");

    const Path rooted = win("\\patches\\a.tdrn");
    EXPECT_EQ(rooted.root(), Root::separator);
    EXPECT_EQ(rooted.text(), u"\\patches\\a.tdrn");

    EXPECT_EQ(win("patches/sub\\a.tdrn").text(), u"patches\\sub\\a.tdrn");
}

TEST(WindowsPath, ShareForms) {
    const Path s = win("\\\\server\\music\\patches\\a.tdrn");
    EXPECT_EQ(s.root(), Root::share);
    EXPECT_EQ(s.rootName(), u"\\\\server\\music");
    EXPECT_EQ(s.parts(), (std::vector<std::u16string>{u"patches", u"a.tdrn"}));
    EXPECT_EQ(s.text(), u"\\\\server\\music\\patches\\a.tdrn");
    EXPECT_EQ(win("//server/music").text(), u"\\\\server\\music");

    EXPECT_EQ(failureOf("\\\\server", PathStyle::windows), "Error interpreting path : \\\\server");
    EXPECT_EQ(failureOf("\\\\server\\", PathStyle::windows), "Error interpreting path : \\\\server\\");
    EXPECT_EQ(failureOf("\\\\.\\COM1", PathStyle::windows), "Error interpreting path : \\\\.\\COM1");
}

TEST(WindowsPath, TheLongPrefixIsUnderstoodAndDroppedFromTheText) {
    const Path p = win("\\\\?\\C:\\Users\\a.tdrn");
    EXPECT_EQ(p, win("C:\\Users\\a.tdrn"));
    EXPECT_EQ(p.text(), u"C:\\Users\\a.tdrn");
    EXPECT_EQ(p.systemText(), u"\\\\?\\C:\\Users\\a.tdrn");
    EXPECT_EQ(win("\\\\?\\C:").text(), u"C:\\");
}

TEST(WindowsPath, TheLongSharePrefixIsUnderstood) {
    const Path p = win("\\\\?\\UNC\\server\\music\\a.tdrn");
    EXPECT_EQ(p, win("\\\\server\\music\\a.tdrn"));
    EXPECT_EQ(p.root(), Root::share);
    EXPECT_EQ(p.systemText(), u"\\\\?\\UNC\\server\\music\\a.tdrn");
}

TEST(WindowsPath, AfterTheLongPrefixOnlyBackslashSeparatesAndDotsAreRefused) {
    EXPECT_EQ(failureOf("\\\\?\\C:\\a/b", PathStyle::windows), "Error interpreting path : \\\\?\\C:\\a/b");
    EXPECT_EQ(failureOf("\\\\?\\C:\\a\\..\\b", PathStyle::windows), "Error interpreting path : \\\\?\\C:\\a\\..\\b");
    EXPECT_EQ(failureOf("\\\\?\\C:\\.\\b", PathStyle::windows), "Error interpreting path : \\\\?\\C:\\.\\b");
    EXPECT_EQ(failureOf("\\\\?\\Volume{1}\\a", PathStyle::windows), "Error interpreting path : \\\\?\\Volume{1}\\a");
    EXPECT_EQ(failureOf("\\\\?\\UNC\\server", PathStyle::windows), "Error interpreting path : \\\\?\\UNC\\server");
}

TEST(WindowsPath, PathsTheSystemMustResolveTakeNoLongPrefix) {
    EXPECT_EQ(win("C:\\a\\..\\b").systemText(), u"C:\\a\\..\\b");
    EXPECT_EQ(win("\\\\s\\h\\..\\b").systemText(), u"\\\\s\\h\\..\\b");
    EXPECT_EQ(win("C:\\a.\\b").systemText(), u"C:\\a.\\b");
    EXPECT_EQ(win("C:\\a \\b").systemText(), u"C:\\a \\b");
    EXPECT_EQ(win("C:\\a.b\\c").systemText(), u"\\\\?\\C:\\a.b\\c");
}

TEST(WindowsPath, RelativeAndRootedPathsTakeNoLongPrefix) {
    EXPECT_EQ(win("a\\b").systemText(), u"a\\b");
    EXPECT_EQ(win("\\a\\b").systemText(), u"\\a\\b");
}

TEST(PathCompare, IsExactOnTheSixteenBitText) {
    EXPECT_NE(win("C:\\A"), win("c:\\a"));
    EXPECT_NE(win("C:\\a"), win("C:\\A"));
    EXPECT_EQ(win("C:\\a\\"), win("C:/a"));
    EXPECT_NE(posix("/a/b"), posix("a/b"));
    EXPECT_NE(posix("/a/../b"), posix("/b"));  // never resolved
    EXPECT_NE(win("a\\b"), posix("a/b"));       // styles differ
    // Ordered by the code units, so 'Z' (0x5A) comes before 'a' (0x61).
    EXPECT_LT(posix("/x/Z"), posix("/x/a"));
    EXPECT_LT(posix("/x/a"), posix("/x/a/b"));
    const std::set<Path> sorted{posix("/b"), posix("/a"), posix("/a")};
    EXPECT_EQ(sorted.size(), 2u);
}

TEST(PathParts, NameStemAndExtension) {
    const Path p = posix("/patches/Warm.Pad.tdrn");
    EXPECT_EQ(p.name(), u"Warm.Pad.tdrn");
    EXPECT_EQ(p.stem(), u"Warm.Pad");
    EXPECT_EQ(p.extension(), u"tdrn");
    EXPECT_EQ(posix("/a/.hidden").stem(), u".hidden");
    EXPECT_EQ(posix("/a/.hidden").extension(), u"");
    EXPECT_EQ(posix("/a/noext").extension(), u"");
    EXPECT_EQ(posix("/").name(), u"");
}

TEST(PathParts, ParentStopsAtTheRoot) {
    EXPECT_EQ(posix("/a/b").parent(), posix("/a"));
    EXPECT_EQ(posix("/a").parent(), posix("/"));
    EXPECT_EQ(posix("/").parent(), posix("/"));
    EXPECT_EQ(win("C:\\a").parent(), win("C:\\"));
    EXPECT_TRUE(posix("a").parent().empty());
}

TEST(PathParts, ChildRefusesWhatIsNoName) {
    const Path base = win("C:\\a");
    EXPECT_EQ(base.child(u"b.tdrn").text(), u"C:\\a\\b.tdrn");
    EXPECT_THROW(base.child(u"x\\y"), OrlFiles::Exception);
    EXPECT_THROW(base.child(u"x/y"), OrlFiles::Exception);
    EXPECT_THROW(base.child(u"a?"), OrlFiles::Exception);
    EXPECT_THROW(base.child(u""), OrlFiles::Exception);
    EXPECT_THROW(base.child(u".."), OrlFiles::Exception);
    EXPECT_THROW(posix("/").child(u"a/b"), OrlFiles::Exception);
    EXPECT_EQ(posix("/").child(u"a\\b").utf8(), "/a\\b");
    try {
        base.child(std::string_view("x|y"));
        FAIL();
    } catch (const OrlFiles::Exception& e) {
        EXPECT_STREQ(e.what(), "Error interpreting path : x|y");
    }
}

TEST(PathParse, TextRoundTripsToAnEqualPath) {
    for (const char* text : {"/a/b", "a/../b", "/", ".", "x"}) {
        const Path p = posix(text);
        EXPECT_EQ(Path::parse(p.text(), PathStyle::posix), p) << text;
    }
    for (const char* text : {"C:\\a", "C:a", "C:", "\\a", "a\\b", "\\\\s\\h\\a", "\\\\?\\UNC\\s\\h", "\\\\?\\C:\\x"}) {
        const Path p = win(text);
        EXPECT_EQ(Path::parse(p.text(), PathStyle::windows), p) << text;
        EXPECT_EQ(Path::parse(p.systemText(), PathStyle::windows), p) << text;
    }
}

}  // namespace
