// The process's timer service: one-shot tasks, each an object and an id,
// due at an absolute time of the system tick count.
//
// How a periodic task is made (the startup bank's tasks 1010 and 1011):
//
//   class Instance : public OrlThreads::TimerClient {
//       Instance()  { auto& t = OrlThreads::TimerService::process();
//                     t.schedule(10, this, 1010); t.schedule(1000, this, 1011); }
//       ~Instance() { OrlThreads::TimerService::process().cancelAll(this); }
//       void timerFired(int id) override {
//           ... the work ...
//           OrlThreads::TimerService::process().schedule(id == 1010 ? 10 : 1000, this, id);
//       }
//   };
//
// Rules:
// - A task runs once, no earlier than delayMs after schedule(); to repeat,
//   schedule again from timerFired.
// - Tasks run one at a time on the service's own thread, in order of due
//   time; tasks due at the same time run in the order they were scheduled.
// - schedule() adds a task even when the same object and id are pending.
// - cancel()/cancelAll() drop pending tasks. cancelAll(object) also waits
//   until a timerFired of that object running on the service's thread has
//   returned, so the object may be destroyed right after; called from the
//   object's own timerFired, it does not wait.
// - An exception thrown by timerFired is dropped.
// - Every member may be called from any thread, timerFired included.
#pragma once

#include "platform/OrlThreads/Thread.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace OrlThreads {

class TimerClient {
public:
    // Runs on the service's thread (or in runDue for a manual service).
    virtual void timerFired(int id) = 0;

protected:
    ~TimerClient() = default;
};

class TimerService {
public:
    using Clock = std::function<std::uint64_t()>;  // milliseconds
    enum class Mode {
        ownThread,  // a thread of the service runs due tasks
        manual,     // nothing runs until runDue() is called
    };

    // The one service of the process: its own thread, the system tick count.
    static TimerService& process();

    explicit TimerService(Mode mode = Mode::ownThread, Clock clock = {});
    ~TimerService();
    TimerService(const TimerService&) = delete;
    TimerService& operator=(const TimerService&) = delete;

    void schedule(std::uint32_t delayMs, TimerClient* object, int id);
    void cancel(TimerClient* object, int id);
    void cancelAll(TimerClient* object);

    // The number of tasks not yet run.
    std::size_t pending() const;
    // Manual mode: runs every task due by now (the clock's time), tasks
    // scheduled meanwhile included if already due. Returns how many ran.
    std::size_t runDue();

private:
    struct Task {
        std::uint64_t due;
        std::uint64_t sequence;
        TimerClient* object;
        int id;
    };

    void serve();
    // Takes the first task if due (lock held); false if none is.
    bool takeDue(std::uint64_t now, Task& task);
    void fire(std::unique_lock<std::mutex>& lock, const Task& task);

    Clock clock_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Task> tasks_;  // ordered by due time, then sequence
    std::uint64_t nextSequence_ = 0;
    TimerClient* running_ = nullptr;  // whose timerFired runs now
    std::thread::id runningThread_;   // and on which thread
    bool stopping_ = false;
    std::unique_ptr<Thread> thread_;
};

}  // namespace OrlThreads
