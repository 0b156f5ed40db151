// Replays every file of the given folders (or the given files) through a
// fuzz target, so the stored corpus runs as an ordinary test in every build.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

void replay(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    int count = 0;
    // The empty input first: every target must take it.
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(""), 0);
    ++count;
    for (int i = 1; i < argc; ++i) {
        std::filesystem::path p(argv[i]);
        if (std::filesystem::is_directory(p)) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(p))
                if (entry.is_regular_file()) {
                    replay(entry.path());
                    ++count;
                }
        } else if (std::filesystem::exists(p)) {
            replay(p);
            ++count;
        }
    }
    std::printf("replayed %d inputs\n", count);
    return 0;
}
