#include "fomal/View.h"

#include <gtest/gtest.h>

#include "ViewTestSupport.h"

using viewtest::Editor;

TEST(ViewTest, BoundsAreInTheParentsTermsWithItsSymbols) {
    Editor e("views: { { type: \"fomal\", label: \"about\", bounds: { 12, 82, 360, 420 }, views: {"
             "  { type: \"click\", label: \"bubble\", bounds: { $, h - 10, $, 10 } }"
             "  { type: \"click\", label: \"close\", bounds: { r - 20, t + 4, 16, 16 } }"
             "  { type: \"click\", label: \"whole\" } } } }");
    const Fomal::RectF b = e.find("bubble").rect();
    // The parent's left, 410 down, the parent's width, 10 high.
    EXPECT_FLOAT_EQ(b.left, 12);
    EXPECT_FLOAT_EQ(b.top, 82 + 410);
    EXPECT_FLOAT_EQ(b.width, 360);
    EXPECT_FLOAT_EQ(b.height, 10);
    const Fomal::RectF c = e.find("close").rect();
    EXPECT_FLOAT_EQ(c.left, 12 + 360 - 20);
    EXPECT_FLOAT_EQ(c.top, 82 + 4);
    const Fomal::RectF w = e.find("whole").rect();
    EXPECT_FLOAT_EQ(w.left, 12);
    EXPECT_FLOAT_EQ(w.width, 360);
}

TEST(ViewTest, AFullSizeClickViewTakesThePressOfEverythingBelow) {
    Editor e("views: {"
             "  { type: \"click\", label: \"below\", bounds: { 10, 10, 50, 50 } }"
             "  { type: \"click\", label: \"blocker\", action: \"nop\", hint: \"\" } }");
    EXPECT_EQ(e.root().hitTest(20, 20), &e.find("blocker"));
    ASSERT_TRUE(e.find("blocker").hint().has_value());
    EXPECT_EQ(*e.find("blocker").hint(), "");
}

TEST(ViewTest, AThruViewIsDrawnButNeverTheTarget) {
    Editor e("views: {"
             "  { type: \"click\", label: \"below\", bounds: { 10, 10, 50, 50 } }"
             "  { type: \"rectangle\", label: \"glass\", thru: true, fill: 0xFF00FF00 } }");
    EXPECT_EQ(e.root().hitTest(20, 20), &e.find("below"));
    EXPECT_EQ(e.root().hitTest(200, 200), nullptr);
    e.core.paint();
    EXPECT_EQ(e.core.pixels()[200 * 384 + 200], 0xFF00FF00u);
}

TEST(ViewTest, HiddenViewsAreNeitherDrawnNorHitWithTheirSubtree) {
    Editor e("views: {"
             "  { type: \"fomal\", label: \"layer\", hidden: true, views: {"
             "    { type: \"click\", label: \"inside\" }"
             "    { type: \"rectangle\", fill: 0xFFFF0000 } } } }");
    EXPECT_TRUE(e.find("layer").hidden());
    EXPECT_EQ(e.root().hitTest(5, 5), nullptr);
    e.core.paint();
    EXPECT_EQ(e.core.pixels()[5 * 384 + 5], 0xFF000000u);
    e.find("layer").setHidden(false);
    EXPECT_EQ(e.root().hitTest(5, 5), &e.find("inside"));
    e.core.paint();
    EXPECT_EQ(e.core.pixels()[5 * 384 + 5], 0xFFFF0000u);
}

TEST(ViewTest, FindViewSearchesDepthFirstAndSlashIsTheRoot) {
    Editor e("views: { { type: \"fomal\", views: { { type: \"click\", label: \"deep\" } } } }");
    EXPECT_NE(e.root().findView("deep"), nullptr);
    EXPECT_EQ(e.find("deep").findView("/"), &e.root());
    EXPECT_EQ(e.root().findView("missing"), nullptr);
}

TEST(ViewTest, TheCursorIsTheFirstSetUpTheTree) {
    Editor e("views: { { type: \"fomal\", cursor: \"hand\", views: { { type: \"click\", label: \"c\" } } } }");
    EXPECT_EQ(e.find("c").cursor(), Fomal::Cursor::hand);
    EXPECT_EQ(e.root().cursor(), Fomal::Cursor::arrow);
    EXPECT_EQ(viewtest::failureOf("views: { { type: \"click\", cursor: \"finger\" } }"), "Unknown cursor: finger");
}
