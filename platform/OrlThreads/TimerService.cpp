#include "platform/OrlThreads/TimerService.h"

#include "platform/OrlThreads/TickCount.h"

#include <algorithm>

namespace OrlThreads {

TimerService& TimerService::process() {
    static TimerService service;
    return service;
}

TimerService::TimerService(Mode mode, Clock clock) : clock_(clock ? std::move(clock) : Clock(tickCount)) {
    if (mode == Mode::ownThread) {
        thread_ = std::make_unique<Thread>("Timer service", [this] { serve(); });
        thread_->start();
    }
}

TimerService::~TimerService() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    if (thread_)
        thread_->join();
}

void TimerService::schedule(std::uint32_t delayMs, TimerClient* object, int id) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        const Task task{clock_() + delayMs, nextSequence_++, object, id};
        const auto at = std::upper_bound(tasks_.begin(), tasks_.end(), task, [](const Task& a, const Task& b) {
            return a.due != b.due ? a.due < b.due : a.sequence < b.sequence;
        });
        tasks_.insert(at, task);
    }
    changed_.notify_all();
}

void TimerService::cancel(TimerClient* object, int id) {
    std::lock_guard<std::mutex> lock(mutex_);
    std::erase_if(tasks_, [&](const Task& t) { return t.object == object && t.id == id; });
}

void TimerService::cancelAll(TimerClient* object) {
    std::unique_lock<std::mutex> lock(mutex_);
    std::erase_if(tasks_, [&](const Task& t) { return t.object == object; });
    changed_.wait(lock, [&] { return running_ != object || runningThread_ == std::this_thread::get_id(); });
}

std::size_t TimerService::pending() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return tasks_.size();
}

bool TimerService::takeDue(std::uint64_t now, Task& task) {
    if (tasks_.empty() || tasks_.front().due > now)
        return false;
    task = tasks_.front();
    tasks_.erase(tasks_.begin());
    return true;
}

// Runs the task's timerFired without the lock.
void TimerService::fire(std::unique_lock<std::mutex>& lock, const Task& task) {
    running_ = task.object;
    runningThread_ = std::this_thread::get_id();
    lock.unlock();
    try {
        task.object->timerFired(task.id);
    } catch (...) {
        // A task has no one to report to.
    }
    lock.lock();
    running_ = nullptr;
    runningThread_ = {};
    changed_.notify_all();
}

std::size_t TimerService::runDue() {
    std::unique_lock<std::mutex> lock(mutex_);
    std::size_t count = 0;
    Task task{};
    while (takeDue(clock_(), task)) {
        fire(lock, task);
        ++count;
    }
    return count;
}

void TimerService::serve() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stopping_) {
        const std::uint64_t now = clock_();
        Task task{};
        if (takeDue(now, task)) {
            fire(lock, task);
        } else if (tasks_.empty()) {
            changed_.wait(lock);
        } else {
            changed_.wait_for(lock, std::chrono::milliseconds(tasks_.front().due - now));
        }
    }
}

}  // namespace OrlThreads
