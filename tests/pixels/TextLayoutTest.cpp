#include "pixels/TextLayout.h"

#include <gtest/gtest.h>

#include "FontTestSupport.h"

using namespace OrlPixels;

namespace {

// A font where every character is 4 wide, '.' included.
class Monospace : public Font {
public:
    TextSize measure(std::string_view text) const override { return {int(text.size()) * 4, 10}; }
    void draw(Surface&, std::string_view, int, int, Pixel) const override {}
    int ascent() const override { return 8; }
    int lineHeight() const override { return 10; }
};

std::string messageOf(void (*f)()) {
    try {
        f();
    } catch (const Exception& e) {
        return e.what();
    }
    return "(no failure)";
}

}  // namespace

TEST(TextLayoutTest, AlignmentWordsAndTheirMessage) {
    EXPECT_EQ(parseTextAlign("left"), TextAlign::left);
    EXPECT_EQ(parseTextAlign("center"), TextAlign::center);
    EXPECT_EQ(parseTextAlign("right"), TextAlign::right);
    EXPECT_EQ(messageOf([] { parseTextAlign("middle"); }), "Invalid text alignment: middle");
}

TEST(TextLayoutTest, EllipsisWordsAndTheirMessage) {
    EXPECT_EQ(parseEllipsisSide("none"), EllipsisSide::none);
    EXPECT_EQ(parseEllipsisSide("left"), EllipsisSide::left);
    EXPECT_EQ(parseEllipsisSide("right"), EllipsisSide::right);
    EXPECT_EQ(parseEllipsisSide("both"), EllipsisSide::both);
    EXPECT_EQ(messageOf([] { parseEllipsisSide("middle"); }), "Invalid ellipsis side: middle");
}

TEST(TextLayoutTest, TextThatFitsStaysWhole) {
    Monospace f;
    EXPECT_EQ(fitText(f, "abcdef", 24, EllipsisSide::right), "abcdef");
    EXPECT_EQ(fitText(f, "abcdefgh", 24, EllipsisSide::none), "abcdefgh");
}

TEST(TextLayoutTest, EllipsisOnEachSide) {
    Monospace f;
    // 8 characters of room: 5 kept and "...".
    EXPECT_EQ(fitText(f, "abcdefghij", 32, EllipsisSide::right), "abcde...");
    EXPECT_EQ(fitText(f, "abcdefghij", 32, EllipsisSide::left), "...fghij");
    // Both: 2 characters kept between two ellipses, cut right first.
    EXPECT_EQ(fitText(f, "abcdefghij", 32, EllipsisSide::both), "...ef...");
    EXPECT_EQ(fitText(f, "abcdefghij", 8, EllipsisSide::right), "...");
}

TEST(TextLayoutTest, EllipsisWithARealFontFits) {
    const FontRef f = fonttest::boxes();
    const std::string fitted = fitText(*f, "AAAAAAAAAA", 20, EllipsisSide::right);
    EXPECT_LE(f->measure(fitted).width, 20);
    EXPECT_EQ(fitted.substr(fitted.size() - 3), "...");
}

TEST(TextLayoutTest, AlignedLeftRoundsTheCentre) {
    EXPECT_EQ(alignedLeft(TextAlign::left, 10, 100, 40), 10);
    EXPECT_EQ(alignedLeft(TextAlign::right, 10, 100, 40), 70);
    EXPECT_EQ(alignedLeft(TextAlign::center, 10, 100, 40), 40);
    EXPECT_EQ(alignedLeft(TextAlign::center, 10, 100, 41), 40);  // 39.5 rounds up
    EXPECT_EQ(alignedLeft(TextAlign::center, 0, 10, 20), -5);
}
