#include "pixels/AngelCode.h"

#include <gtest/gtest.h>

#include "FontTestSupport.h"

using OrlAngelCode::parse;

namespace {

std::string messageOf(std::string_view text) {
    try {
        parse(text);
    } catch (const OrlAngelCode::Exception& e) {
        return e.what();
    }
    return "(no failure)";
}

const char* COMMON = "common lineHeight=9 base=7 scaleW=16 scaleH=8 pages=1 packed=0\n";

}  // namespace

TEST(AngelCodeTest, ReadsEveryTagAndSkipsCounts) {
    const OrlAngelCode::Description d = parse(fonttest::description());
    EXPECT_EQ(d.info.face, "Boxes");
    EXPECT_EQ(d.info.size, 8);
    EXPECT_TRUE(d.info.smooth);
    EXPECT_EQ(d.info.spacing[0], 1);
    EXPECT_EQ(d.info.spacing[1], 1);
    EXPECT_EQ(d.common.lineHeight, 9);
    EXPECT_EQ(d.common.base, 7);
    EXPECT_EQ(d.common.scaleW, 16);
    EXPECT_EQ(d.common.scaleH, 8);
    ASSERT_EQ(d.pages.size(), 1u);
    EXPECT_EQ(d.pages.at(0), "boxes_0.png");
    ASSERT_EQ(d.chars.size(), 4u);
    const OrlAngelCode::Char& v = d.chars.at(86);
    EXPECT_EQ(v.x, 5);
    EXPECT_EQ(v.width, 3);
    EXPECT_EQ(v.xoffset, 1);
    EXPECT_EQ(v.yoffset, 1);
    EXPECT_EQ(v.xadvance, 4);
    EXPECT_EQ(v.channel, 15);
    ASSERT_EQ(d.kernings.size(), 1u);
    EXPECT_EQ(d.kernings.at({65, 86}), -2);
}

TEST(AngelCodeTest, QuotedValuesKeepTheirBlanksAndPaddingHasFourNumbers) {
    const OrlAngelCode::Description d =
        parse("info face=\"Two Words\" padding=1,2,3,4 spacing=-1,2\r\n" + std::string(COMMON));
    EXPECT_EQ(d.info.face, "Two Words");
    EXPECT_EQ(d.info.padding[0], 1);
    EXPECT_EQ(d.info.padding[3], 4);
    EXPECT_EQ(d.info.spacing[0], -1);
    EXPECT_EQ(messageOf("info padding=1,2,3\n"), "Missing 'padding' value in AngelCode Font File");
    EXPECT_EQ(messageOf("info spacing=1\n"), "Missing 'spacing' value in AngelCode Font File");
}

TEST(AngelCodeTest, PageAndCharNeedTheCommonTagFirst) {
    EXPECT_EQ(messageOf("page id=0 file=\"a.png\"\n"), "Missing common tag in AngelCode Font File");
    EXPECT_EQ(messageOf("char id=65 x=0 y=0 width=1 height=1 xoffset=0 yoffset=0 xadvance=1\n"),
              "Missing common tag in AngelCode Font File");
}

TEST(AngelCodeTest, DuplicatesFail) {
    const std::string page = "page id=0 file=\"a.png\"\n";
    EXPECT_EQ(messageOf(COMMON + page + page), "Duplicate page id found in AngelCode Font File");
    const std::string ch = "char id=65 x=0 y=0 width=1 height=1 xoffset=0 yoffset=0 xadvance=1\n";
    EXPECT_EQ(messageOf(COMMON + ch + ch), "Duplicate character id found in AngelCode Font File");
    const std::string k = "kerning first=65 second=86 amount=-1\n";
    EXPECT_EQ(messageOf(COMMON + k + k), "Duplicate kerning pair found in AngelCode Font File");
}

TEST(AngelCodeTest, RequiredKeysMissingOrNotNumbersFail) {
    EXPECT_EQ(messageOf("common lineHeight=9 scaleW=16 scaleH=8\n"), "Missing 'base' value in AngelCode Font File");
    EXPECT_EQ(messageOf(COMMON + std::string("page id=0\n")), "Missing 'file' value in AngelCode Font File");
    EXPECT_EQ(messageOf(COMMON + std::string("char id=65 x=0 y=0 width=1 height=1 xoffset=0 yoffset=0\n")),
              "Missing 'xadvance' value in AngelCode Font File");
    EXPECT_EQ(messageOf(COMMON + std::string("char id=65 x=zero y=0 width=1 height=1 xoffset=0 yoffset=0 "
                                             "xadvance=1\n")),
              "Missing 'x' value in AngelCode Font File");
    EXPECT_EQ(messageOf("kerning first=1 amount=2\n"), "Missing 'second' value in AngelCode Font File");
}

TEST(AngelCodeTest, WrittenDescriptionReadsBackTheSame) {
    const OrlAngelCode::Description d = parse(fonttest::description());
    const std::string text = OrlAngelCode::write(d);
    const OrlAngelCode::Description again = parse(text);
    EXPECT_EQ(OrlAngelCode::write(again), text);
    EXPECT_EQ(again.chars.size(), d.chars.size());
    EXPECT_EQ(again.kernings, d.kernings);
    EXPECT_EQ(again.info.face, d.info.face);
}
