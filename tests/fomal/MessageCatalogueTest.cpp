#include "fomal/MessageCatalogue.h"

#include <gtest/gtest.h>

#include "platform/Exceptions.h"

using namespace Fomal;

TEST(MessageCatalogueTest, EntriesCommentsAndEscapes) {
    const MessageCatalogue c = MessageCatalogue::parse(
        "// a comment\n"
        "\"Change Wheel\" = \"Wheel changed\"  // trailing comment\n"
        "\n"
        "  'Two\\nlines' = \"A\\tB\";\r\n"
        "\"Quol error: ^E\\n^S\" = \"Script failed: ^E\\n^S\"");
    EXPECT_EQ(c.size(), 3u);
    EXPECT_EQ(c.lookup("Change Wheel"), "Wheel changed");
    EXPECT_EQ(c.lookup("Quol error: ^E\n^S"), "Script failed: ^E\n^S");
    EXPECT_EQ(c.lookup("Not there"), "Not there");
}

TEST(MessageCatalogueTest, ALineThatIsNoEntryFails) {
    EXPECT_THROW(MessageCatalogue::parse("\"a\" \"b\"\n"), Exception);
    EXPECT_THROW(MessageCatalogue::parse("a = \"b\"\n"), Exception);
    EXPECT_THROW(MessageCatalogue::parse("\"a\" = \"b\" extra\n"), Exception);
    EXPECT_THROW(MessageCatalogue::parse("\"a\" = \"b\n"), Exception);
}

TEST(MessageCatalogueTest, TheProductCatalogueHasTheTextsTheInterfaceNeeds) {
    const MessageCatalogue& c = MessageCatalogue::product();
    EXPECT_GE(c.size(), 8u);
    EXPECT_EQ(c.lookup("Unexpected error"),
              "The operation could not be performed due to an unknown / unexpected error.");
    EXPECT_EQ(c.lookup("No programs found"), "No programs in chosen folder, select \"Browse Patches...\"");
    EXPECT_EQ(c.lookup("Error: ^E"), "The operation could not be performed due to the following error:\n^E.");
    EXPECT_EQ(c.lookup("Quol error: ^E\n^S"), "Internal script-code error: ^E\n\nStack\n----------\n^S");
    EXPECT_EQ(c.lookup("Change Wheel"), "Change Mod Wheel");
    EXPECT_EQ(c.lookup("Change WheelScale"), "Change Mod Wheel Scaling");
    EXPECT_EQ(c.lookup("Change VelSens"), "Change Velocity Sensitivity");
}
