#include "platform/OrlThreads/Thread.h"
#include "platform/OrlThreads/TimerService.h"
#include "platform/OrlThreads/WaitableEvent.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

using OrlThreads::TimerClient;
using OrlThreads::TimerService;
using OrlThreads::WaitableEvent;
using Result = OrlThreads::WaitableEvent::WaitResult;

// A manual service whose clock the test moves.
struct ManualTimers {
    std::uint64_t now = 5000;
    TimerService service{TimerService::Mode::manual, [this] { return now; }};
};

// Notes every firing as (name, id).
struct Log {
    std::mutex mutex;
    std::vector<std::pair<char, int>> fired;
    void add(char name, int id) {
        std::lock_guard<std::mutex> lock(mutex);
        fired.emplace_back(name, id);
    }
};

class Recorder : public TimerClient {
public:
    Recorder(char name, Log& log) : name_(name), log_(log) {}
    void timerFired(int id) override { log_.add(name_, id); }

private:
    char name_;
    Log& log_;
};

using Firings = std::vector<std::pair<char, int>>;

TEST(TimerService, ATaskRunsOnceWhenDue) {
    ManualTimers t;
    Log log;
    Recorder a('a', log);
    t.service.schedule(10, &a, 1010);
    t.now += 9;
    EXPECT_EQ(t.service.runDue(), 0u);
    t.now += 1;
    EXPECT_EQ(t.service.runDue(), 1u);
    t.now += 1000;
    EXPECT_EQ(t.service.runDue(), 0u);
    EXPECT_EQ(log.fired, (Firings{{'a', 1010}}));
}

TEST(TimerService, TasksRunInOrderOfDueTime) {
    ManualTimers t;
    Log log;
    Recorder a('a', log), b('b', log);
    t.service.schedule(1000, &a, 1011);
    t.service.schedule(10, &a, 1010);
    t.service.schedule(500, &b, 7);
    EXPECT_EQ(t.service.pending(), 3u);
    t.now += 2000;
    EXPECT_EQ(t.service.runDue(), 3u);
    EXPECT_EQ(log.fired, (Firings{{'a', 1010}, {'b', 7}, {'a', 1011}}));
}

TEST(TimerService, TasksDueTogetherRunInTheOrderScheduled) {
    ManualTimers t;
    Log log;
    Recorder a('a', log), b('b', log);
    t.service.schedule(10, &b, 2);
    t.service.schedule(10, &a, 1);
    t.service.schedule(10, &b, 3);
    t.now += 10;
    t.service.runDue();
    EXPECT_EQ(log.fired, (Firings{{'b', 2}, {'a', 1}, {'b', 3}}));
}

TEST(TimerService, TheSameObjectAndIdScheduledTwiceRunTwice) {
    ManualTimers t;
    Log log;
    Recorder a('a', log);
    t.service.schedule(10, &a, 1010);
    t.service.schedule(20, &a, 1010);
    t.now += 20;
    EXPECT_EQ(t.service.runDue(), 2u);
}

TEST(TimerService, CancelDropsTheTasksOfOneId) {
    ManualTimers t;
    Log log;
    Recorder a('a', log), b('b', log);
    t.service.schedule(10, &a, 1010);
    t.service.schedule(10, &a, 1011);
    t.service.schedule(10, &b, 1010);
    t.service.cancel(&a, 1010);
    t.now += 10;
    t.service.runDue();
    EXPECT_EQ(log.fired, (Firings{{'a', 1011}, {'b', 1010}}));
}

TEST(TimerService, CancelAllDropsEveryTaskOfAnObject) {
    ManualTimers t;
    Log log;
    Recorder a('a', log), b('b', log);
    t.service.schedule(10, &a, 1010);
    t.service.schedule(1000, &a, 1011);
    t.service.schedule(10, &b, 1010);
    t.service.cancelAll(&a);
    EXPECT_EQ(t.service.pending(), 1u);
    t.now += 1000;
    t.service.runDue();
    EXPECT_EQ(log.fired, (Firings{{'b', 1010}}));
}

// Repeats itself the way the startup bank's tasks do.
class Periodic : public TimerClient {
public:
    Periodic(TimerService& service, Log& log) : service_(service), log_(log) {
        service_.schedule(10, this, 1010);
        service_.schedule(1000, this, 1011);
    }
    ~Periodic() { service_.cancelAll(this); }
    void timerFired(int id) override {
        log_.add('p', id);
        service_.schedule(id == 1010 ? 10 : 1000, this, id);
    }

private:
    TimerService& service_;
    Log& log_;
};

TEST(TimerService, ATaskScheduledFromItsOwnFiringRepeats) {
    ManualTimers t;
    Log log;
    {
        Periodic p(t.service, log);
        for (int step = 0; step < 200; ++step) {
            t.now += 10;
            t.service.runDue();
        }
        EXPECT_EQ(t.service.pending(), 2u);
    }
    EXPECT_EQ(t.service.pending(), 0u);
    int fast = 0, slow = 0;
    for (const auto& [name, id] : log.fired)
        (id == 1010 ? fast : slow)++;
    EXPECT_EQ(fast, 200);
    EXPECT_EQ(slow, 2);
}

TEST(TimerService, AFailingTaskDoesNotStopTheOthers) {
    class Failing : public TimerClient {
    public:
        void timerFired(int) override { throw std::runtime_error("lost"); }
    };
    ManualTimers t;
    Log log;
    Failing f;
    Recorder a('a', log);
    t.service.schedule(10, &f, 1);
    t.service.schedule(10, &a, 2);
    t.now += 10;
    EXPECT_EQ(t.service.runDue(), 2u);
    EXPECT_EQ(log.fired, (Firings{{'a', 2}}));
}

class Signaller : public TimerClient {
public:
    WaitableEvent fired;
    std::atomic<const OrlThreads::Thread*> thread{nullptr};
    void timerFired(int) override {
        thread = OrlThreads::Thread::current();
        fired.set();
    }
};

TEST(TimerServiceThread, RunsDueTasksOnItsOwnThread) {
    TimerService service;
    Signaller s;
    service.schedule(10, &s, 1010);
    ASSERT_EQ(s.fired.wait(10000), Result::signaled);
    ASSERT_NE(s.thread.load(), nullptr);
    EXPECT_EQ(s.thread.load()->name(), "Timer service");
    EXPECT_EQ(service.pending(), 0u);
}

TEST(TimerServiceThread, AnEarlierTaskScheduledLaterRunsFirst) {
    TimerService service;
    Log log;
    Recorder slow('s', log);
    Signaller quick;
    service.schedule(60000, &slow, 1);
    service.schedule(10, &quick, 2);
    ASSERT_EQ(quick.fired.wait(10000), Result::signaled);
    EXPECT_TRUE(log.fired.empty());
    service.cancelAll(&slow);
}

TEST(TimerServiceThread, CancelAllWaitsForARunningFiringToReturn) {
    class Blocking : public TimerClient {
    public:
        WaitableEvent entered, release;
        std::atomic<bool> returned{false};
        void timerFired(int) override {
            entered.set();
            release.wait();
            returned = true;
        }
    };
    TimerService service;
    Blocking b;
    service.schedule(0, &b, 1);
    ASSERT_EQ(b.entered.wait(10000), Result::signaled);
    std::atomic<bool> cancelled{false};
    OrlThreads::Thread canceller("Canceller", [&] {
        service.cancelAll(&b);
        cancelled = true;
    });
    canceller.start();
    WaitableEvent pause;
    pause.wait(50);
    EXPECT_FALSE(cancelled.load());
    b.release.set();
    canceller.join();
    EXPECT_TRUE(cancelled.load());
    EXPECT_TRUE(b.returned.load());
}

TEST(TimerServiceThread, CancelAllFromTheObjectsOwnFiringDoesNotWait) {
    class SelfCancelling : public TimerClient {
    public:
        explicit SelfCancelling(TimerService& s) : service(s) {}
        TimerService& service;
        WaitableEvent done;
        void timerFired(int) override {
            service.schedule(100000, this, 2);
            service.cancelAll(this);
            done.set();
        }
    };
    TimerService service;
    SelfCancelling s(service);
    service.schedule(0, &s, 1);
    ASSERT_EQ(s.done.wait(10000), Result::signaled);
    EXPECT_EQ(service.pending(), 0u);
}

TEST(TimerServiceThread, TheProcessHasOneService) {
    EXPECT_EQ(&TimerService::process(), &TimerService::process());
    Signaller s;
    TimerService::process().schedule(1, &s, 1010);
    EXPECT_EQ(s.fired.wait(10000), Result::signaled);
}

}  // namespace
