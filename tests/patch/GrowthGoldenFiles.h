// Reading the golden vectors of branch growing (tests/golden/growth/*.txt):
// whitespace-separated numbers, one case per line, '#' lines are comments.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace growthgolden {

inline std::vector<std::string> lines(const std::string& file) {
    std::ifstream in(std::string(TENDRANE_SOURCE_DIR) + "/tests/golden/growth/" + file);
    std::vector<std::string> result;
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line[0] != '#') result.push_back(line);
    }
    return result;
}

inline std::vector<std::string> words(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> result;
    std::string word;
    while (in >> word) result.push_back(word);
    return result;
}

inline float toFloat(const std::string& text) { return std::strtof(text.c_str(), nullptr); }
inline uint32_t toWord(const std::string& text, int base = 10) {
    return static_cast<uint32_t>(std::strtoul(text.c_str(), nullptr, base));
}

// Distance in units of the last place between two finite floats; 0 means the
// same value (0 and -0 count as the same). The vectors are compared to the bit:
// the logarithm of the Gaussian is correctly rounded on every platform.
inline int64_t ulpDistance(float x, float y) {
    auto key = [](float f) {
        int32_t i;
        std::memcpy(&i, &f, sizeof i);
        return i < 0 ? static_cast<int64_t>(INT32_MIN) - i : static_cast<int64_t>(i);
    };
    const int64_t d = key(x) - key(y);
    return d < 0 ? -d : d;
}

}  // namespace growthgolden
