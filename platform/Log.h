// The development log: a text file of lines, dormant unless started. A
// line reads
//
//   20261125 07:52:03 script|host|00003a1f D Tendrane on linux x64\n
//
// the local time, the source and the thread's name ("host" for threads the
// module did not make), the thread's number in eight hexadecimal digits, a
// level letter, then the message with its non-printable bytes escaped as
// script strings escape them, and CR LF.
#pragma once

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <string>
#include <string_view>

namespace platform {

namespace LogLevel {
constexpr char debug = 'D';
constexpr char info = 'I';
constexpr char warning = 'W';
constexpr char error = 'E';
}  // namespace LogLevel

// The message as it stands in a line: control bytes and bytes above 126 as
// "\n", "\t", "\x1f"...; every other byte as it is.
std::string escapeLogText(std::string_view message);

// One whole line, "\r\n" included.
std::string formatLogLine(const std::tm& localTime, std::string_view source, std::string_view thread,
                          std::uint32_t threadNumber, char level, std::string_view message);

class Log {
public:
    // Starts writing to `file`, its extension made ".log"; appends to what
    // is there. An empty path takes defaultFile(). Failure: OrlFiles::Exception
    // "Error opening file".
    static void start(std::filesystem::path file = {});
    // Dormant again; the file is closed.
    static void stop();
    static bool active();
    static std::filesystem::path file();
    // "Tendrane.log" in the system's folder for temporary files.
    static std::filesystem::path defaultFile();

    // Appends one line, with the calling thread's name and number. Nothing
    // when dormant. Never throws.
    static void write(char level, std::string_view source, std::string_view message);
};

// The calling thread as the log names it, and its number.
std::string logThreadName();
std::uint32_t logThreadNumber();
// The local time now.
std::tm localTimeNow();

}  // namespace platform
