#include "fomal/Cursor.h"

#include <gtest/gtest.h>

#include "platform/Exceptions.h"

using namespace Fomal;

TEST(CursorTest, EveryNameOfTheLayoutsReads) {
    EXPECT_EQ(parseCursor("arrow"), Cursor::arrow);
    EXPECT_EQ(parseCursor("iBeam"), Cursor::iBeam);
    EXPECT_EQ(parseCursor("hand"), Cursor::hand);
    EXPECT_EQ(parseCursor("sizeNWSE"), Cursor::sizeNWSE);
    EXPECT_EQ(parseCursor("appStarting"), Cursor::appStarting);
    EXPECT_EQ(parseCursor("help"), Cursor::help);
    for (const char* n : {"wait", "cross", "upArrow", "sizeAll", "sizeNESW", "sizeWE", "sizeNS", "no"})
        EXPECT_NE(parseCursor(n), Cursor::inherited) << n;
}

TEST(CursorTest, AnotherNameFails) {
    try {
        parseCursor("pointer");
        FAIL();
    } catch (const Exception& e) {
        EXPECT_STREQ(e.what(), "Unknown cursor: pointer");
    }
}
