// The stack walker: frames of the calling thread, printed as "function in
// module" with the fall-backs for what the platform cannot name.
#include "platform/StackTrace.h"

#include <gtest/gtest.h>

namespace {

__attribute__((noinline)) dbg::stack captureHere() { return dbg::stack(); }

}  // namespace

extern "C" __attribute__((noinline)) void tendraneStackTraceProbe(dbg::stack* out) {
    *out = dbg::stack();
}

TEST(StackTraceTest, AFrameIsFunctionInModule) {
    dbg::stack_frame f;
    f.function = "render";
    f.module = "/usr/lib/vst/Tendrane.so";
    EXPECT_EQ(dbg::stack::line(f), "render in /usr/lib/vst/Tendrane.so");
}

TEST(StackTraceTest, WhatIsNotKnownHasItsFallBack) {
    EXPECT_EQ(dbg::stack::line(dbg::stack_frame{}), "[unknown function] in [unknown module]");
    dbg::stack_frame onlyModule;
    onlyModule.module = "libc.so.6";
    EXPECT_EQ(dbg::stack::line(onlyModule), "[unknown function] in libc.so.6");
}

TEST(StackTraceTest, TheFailuresOfTheSymbolServiceReadAsWritten) {
    EXPECT_STREQ(dbg::stack::missingLibrary("dbghelp.dll").what(), "Failed to load dll dbghelp.dll");
    EXPECT_STREQ(dbg::stack::missingFunction("RtlCaptureContext", "kernel32.dll").what(),
                 "failed to load function RtlCaptureContext from library kernel32.dll");
    try {
        throw dbg::stack::missingLibrary("x.dll");
    } catch (const std::exception& e) {  // a standard exception
        EXPECT_STREQ(e.what(), "Failed to load dll x.dll");
    }
}

TEST(StackTraceTest, TheCapturedFramesLeadBackThroughTheCallers) {
    const dbg::stack s = captureHere();
    ASSERT_GE(s.frames().size(), 3u);
    for (const dbg::stack_frame& f : s.frames()) EXPECT_NE(f.address, nullptr);
    // Every line has its two halves.
    const std::string text = s.str();
    std::size_t lines = 0;
    for (std::size_t at = 0; (at = text.find(" in ", at)) != std::string::npos; ++at) ++lines;
    EXPECT_GE(lines, s.frames().size());
    EXPECT_EQ(text.back(), '\n');
    // The C library's start of the program is named with its module.
    bool libc = false;
    for (const dbg::stack_frame& f : s.frames())
        if (f.module.find("libc") != std::string::npos && !f.function.empty()) libc = true;
    EXPECT_TRUE(libc) << text;
}

TEST(StackTraceTest, SkippingLeavesOutTheInnermostFrames) {
    const dbg::stack all;
    const dbg::stack fewer(1);
    ASSERT_GE(all.frames().size(), 2u);
    ASSERT_EQ(fewer.frames().size() + 1, all.frames().size());
}

TEST(StackTraceTest, TheFirstFrameIsTheCallersOwn) {
    dbg::stack s(0, 4);
    tendraneStackTraceProbe(&s);
    ASSERT_FALSE(s.frames().empty());
    // The walker's own frame is left out: the first return address lies in
    // the function that made the stack.
    const char* probe = reinterpret_cast<const char*>(&tendraneStackTraceProbe);
    const char* first = static_cast<const char*>(s.frames()[0].address);
    EXPECT_GT(first, probe);
    EXPECT_LT(first, probe + 256) << s.str();
    EXPECT_FALSE(s.frames()[0].module.empty());
}
