// The development log: the exact form of a line, and a file that is only
// written while the log is started.
#include "platform/Log.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <thread>

#include "platform/OrlThreads/Thread.h"

namespace {

std::tm at(int year, int month, int day, int hour, int minute, int second) {
    std::tm t{};
    t.tm_year = year - 1900;
    t.tm_mon = month - 1;
    t.tm_mday = day;
    t.tm_hour = hour;
    t.tm_min = minute;
    t.tm_sec = second;
    return t;
}

std::string contents(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::filesystem::path scratch(const char* name) {
    return std::filesystem::path(TENDRANE_BINARY_DIR) / "test-scratch" / name;
}

}  // namespace

TEST(LogTest, ALineHasTimeTextsNumberLevelAndMessage) {
    EXPECT_EQ(platform::formatLogLine(at(2026, 11, 5, 7, 3, 9), "script", "host", 0x3a1f, 'D', "Tendrane on linux x64"),
              "20261105 07:03:09 script|host|00003a1f D Tendrane on linux x64\r\n");
    EXPECT_EQ(platform::formatLogLine(at(1999, 12, 31, 23, 59, 58), "", "", 0xFFFFFFFFu, 'E', ""),
              "19991231 23:59:58 ||ffffffff E \r\n");
}

TEST(LogTest, NonPrintableBytesAreEscapedAsInScriptStrings) {
    EXPECT_EQ(platform::escapeLogText("a\nb\tc\rd"), "a\\nb\\tc\\rd");
    EXPECT_EQ(platform::escapeLogText(std::string("\a\b\f\v\x01\x1f\x7f\x80\xff", 9)),
              "\\a\\b\\f\\v\\x01\\x1f\\x7f\\x80\\xff");
    EXPECT_EQ(platform::escapeLogText(std::string("nul\0end", 7)), "nul\\x00end");
    // Printable bytes stay as they are, quotes and backslashes too.
    EXPECT_EQ(platform::escapeLogText("It's \"fine\" \\ ~"), "It's \"fine\" \\ ~");
    EXPECT_EQ(platform::formatLogLine(at(2026, 1, 2, 3, 4, 5), "s", "t", 1, 'I', "two\nlines"),
              "20260102 03:04:05 s|t|00000001 I two\\nlines\r\n");
}

TEST(LogTest, TheLogWritesOnlyWhileStartedToADotLogFile) {
    std::filesystem::create_directories(scratch(""));
    const std::filesystem::path asked = scratch("dev-trace.txt");
    const std::filesystem::path file = scratch("dev-trace.log");
    std::filesystem::remove(file);
    platform::Log::write('I', "test", "before");  // dormant: nowhere
    ASSERT_FALSE(platform::Log::active());
    platform::Log::start(asked);
    EXPECT_TRUE(platform::Log::active());
    EXPECT_EQ(platform::Log::file(), file);
    platform::Log::write('W', "test", "first\x01");
    OrlThreads::Thread worker("Worker", [] { platform::Log::write('E', "test", "second"); });
    worker.start();
    worker.join();
    platform::Log::stop();
    platform::Log::write('I', "test", "after");
    EXPECT_FALSE(platform::Log::active());

    const std::string text = contents(file);
    const std::size_t firstEnd = text.find("\r\n");
    ASSERT_NE(firstEnd, std::string::npos);
    const std::string first = text.substr(0, firstEnd + 2);
    const std::string second = text.substr(firstEnd + 2);
    // "YYYYMMDD HH:MM:SS " then the rest.
    ASSERT_GE(first.size(), 18u);
    EXPECT_EQ(first[8], ' ');
    EXPECT_EQ(first[11], ':');
    EXPECT_EQ(first[14], ':');
    char expected[64];
    std::snprintf(expected, sizeof expected, " test|host|%.8x W first\\x01\r\n", unsigned(platform::logThreadNumber()));
    EXPECT_EQ(first.substr(17), expected);
    EXPECT_NE(second.find(" test|Worker|"), std::string::npos) << second;
    EXPECT_EQ(second.substr(second.size() - 11), " E second\r\n");
    EXPECT_EQ(text.find("before"), std::string::npos);
    EXPECT_EQ(text.find("after"), std::string::npos);
}

TEST(LogTest, TheDefaultFileIsADotLogFile) {
    EXPECT_EQ(platform::Log::defaultFile().extension(), ".log");
    EXPECT_EQ(platform::Log::defaultFile().filename(), "Tendrane.log");
}
