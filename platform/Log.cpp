#include "platform/Log.h"

#include <atomic>
#include <cstdio>
#include <fstream>
#include <mutex>

#include "platform/OrlFiles/Exception.h"
#include "platform/OrlThreads/Thread.h"

namespace platform {

std::string escapeLogText(std::string_view message) {
    static const char* const hex = "0123456789abcdef";
    std::string out;
    out.reserve(message.size());
    for (char ch : message) {
        const unsigned char c = static_cast<unsigned char>(ch);
        if (c >= 32 && c <= 126) {
            out += ch;
            continue;
        }
        switch (c) {
        case 7: out += "\\a"; continue;
        case 8: out += "\\b"; continue;
        case 9: out += "\\t"; continue;
        case 10: out += "\\n"; continue;
        case 11: out += "\\v"; continue;
        case 12: out += "\\f"; continue;
        case 13: out += "\\r"; continue;
        default: break;
        }
        out += "\\x";
        out += hex[c >> 4];
        out += hex[c & 15];
    }
    return out;
}

std::string formatLogLine(const std::tm& localTime, std::string_view source, std::string_view thread,
                          std::uint32_t threadNumber, char level, std::string_view message) {
    char time[64];
    const std::size_t n = std::strftime(time, sizeof time, "%Y%m%d %H:%M:%S", &localTime);
    std::string line(time, n);
    const std::string s(source), t(thread);
    char head[64];
    // The texts go in apart: they may be of any length.
    line += ' ';
    line += s;
    line += '|';
    line += t;
    std::snprintf(head, sizeof head, "|%.8x %c ", unsigned(threadNumber), level);
    line += head;
    line += escapeLogText(message);
    line += "\r\n";
    return line;
}

namespace {

struct LogState {
    std::mutex lock;
    std::atomic<bool> active{false};
    std::filesystem::path file;
    std::ofstream out;
};

LogState& state() {
    static LogState s;
    return s;
}

}  // namespace

std::filesystem::path Log::defaultFile() {
    std::error_code error;
    std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    if (error) folder = ".";
    return folder / "Tendrane.log";
}

void Log::start(std::filesystem::path file) {
    if (file.empty()) file = defaultFile();
    file.replace_extension(".log");
    LogState& s = state();
    std::lock_guard<std::mutex> lock(s.lock);
    std::ofstream out(file, std::ios::binary | std::ios::app);
    if (!out) throw OrlFiles::Exception("Error opening file", 0);
    s.out = std::move(out);
    s.file = file;
    s.active.store(true, std::memory_order_release);
}

void Log::stop() {
    LogState& s = state();
    std::lock_guard<std::mutex> lock(s.lock);
    s.active.store(false, std::memory_order_release);
    if (s.out.is_open()) s.out.close();
    s.file.clear();
}

bool Log::active() { return state().active.load(std::memory_order_acquire); }

std::filesystem::path Log::file() {
    LogState& s = state();
    std::lock_guard<std::mutex> lock(s.lock);
    return s.file;
}

void Log::write(char level, std::string_view source, std::string_view message) {
    LogState& s = state();
    if (!s.active.load(std::memory_order_acquire)) return;
    try {
        const std::string line =
            formatLogLine(localTimeNow(), source, logThreadName(), logThreadNumber(), level, message);
        std::lock_guard<std::mutex> lock(s.lock);
        if (!s.out.is_open()) return;
        s.out.write(line.data(), std::streamsize(line.size()));
        s.out.flush();
    } catch (...) {
        // A log that cannot be written is no reason to fail.
    }
}

std::string logThreadName() {
    const OrlThreads::Thread* t = OrlThreads::Thread::current();
    return t != nullptr ? t->name() : std::string("host");
}

}  // namespace platform
