#include "platform/Profiler.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <mutex>

namespace platform {

namespace {

struct Table {
    std::mutex lock;
    std::vector<Profiler::Row> rows;
};

Table& table() {
    static Table t;
    return t;
}

std::string number(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%6.6g", value);
    return text;
}

}  // namespace

Profiler& Profiler::process() {
    static Profiler p;
    return p;
}

double Profiler::now() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

void Profiler::add(const char* scope, double seconds) {
    Table& t = table();
    std::lock_guard<std::mutex> lock(t.lock);
    auto it = std::find_if(t.rows.begin(), t.rows.end(), [&](const Row& r) { return r.scope == scope; });
    if (it == t.rows.end()) {
        t.rows.push_back(Row{scope, 0, 0, 0});
        it = t.rows.end() - 1;
    }
    ++it->calls;
    it->totalSeconds += seconds;
    it->longestSeconds = std::max(it->longestSeconds, seconds);
}

std::vector<Profiler::Row> Profiler::rows() const {
    Table& t = table();
    std::lock_guard<std::mutex> lock(t.lock);
    return t.rows;
}

void Profiler::reset() {
    Table& t = table();
    std::lock_guard<std::mutex> lock(t.lock);
    t.rows.clear();
}

std::string Profiler::report() const { return formatReport(rows(), overheadPerCall()); }

double Profiler::overheadPerCall() {
    static const double overhead = [] {
        // Two clock readings and a row update, as a scope costs, many times.
        constexpr int N = 2000;
        const double start = now();
        volatile double sink = 0;
        for (int i = 0; i < N; ++i) {
            const double a = now();
            sink = sink + (now() - a);
        }
        return (now() - start) / N;
    }();
    return overhead;
}

std::string Profiler::formatReport(const std::vector<Row>& rows, double overheadSecondsPerCall) {
    std::string out = "\nScope                                                Calls\n";
    out += std::string(60, '-');
    out += '\n';
    double measured = 0, overhead = 0;
    for (const Row& r : rows) {
        const double mean = r.calls > 0 ? r.totalSeconds / double(r.calls) : 0;
        const std::string total = number(r.totalSeconds * 1e3);
        const std::string average = number(mean * 1e6);
        const std::string longest = number(r.longestSeconds * 1e6);
        char line[512];
        std::snprintf(line, sizeof line, "%-48s  %8ld %11s  %11s  %11s", r.scope.c_str(), r.calls, total.c_str(),
                      average.c_str(), longest.c_str());
        out += line;
        out += '\n';
        measured += r.totalSeconds;
        overhead += double(r.calls) * overheadSecondsPerCall;
    }
    if (overhead > 0 && overhead * 2 > measured) out += "Error: Estimated measurement overhead too large!!\n";
    return out;
}

}  // namespace platform
