#include "platform/OrlThreads/Exception.h"
#include "platform/OrlThreads/Thread.h"
#include "platform/OrlThreads/TickCount.h"
#include "platform/OrlThreads/WaitableEvent.h"

#include <gtest/gtest.h>

#include <atomic>
#include <pthread.h>
#include <stdexcept>

namespace {

using OrlThreads::Thread;
using OrlThreads::WaitableEvent;
using Result = OrlThreads::WaitableEvent::WaitResult;

template <class F>
std::string failureOf(F&& operation) {
    try {
        operation();
    } catch (const OrlThreads::Exception& e) {
        return e.what();
    }
    return "(no failure)";
}

TEST(Thread, RunsOnlyOnceStarted) {
    WaitableEvent ran;
    Thread t("Worker", [&] { ran.set(); });
    t.create();
    EXPECT_TRUE(t.created());
    EXPECT_EQ(ran.wait(50), Result::timedOut);
    t.start();
    EXPECT_EQ(ran.wait(10000), Result::signaled);
    t.join();
    EXPECT_TRUE(t.finished());
}

TEST(Thread, CurrentIsTheThreadObjectOfTheCallingThread) {
    EXPECT_EQ(Thread::current(), nullptr);
    const Thread* seen = nullptr;
    char systemName[32] = {};
    Thread t("A rather long thread name", [&] {
        seen = Thread::current();
        pthread_getname_np(pthread_self(), systemName, sizeof systemName);
    });
    t.start();
    t.join();
    EXPECT_EQ(seen, &t);
    EXPECT_EQ(t.name(), "A rather long thread name");
    EXPECT_STREQ(systemName, "A rather long t");  // the system keeps 15 characters
}

TEST(Thread, ARunOverrideIsTheThreadsWork) {
    class Counter : public Thread {
    public:
        Counter() : Thread("Counter") {}
        int count = 0;

    protected:
        void run() override {
            for (int i = 0; i < 1000; ++i)
                ++count;
        }
    };
    Counter c;
    c.start();
    c.join();
    EXPECT_EQ(c.count, 1000);
}

TEST(Thread, AFailingBodyEndsOnlyItsThread) {
    Thread t("Failing", [] { throw std::runtime_error("lost"); });
    t.start();
    t.join();
    EXPECT_TRUE(t.finished());
}

TEST(Thread, ANeverStartedThreadRunsNothing) {
    std::atomic<bool> ran{false};
    {
        Thread t("Idle", [&] { ran = true; });
        t.create();
    }
    EXPECT_FALSE(ran.load());
}

TEST(Thread, DestroyingAStartedThreadWaitsForIt) {
    std::atomic<int> steps{0};
    {
        Thread t("Busy", [&] {
            for (int i = 0; i < 100000; ++i)
                steps.fetch_add(1, std::memory_order_relaxed);
        });
        t.start();
    }
    EXPECT_EQ(steps.load(), 100000);
}

TEST(Thread, JoiningAThreadNeverCreatedFails) {
    Thread t("Never");
    EXPECT_EQ(failureOf([&] { t.join(); }), "Error waiting on thread to finish [3 : No such process]");
}

TEST(Thread, AThreadJoiningItselfFailsWithTheSystemsText) {
    std::string failure;
    Thread t("Self", [&] { failure = failureOf([&] { Thread::current()->join(); }); });
    t.start();
    t.join();
    EXPECT_EQ(failure, "Error waiting on thread to finish [35 : Resource deadlock avoided]");
}

TEST(Thread, PriorityCanBeLowered) {
    WaitableEvent release;
    Thread t("Low", [&] { release.wait(); });
    t.start();
    EXPECT_NO_THROW(t.setPriority(Thread::Priority::lowest));
    release.set();
    t.join();
}

TEST(Thread, SettingThePriorityOfAThreadNeverCreatedFails) {
    Thread t("Never");
    EXPECT_EQ(failureOf([&] { t.setPriority(Thread::Priority::belowNormal); }),
              "Error setting thread priority [3 : No such process]");
}

TEST(Thread, KillEndsAThreadStuckInAWait) {
    WaitableEvent never;
    WaitableEvent waiting;
    std::atomic<bool> passed{false};
    Thread t("Stuck", [&] {
        waiting.set();
        never.wait();
        passed = true;
    });
    t.start();
    ASSERT_EQ(waiting.wait(10000), Result::signaled);
    t.kill();
    EXPECT_TRUE(t.finished());
    EXPECT_FALSE(passed.load());
    EXPECT_EQ(failureOf([&] { t.kill(); }), "Error killing thread [3 : No such process]");
}

TEST(Thread, AQueuedCallRunsOnTheWaitingThreadAndEndsItsWait) {
    WaitableEvent never;
    WaitableEvent waiting;
    std::atomic<const Thread*> ranOn{nullptr};
    Result result = Result::signaled;
    Thread t("Alertable", [&] {
        waiting.set();
        result = never.wait();
    });
    t.start();
    ASSERT_EQ(waiting.wait(10000), Result::signaled);
    t.queueCall([&] { ranOn = Thread::current(); });
    t.join();
    EXPECT_EQ(result, Result::alerted);
    EXPECT_EQ(ranOn.load(), &t);
}

TEST(Thread, ACallQueuedBeforeTheWaitRunsWhenTheWaitBegins) {
    // The thread holds back with a spin, not a wait: a wait would take the calls.
    std::atomic<bool> queued{false};
    WaitableEvent never;
    std::atomic<int> calls{0};
    Result result = Result::signaled;
    Thread t("Alertable", [&] {
        while (!queued.load())
            OrlThreads::yieldThread();
        result = never.wait();
    });
    t.start();
    t.queueCall([&] { ++calls; });
    t.queueCall([&] { ++calls; });
    queued = true;
    t.join();
    EXPECT_EQ(result, Result::alerted);
    EXPECT_EQ(calls.load(), 2);
}

TEST(Thread, AnAlertLeavesTheEventsSignalForTheNextWait) {
    WaitableEvent event;
    std::atomic<bool> ready{false};
    Result first = Result::timedOut, second = Result::timedOut;
    Thread t("Alertable", [&] {
        while (!ready.load())
            OrlThreads::yieldThread();
        first = event.wait();
        second = event.wait(0);
    });
    t.start();
    t.queueCall([] {});
    event.set();
    ready = true;
    t.join();
    EXPECT_EQ(first, Result::alerted);
    EXPECT_EQ(second, Result::signaled);
}

TEST(Thread, QueueingACallToAThreadNeverCreatedFails) {
    Thread t("Never");
    EXPECT_EQ(failureOf([&] { t.queueCall([] {}); }), "Error queueing a call to thread [3 : No such process]");
}

}  // namespace
