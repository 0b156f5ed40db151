// The scope profiler: the exact form of its report, and scopes that are
// timed only while it is enabled.
#include "platform/Profiler.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

const std::string HEADER =
    "\nScope                                                Calls\n"
    "------------------------------------------------------------\n";

}  // namespace

TEST(ProfilerTest, TheReportHasItsHeaderRuleAndRows) {
    std::vector<platform::Profiler::Row> rows = {
        {"paint", 120, 0.04825, 0.0012105},
        {"a scope with a name that is longer than forty-eight bytes", 3, 1.5, 0.75},
    };
    const std::string report = platform::Profiler::formatReport(rows, 1e-9);
    EXPECT_EQ(report, HEADER +
                          "paint                                                  120       48.25      402.083       1210.5\n"
                          "a scope with a name that is longer than forty-eight bytes         3        1500       500000"
                          "       750000\n");
}

TEST(ProfilerTest, NumbersHaveSixSignificantDigits) {
    const std::string report = platform::Profiler::formatReport({{"x", 7, 123.4567891, 1e-9}}, 0);
    EXPECT_EQ(report, HEADER + "x                                                        7      123457  1.76367e+07        0.001\n");
}

TEST(ProfilerTest, AnEmptyReportIsTheHeaderAlone) {
    EXPECT_EQ(platform::Profiler::formatReport({}, 1e-6), HEADER);
}

TEST(ProfilerTest, TooMuchOverheadEndsTheReportInAnError) {
    // A million calls measured at one millisecond in all, each costing a
    // microsecond to time: the timing is most of what was measured.
    const std::string report = platform::Profiler::formatReport({{"tiny", 1000000, 0.001, 1e-6}}, 1e-6);
    const std::string tail = "Error: Estimated measurement overhead too large!!\n";
    ASSERT_GE(report.size(), tail.size());
    EXPECT_EQ(report.substr(report.size() - tail.size()), tail);
    EXPECT_EQ(report.find(tail), report.size() - tail.size());
    // Cheap timing of long calls: no error.
    EXPECT_EQ(platform::Profiler::formatReport({{"long", 10, 1.0, 0.2}}, 1e-6).find("Error"), std::string::npos);
}

TEST(ProfilerTest, ScopesAreTimedOnlyWhileEnabled) {
    platform::Profiler& p = platform::Profiler::process();
    p.reset();
    { platform::ProfileScope s("dormant"); }
    EXPECT_TRUE(p.rows().empty());
    p.enable(true);
    for (int i = 0; i < 3; ++i) {
        platform::ProfileScope s("sleep");
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    p.enable(false);
    { platform::ProfileScope s("after"); }
    const auto rows = p.rows();
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].scope, "sleep");
    EXPECT_EQ(rows[0].calls, 3);
    EXPECT_GE(rows[0].totalSeconds, 0.006);
    EXPECT_GE(rows[0].longestSeconds, 0.002);
    EXPECT_LE(rows[0].longestSeconds, rows[0].totalSeconds);
    const std::string report = p.report();
    EXPECT_EQ(report.rfind(HEADER, 0), 0u);
    // The name filled to 48 bytes, two blanks, the calls in eight places.
    EXPECT_NE(report.find("\nsleep" + std::string(43 + 2 + 7, ' ') + "3 "), std::string::npos) << report;
    EXPECT_GT(platform::Profiler::overheadPerCall(), 0.0);
    p.reset();
}
