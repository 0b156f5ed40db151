// Renders the golden scenes, writes them as PNG to a temporary folder and
// compares their pixels byte for byte with the stored images. With
// TENDRANE_WRITE_GOLDEN=1 in the environment the stored images are replaced
// (only after looking at the new ones).
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "pixels/Png.h"
#include "tests/pixels/GoldenScenes.h"

using namespace OrlPixels;

namespace {

std::vector<std::uint8_t> readFile(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::vector<std::uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

void writeFile(const std::filesystem::path& p, const std::vector<std::uint8_t>& bytes) {
    std::ofstream out(p, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

std::vector<std::uint8_t> straightBytesOf(const DecodedPng& d) {
    return straightRgba(d.pixels.data(), d.width, d.height, d.width);
}

}  // namespace

TEST(GoldenScenes, RegeneratedScenesMatchTheStoredImagesByteForByte) {
    if (!pngAvailable()) GTEST_SKIP() << "no PNG support in this build";
    const std::filesystem::path golden = std::filesystem::path(TENDRANE_SOURCE_DIR) / "tests/golden/pixels";
    // A folder of its own, so that parallel builds never share files.
    const std::filesystem::path temp =
        std::filesystem::temp_directory_path() /
        ("tendrane-pixels-golden-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
    std::filesystem::create_directories(temp);
    const char* write = std::getenv("TENDRANE_WRITE_GOLDEN");
    const bool replace = write != nullptr && std::string(write) == "1";
    for (const std::string& name : pixeltest::sceneNames()) {
        SCOPED_TRACE(name);
        const pixeltest::Scene scene = pixeltest::renderScene(name);
        ASSERT_GT(scene.width, 0);
        const std::vector<std::uint8_t> png = encodePng(scene.pixels.data(), scene.width, scene.height, scene.width);
        ASSERT_FALSE(png.empty());
        const std::filesystem::path fresh = temp / (name + ".png");
        writeFile(fresh, png);
        if (replace) writeFile(golden / (name + ".png"), png);

        const std::vector<std::uint8_t> stored = readFile(golden / (name + ".png"));
        ASSERT_FALSE(stored.empty()) << "missing golden image " << name;
        const std::vector<std::uint8_t> regenerated = readFile(fresh);
        const DecodedPng a = decodePng(stored.data(), stored.size(), 0, false);
        const DecodedPng b = decodePng(regenerated.data(), regenerated.size(), 0, false);
        ASSERT_EQ(a.width, b.width);
        ASSERT_EQ(a.height, b.height);
        const std::vector<std::uint8_t> sa = straightBytesOf(a);
        const std::vector<std::uint8_t> sb = straightBytesOf(b);
        ASSERT_EQ(sa.size(), sb.size());
        std::size_t differing = 0;
        for (std::size_t i = 0; i < sa.size(); ++i) differing += sa[i] != sb[i];
        EXPECT_EQ(differing, 0u);
        // The regenerated file also equals the render itself.
        EXPECT_EQ(sb, straightRgba(scene.pixels.data(), scene.width, scene.height, scene.width));
    }
    std::error_code ignored;
    std::filesystem::remove_all(temp, ignored);
}
