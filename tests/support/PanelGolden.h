// What the tests of `tendrane panel` share: a scratch folder, the panel
// run in-process, and its picture compared with a stored one pixel for
// pixel (TENDRANE_WRITE_GOLDEN=1 replaces the stored picture, only after
// looking at it).
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Command.h"
#include "pixels/Png.h"

namespace panelgolden {

namespace fs = std::filesystem;

inline const fs::path GOLDEN = fs::path(TENDRANE_SOURCE_DIR) / "tests/golden/panel";

// A folder of its own for one test's files, gone when the test ends.
struct Scratch {
    fs::path dir;
    explicit Scratch(std::string_view name = "panel")
        : dir(fs::temp_directory_path() /
              ("tendrane-" + std::string(name) + "-" +
               std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()))) {
        fs::create_directories(dir);
    }
    ~Scratch() { fs::remove_all(dir); }
    fs::path write(const char* file, const std::string& text) const {
        std::ofstream(dir / file, std::ios::binary) << text;
        return dir / file;
    }
};

inline std::vector<std::uint8_t> readBytes(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::vector<std::uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// A part of the panel, in panel pixels.
struct Area {
    int left = 0, top = 0, width = 384, height = 512;
};

// The picture made against the stored one of that name, within `area`.
inline void expectAsStored(const fs::path& made, const std::string& name, Area area = {}) {
    const std::vector<std::uint8_t> bytes = readBytes(made);
    ASSERT_FALSE(bytes.empty()) << name;
    const char* write = std::getenv("TENDRANE_WRITE_GOLDEN");
    if (write != nullptr && std::string(write) == "1")
        std::ofstream(GOLDEN / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    const std::vector<std::uint8_t> stored = readBytes(GOLDEN / name);
    ASSERT_FALSE(stored.empty()) << name;
    const OrlPixels::DecodedPng a = OrlPixels::decodePng(bytes.data(), bytes.size());
    const OrlPixels::DecodedPng b = OrlPixels::decodePng(stored.data(), stored.size());
    ASSERT_EQ(a.width, 384);
    ASSERT_EQ(a.height, 512);
    ASSERT_EQ(b.width, a.width) << name;
    ASSERT_EQ(b.height, a.height) << name;
    std::size_t differing = 0;
    for (int y = area.top; y < area.top + area.height; ++y)
        for (int x = area.left; x < area.left + area.width; ++x) {
            const std::size_t i = std::size_t(y) * 384 + std::size_t(x);
            differing += a.pixels[i] != b.pixels[i];
        }
    EXPECT_EQ(differing, 0u) << name;
}

// Runs the panel; returns standard output, and fails the test on a status
// other than 0 or on an alert.
inline std::string panel(const std::vector<std::string>& args) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = cli::runPanel(args);
    const std::string err = testing::internal::GetCapturedStderr();
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(status, 0);
    EXPECT_EQ(err, "");
    return out;
}

}  // namespace panelgolden
