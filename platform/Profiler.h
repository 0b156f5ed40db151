// The scope profiler: dormant unless enabled. A ProfileScope times the
// block it lives in and adds the time to its scope's row; the report lists
// every scope after a header and a rule of hyphens, one row each by
// "%-48s  %8ld %11s  %11s  %11s": the name, the number of calls, then the total in milliseconds, the mean
// and the longest call in microseconds, each number by "%6.6g". When timing
// itself may have cost more than half the time measured, the report ends
// in "Error: Estimated measurement overhead too large!!".
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace platform {

class Profiler {
public:
    struct Row {
        std::string scope;
        long calls = 0;
        double totalSeconds = 0;
        double longestSeconds = 0;
    };

    // The process's profiler.
    static Profiler& process();

    void enable(bool on) { enabled_.store(on, std::memory_order_release); }
    bool enabled() const { return enabled_.load(std::memory_order_acquire); }

    // Adds one timed call of a scope. Any thread.
    void add(const char* scope, double seconds);
    // The rows in the order the scopes were first seen.
    std::vector<Row> rows() const;
    void reset();
    // The report of the rows so far, with the overhead measured on this machine.
    std::string report() const;

    // The report's text for given rows, with the cost of timing one call.
    static std::string formatReport(const std::vector<Row>& rows, double overheadSecondsPerCall);
    // What timing one scope costs here, in seconds: measured once.
    static double overheadPerCall();
    // Seconds of a monotonic clock.
    static double now();

private:
    std::atomic<bool> enabled_{false};
};

// Times the block it lives in, when the profiler is enabled at its start.
class ProfileScope {
public:
    explicit ProfileScope(const char* scope)
        : scope_(Profiler::process().enabled() ? scope : nullptr), start_(scope_ != nullptr ? Profiler::now() : 0) {}
    ~ProfileScope() {
        if (scope_ != nullptr) Profiler::process().add(scope_, Profiler::now() - start_);
    }
    ProfileScope(const ProfileScope&) = delete;
    ProfileScope& operator=(const ProfileScope&) = delete;

private:
    const char* scope_;
    double start_;
};

}  // namespace platform
