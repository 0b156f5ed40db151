#include "fomal/CaptionView.h"

#include <gtest/gtest.h>

#include "ViewTestSupport.h"

TEST(CaptionViewTest, TheTextIsSubstitutedAndShortenedToFit) {
    viewtest::Editor e(
        "views: {"
        "  { type: \"caption\", label: \"name\", bounds: { 0, 0, 150, 25 }, font: { fnt: \"futura18\" }, text: \"^N\" }"
        "  { type: \"caption\", label: \"long\", bounds: { 0, 30, 60, 25 }, font: { fnt: \"futura18\" },"
        "    ellipsis: { \"right\" }, text: \"Glass Harmonium of the Woods\" }"
        "  { type: \"caption\", label: \"version\", bounds: { 0, 60, 200, 25 }, font: { fnt: \"futura18\" },"
        "    text: \"v^V (^B) [quol]{ 3 + 4 }[/quol]\" } }");
    auto shown = [&](const char* label) { return static_cast<Fomal::CaptionView&>(e.find(label)).shownText(); };
    EXPECT_EQ(shown("name"), "Init");
    const std::string shortened = shown("long");
    EXPECT_EQ(shortened.substr(shortened.size() - 3), "...");
    EXPECT_LT(shortened.size(), std::string("Glass Harmonium of the Woods").size());
    EXPECT_EQ(shown("version"), "v1.0.0 (140) 7");
}

TEST(CaptionViewTest, TheBaselineStandsAtTheBottomMovedByTheOffset) {
    viewtest::Editor e("views: { { type: \"caption\", bounds: { 0, 0, 100, 30 }, offset: { 0, -8 },"
                       "  font: { fnt: \"futura18\", color: 0xFFFFFFFF }, text: \"IIII\" } }");
    e.core.paint();
    // The letters stand on row 22 (30 - 8): ink above it, none below.
    int lowest = -1, highest = 1000;
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 100; ++x)
            if ((e.core.pixels()[std::size_t(y) * 384 + std::size_t(x)] & 0xFF) > 0x80) {
                lowest = std::max(lowest, y);
                highest = std::min(highest, y);
            }
    EXPECT_EQ(lowest, 21);
    EXPECT_LT(highest, 12);
}
