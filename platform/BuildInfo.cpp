#include "platform/BuildInfo.h"

#ifndef _WIN32
#include <ft2build.h>
#include FT_FREETYPE_H
#endif

#include "platform/Version.h"

namespace platform {

namespace {

std::string compilerText() {
#if defined(__clang__)
    return std::string("Clang ") + __clang_version__;
#elif defined(__GNUC__)
    return "GCC " + std::to_string(__GNUC__) + "." + std::to_string(__GNUC_MINOR__) + "." +
           std::to_string(__GNUC_PATCHLEVEL__);
#else
    return "unknown compiler";
#endif
}

std::string libraryText() {
#if defined(_WIN32)
    return "Win32";
#else
    return "FreeType " + std::to_string(FREETYPE_MAJOR) + "." + std::to_string(FREETYPE_MINOR) + "." +
           std::to_string(FREETYPE_PATCH) + ", Xlib";
#endif
}

}  // namespace

const BuildInfo& buildInfo() {
    static const BuildInfo info{
#ifdef NDEBUG
        "Release",
#else
        "Debug",
#endif
        kVersionString,
        kBuildNumber,
        __DATE__,
        __TIME__,
        compilerText(),
        libraryText(),
#if defined(_WIN32)
        "windows",
#else
        "linux",
#endif
#if defined(__x86_64__) || defined(_M_X64)
        "x64",
#elif defined(__aarch64__)
        "arm64",
#else
        "x86",
#endif
    };
    return info;
}

}  // namespace platform
