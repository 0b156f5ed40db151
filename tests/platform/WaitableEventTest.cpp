#include "platform/OrlThreads/Thread.h"
#include "platform/OrlThreads/TickCount.h"
#include "platform/OrlThreads/WaitableEvent.h"

#include <gtest/gtest.h>

#include <atomic>

namespace {

using OrlThreads::Thread;
using OrlThreads::WaitableEvent;
using Result = OrlThreads::WaitableEvent::WaitResult;

TEST(WaitableEvent, AnAutomaticEventLetsOneWaitThroughPerSet) {
    WaitableEvent e;
    EXPECT_EQ(e.wait(0), Result::timedOut);
    e.set();
    EXPECT_EQ(e.wait(0), Result::signaled);
    EXPECT_EQ(e.wait(0), Result::timedOut);
}

TEST(WaitableEvent, AManualEventStaysSetUntilReset) {
    WaitableEvent e(WaitableEvent::Reset::manual);
    e.set();
    EXPECT_EQ(e.wait(0), Result::signaled);
    EXPECT_EQ(e.wait(0), Result::signaled);
    e.reset();
    EXPECT_EQ(e.wait(0), Result::timedOut);
}

TEST(WaitableEvent, CanStartSet) {
    WaitableEvent e(WaitableEvent::Reset::automatic, true);
    EXPECT_EQ(e.wait(0), Result::signaled);
    EXPECT_EQ(e.wait(0), Result::timedOut);
}

TEST(WaitableEvent, ATimedWaitEndsWithoutTheEvent) {
    WaitableEvent e;
    const auto before = OrlThreads::tickCount();
    EXPECT_EQ(e.wait(30), Result::timedOut);
    EXPECT_GE(OrlThreads::tickCount() - before, 29u);
}

TEST(WaitableEvent, SetOnOneThreadWakesAWaiterOnAnother) {
    WaitableEvent go;
    WaitableEvent done;
    Thread t("Waiter", [&] {
        if (go.wait() == Result::signaled)
            done.set();
    });
    t.start();
    go.set();
    EXPECT_EQ(done.wait(10000), Result::signaled);
    t.join();
}

TEST(WaitableEvent, AnAutomaticEventReleasesOneOfTwoWaitersPerSet) {
    WaitableEvent gate;
    std::atomic<int> through{0};
    auto body = [&] {
        gate.wait();
        through.fetch_add(1);
    };
    Thread a("A", body), b("B", body);
    a.start();
    b.start();
    gate.set();
    while (through.load() < 1)
        OrlThreads::yieldThread();
    WaitableEvent pause;
    pause.wait(50);
    EXPECT_EQ(through.load(), 1);
    gate.set();
    a.join();
    b.join();
    EXPECT_EQ(through.load(), 2);
}

TEST(WaitableEvent, AManualEventReleasesEveryWaiter) {
    WaitableEvent gate(WaitableEvent::Reset::manual);
    std::atomic<int> through{0};
    auto body = [&] {
        gate.wait();
        through.fetch_add(1);
    };
    Thread a("A", body), b("B", body), c("C", body);
    a.start();
    b.start();
    c.start();
    gate.set();
    a.join();
    b.join();
    c.join();
    EXPECT_EQ(through.load(), 3);
}

TEST(TickCount, NeverGoesBack) {
    auto last = OrlThreads::tickCount();
    for (int i = 0; i < 1000; ++i) {
        const auto now = OrlThreads::tickCount();
        ASSERT_GE(now, last);
        last = now;
    }
}

}  // namespace
