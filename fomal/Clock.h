// The one clock an editor reads its time from, in milliseconds. A window
// uses the steady clock of the machine; the headless panel and the tests
// use a virtual clock that moves only when told, so that the same events
// give the same pictures.
#pragma once

#include <chrono>
#include <cstdint>

namespace Fomal {

class Clock {
public:
    virtual ~Clock() = default;
    virtual std::int64_t milliseconds() const = 0;
};

class SteadyClock : public Clock {
public:
    std::int64_t milliseconds() const override {
        using namespace std::chrono;
        return duration_cast<std::chrono::milliseconds>(steady_clock::now().time_since_epoch()).count();
    }
};

class VirtualClock : public Clock {
public:
    std::int64_t milliseconds() const override { return now_; }
    void advance(std::int64_t ms) { now_ += ms; }

private:
    std::int64_t now_ = 0;
};

}  // namespace Fomal
