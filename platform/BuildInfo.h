// What the program says about its own build: the texts behind the script
// variables `build.*` and `platform.*` and the detailed version alert.
#pragma once

#include <string>

namespace platform {

struct BuildInfo {
    std::string target;    // "Release" or "Debug"
    std::string version;   // "1.0.0"
    std::string number;    // "140"
    std::string date;      // the compiler's date of the build, "Nov 25 2026"
    std::string time;      // and its time, "05:43:54"
    std::string compiler;  // "GCC 12.2.0"
    std::string libs;      // the outside libraries with their versions
    std::string os;        // "linux" or "windows"
    std::string cpu;       // "x64", "x86" or "arm64"
};

const BuildInfo& buildInfo();

}  // namespace platform
