#include "pixels/FontSpecification.h"

#include <gtest/gtest.h>

#include "pixels/FilmFont.h"
#include "pixels/SystemFont.h"
#include "platform/Exceptions.h"

using namespace OrlPixels;

namespace {

std::string messageOf(std::string_view text) {
    try {
        readFontSpecification(FontText(text));
    } catch (const Exception& e) {
        return e.what();
    }
    return "(no failure)";
}

}  // namespace

TEST(FontSpecificationTest, FilmIsTestedBeforeFntAndFntBeforeFace) {
    // Both film and fnt given: the film is asked for, so its message comes.
    EXPECT_EQ(messageOf("{ film: \"noFilm\", fnt: \"noFont\", face: \"x\" }"), "Could not obtain image : noFilm");
    EXPECT_EQ(messageOf("{ fnt: \"noFont\", face: \"x\" }"), "Could not obtain font : noFont");
}

TEST(FontSpecificationTest, WithNeitherItIsASystemFont) {
    const FontSpecification s = readFontSpecification(FontText("{ size: 10 }"));
    ASSERT_TRUE(s.font);
    EXPECT_NE(dynamic_cast<const SystemFont*>(s.font.get()), nullptr);
    EXPECT_EQ(s.color, 0xFF000000u);
    const FontSpecification bold = readFontSpecification(FontText("{ size: 10, bold: true, color: 0xFF102030 }"));
    EXPECT_EQ(bold.color, 0xFF102030u);
    EXPECT_GT(bold.font->measure("Mod Wheel").width, s.font->measure("Mod Wheel").width);
}

TEST(FontSpecificationTest, ABooleanThatIsNoBooleanFails) {
    EXPECT_EQ(messageOf("{ size: 10, bold: maybe }"), "Invalid boolean: maybe");
}
