#include "fomal/EditorCore.h"

#include <gtest/gtest.h>

#include "ViewTestSupport.h"

TEST(EditorCoreTest, OnlyTheInvalidatedRegionIsRedrawn) {
    viewtest::Editor e("views: { { type: \"rectangle\", label: \"box\", bounds: { 10, 10, 20, 20 }, fill: 0xFF00FF00 } }");
    const OrlPixels::IntRect first = e.core.paint();
    EXPECT_EQ(first.width, 384);
    EXPECT_EQ(first.height, 512);
    EXPECT_TRUE(e.core.paint().isEmpty());  // nothing moved, nothing drawn
    e.find("box").invalidate();
    const OrlPixels::IntRect again = e.core.paint();
    EXPECT_EQ(again.left, 10);
    EXPECT_EQ(again.top, 10);
    EXPECT_EQ(again.width, 20);
    EXPECT_EQ(again.height, 20);
    EXPECT_EQ(e.core.pixels()[15 * 384 + 15], 0xFF00FF00u);
    EXPECT_EQ(e.core.pixels()[5 * 384 + 5], 0xFF000000u);
}
