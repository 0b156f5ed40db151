#include "fomal/LayoutView.h"

#include <gtest/gtest.h>

#include "ViewTestSupport.h"

using viewtest::failureOf;

TEST(LayoutViewTest, ViewsAreBuiltInLayoutOrder) {
    viewtest::Editor e("views: { { type: \"click\", label: \"a\" }, { type: \"rectangle\", label: \"b\" }\n"
                       "{ type: \"caption\", label: \"c\", font: { fnt: \"futura14\" }, text: \"x\" } }");
    ASSERT_EQ(e.root().children().size(), 3u);
    EXPECT_EQ(e.root().children()[0]->label(), "a");
    EXPECT_EQ(e.root().children()[2]->type(), "caption");
}

TEST(LayoutViewTest, FailuresOfTheLayoutStageCarryTheirMessages) {
    EXPECT_EQ(failureOf("views: { { type: \"knob\" } }"), "Unknown view type : knob");
    EXPECT_EQ(failureOf("views: { { type: \"fomal\", layout: \"noSuchLayout\" } }"),
              "Could not obtain layout : noSuchLayout");
    EXPECT_EQ(failureOf("views: { { type: \"raster\", image: \"noSuchImage\" } }"), "Could not obtain image : noSuchImage");
    EXPECT_EQ(failureOf("views: { { type: \"raster\", image: { name: \"seed\", format: \"gif\" } } }"),
              "Unknown image format specification: gif");
    EXPECT_EQ(failureOf("views: { { type: \"gradient\", start: { 0, 0 }, end: { 0, 9 } } }"),
              "No stops defined for gradient");
    EXPECT_EQ(failureOf("views: { { type: \"caption\", font: { fnt: \"noFont\" } } }"), "Could not obtain font : noFont");
    EXPECT_EQ(failureOf("views: { { type: \"caption\", font: { fnt: \"futura14\" }, align: \"middle\" } }"),
              "Invalid text alignment: middle");
    EXPECT_EQ(failureOf("views: { { type: \"caption\", font: { fnt: \"futura14\" }, ellipsis: { \"top\" } } }"),
              "Invalid ellipsis side: top");
    EXPECT_EQ(failureOf("views: { { type: \"click\", actions: { { \"click+hover\", \"nop\" } } } }"),
              "Invalid click mask constant: hover");
    EXPECT_EQ(failureOf("views: { { type: \"rectangle\", bounds: { 0, 0, w + q, 9 } } }"), "Undefined symbol: 'q'");
}

TEST(LayoutViewTest, AFailedLayoutLeavesTheOpenTreeAsItWas) {
    viewtest::Editor e("views: { { type: \"click\", label: \"first\" } }");
    EXPECT_THROW(e.core.openLayoutText("views: { { type: \"click\" }, { type: \"knob\" } }"), std::exception);
    EXPECT_NE(e.root().findView("first"), nullptr);
}
