#include <gtest/gtest.h>

#include <string>

#include "platform/Resources.h"

const platform::ResourceTable& sampleResources();

TEST(Resources, FindsByTypeAndName) {
    platform::Resource r = sampleResources().find("TXT", "Greeting");
    ASSERT_TRUE(r);
    EXPECT_EQ(r.text(), "Plain text resource.\n");
}

TEST(Resources, TypeAndNameIgnoreCase) {
    EXPECT_TRUE(sampleResources().find("txt", "GREETING"));
    EXPECT_TRUE(sampleResources().find("Tdrn", "sample"));
    EXPECT_EQ(sampleResources().find("tdrn", "SAMPLE").text(), "TendranePatch: { Version: 10 }\r\n");
}

TEST(Resources, KeepsEveryByteIncludingATrailing26) {
    platform::Resource r = sampleResources().find("QUOL", "EndsInEof");
    ASSERT_TRUE(r);
    ASSERT_EQ(r.size, 7u);
    EXPECT_EQ(r.data[6], 26);
    EXPECT_EQ(r.data[7], 0) << "a zero byte follows the data";
}

TEST(Resources, BinaryResourcesKeepTheirBytes) {
    platform::Resource r = sampleResources().find("PNG", "Header");
    ASSERT_TRUE(r);
    const unsigned char expected[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    ASSERT_EQ(r.size, sizeof expected);
    for (std::size_t i = 0; i < sizeof expected; ++i) EXPECT_EQ(r.data[i], expected[i]) << i;
}

TEST(Resources, WrongTypeOrMissingNameFindsNothing) {
    EXPECT_FALSE(sampleResources().find("QUOL", "Greeting"));
    EXPECT_FALSE(sampleResources().find("TXT", "Nowhere"));
    EXPECT_FALSE(sampleResources().find("TXT", "Greet"));
    EXPECT_EQ(sampleResources().size(), 4u);
}

TEST(Resources, ProductTableIsLinked) {
    EXPECT_FALSE(platform::productResources().find("TXT", "no such resource"));
}
