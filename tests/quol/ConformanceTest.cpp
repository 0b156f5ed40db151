// Runs every script of tests/quol/scripts/ in a fresh root frame with the
// standard natives and library. A script passes when it ends without a
// failure and has made at least one assertion; every failed assert throws.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "quol/Evaluator.h"
#include "quol/Exception.h"
#include "quol/Frame.h"
#include "quol/StandardLibrary.h"

namespace {

std::filesystem::path scriptFolder() { return std::filesystem::path(TENDRANE_SOURCE_DIR) / "tests/quol/scripts"; }

std::vector<std::string> scriptNames() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(scriptFolder()))
        if (entry.path().extension() == ".quol") names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string readScript(const std::string& name) {
    std::ifstream in(scriptFolder() / (name + ".quol"), std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// The library's assert, counted: the native runs the library function's body
// in its own arguments frame, exactly as a call of the function would.
class CountingAssert : public Quol::Native {
public:
    CountingAssert(Quol::Value body, int& count) : body_(std::move(body)), count_(count) {}
    Quol::Value run(Quol::Frame& arguments) override {
        ++count_;
        return Quol::evaluate(arguments, body_);
    }

private:
    Quol::Value body_;
    int& count_;
};

class ConformanceScript : public testing::TestWithParam<std::string> {};

TEST_P(ConformanceScript, PassesEveryAssertion) {
    Quol::Frame root;
    Quol::prepareStandardRoot(root);
    int asserts = 0;
    root.addNative("assert", std::make_unique<CountingAssert>(root.get(Quol::Value("::assert"), false), asserts));

    // Scripts that write files write them into the build tree.
    std::filesystem::current_path(TENDRANE_BINARY_DIR);
    const std::string text = readScript(GetParam());
    ASSERT_FALSE(text.empty()) << GetParam();
    try {
        Quol::evaluate(root, Quol::Value(text));
    } catch (const Quol::Exception& e) {
        FAIL() << GetParam() << ".quol: " << Quol::failureReport(e);
    }
    EXPECT_GT(asserts, 0) << GetParam() << ".quol made no assertion";
}

INSTANTIATE_TEST_SUITE_P(Scripts, ConformanceScript, testing::ValuesIn(scriptNames()),
                         [](const testing::TestParamInfo<std::string>& info) {
                             std::string name = info.param;
                             for (char& c : name)
                                 if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
                             return name;
                         });

}  // namespace
