#include "fomal/ClickMask.h"

#include <gtest/gtest.h>

#include "platform/Exceptions.h"

using namespace Fomal;

TEST(ClickMaskTest, WordsAreBitsInTheirOrder) {
    EXPECT_EQ(parseClickMask("click"), 1u);
    EXPECT_EQ(parseClickMask("shift"), 2u);
    EXPECT_EQ(parseClickMask("mac"), 1u << 13);
    EXPECT_EQ(parseClickMask("context"), CONTEXT_BIT);
    EXPECT_EQ(parseClickMask(""), 0u);
}

TEST(ClickMaskTest, TheResourcesMasksRead) {
    EXPECT_EQ(parseClickMask("down+windows+control"), DOWN_BIT | WINDOWS_BIT | CONTROL_BIT);
    EXPECT_EQ(parseClickMask("release+mac+command"), RELEASE_BIT | MAC_BIT | COMMAND_BIT);
    EXPECT_EQ(parseClickMask("click+windows+control"), CLICK_BIT | WINDOWS_BIT | CONTROL_BIT);
    EXPECT_EQ(parseClickMask(" up "), UP_BIT);
}

TEST(ClickMaskTest, AnUnknownWordFails) {
    try {
        parseClickMask("click+hover");
        FAIL();
    } catch (const Exception& e) {
        EXPECT_STREQ(e.what(), "Invalid click mask constant: hover");
    }
    EXPECT_THROW(parseClickMask("click+"), Exception);
    EXPECT_THROW(parseClickMask("Click"), Exception);
}
