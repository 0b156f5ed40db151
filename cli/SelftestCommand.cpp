#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "cli/Command.h"
#include "cli/Options.h"
#include "engine/RenderSelfTest.h"
#include "patch/SeededGenerator.h"
#include "platform/Exceptions.h"

namespace cli {

const char* const kSelftestUsage =
    "Usage: tendrane selftest [--dir DIR] [--create] [--massive COUNT [--seed S] [--time SECONDS]]\n"
    "Renders the stored seeds and compares each with its recording.\n"
    "  --dir DIR          the folder with selftest.txt and the recordings\n"
    "                     (default tests/golden/selftest)\n"
    "  --create           record the tests anew instead of comparing\n"
    "  --massive COUNT    the long run: COUNT tests of random seed, rate and density,\n"
    "                     each recorded and then rendered again and compared,\n"
    "                     cycling 100 file names in DIR\n"
    "  --seed S           start of the long run's generator (default 1)\n"
    "  --time SECONDS     length of each test of the long run (default 10)\n"
    "The list selftest.txt has one test a line: SEED SECONDS RATE DENSITY TOLERANCE FILE.\n";

namespace {

std::vector<engine::SelfTestSpec> readList(const std::filesystem::path& dir) {
    const std::filesystem::path listFile = dir / "selftest.txt";
    std::ifstream in(listFile);
    if (!in) throw Exception("Cannot open file " + listFile.string());
    std::vector<engine::SelfTestSpec> specs;
    std::string line;
    int number = 0;
    while (std::getline(in, line)) {
        ++number;
        if (line.empty() || line[0] == '#') continue;
        std::istringstream fields(line);
        engine::SelfTestSpec s;
        std::string file;
        if (!(fields >> s.seed >> s.time >> s.sampleRate >> s.density >> s.tolerance >> file))
            throw Exception("Invalid test list line " + std::to_string(number) + " in " + listFile.string());
        s.file = (dir / file).string();
        specs.push_back(s);
    }
    return specs;
}

int runList(const std::filesystem::path& dir, bool create) {
    int failures = 0;
    for (engine::SelfTestSpec& s : readList(dir)) {
        if (create) std::filesystem::remove(s.file);
        try {
            engine::SelfTestOutcome outcome = engine::createTest(s);
            std::printf("seed %u, %g s at %g Hz, density %g: %s\n", s.seed, s.time, double(s.sampleRate), s.density,
                        outcome == engine::SelfTestOutcome::Created ? "recorded" : "ok");
        } catch (const std::exception& e) {
            std::printf("seed %u, %g s at %g Hz, density %g: %s\n", s.seed, s.time, double(s.sampleRate), s.density,
                        e.what());
            ++failures;
        }
    }
    std::printf("%d failed\n", failures);
    return failures ? 1 : 0;
}

// Many tests with random seed, rate and density; each is recorded and then
// rendered and compared once more, so that any render that isn't repeatable
// (or any failure of the render itself) shows.
int runMassive(const std::filesystem::path& dir, long long count, uint32_t seed, double seconds) {
    std::filesystem::create_directories(dir);
    SeededGenerator g = SeededGenerator::fromSeed(seed);
    auto random = [&](uint32_t n) {
        g.step();
        return g.a % n;
    };
    int failures = 0;
    for (long long i = 0; i < count; ++i) {
        engine::SelfTestSpec s;
        g.step();
        s.seed = g.a;
        s.sampleRate = float(random(100000) + 20000);
        const double r = random(10);
        s.density = r * r + 1;
        s.time = seconds;
        s.file = (dir / ("massive" + std::to_string(i % 100) + ".wav")).string();
        std::fprintf(stderr, "\rtest %lld of %lld", i + 1, count);
        std::fflush(stderr);
        try {
            std::filesystem::remove(s.file);
            engine::createTest(s);
            engine::createTest(s);
        } catch (const std::exception& e) {
            std::printf("\nseed %u at %g Hz, density %g: %s\n", s.seed, double(s.sampleRate), s.density, e.what());
            ++failures;
        }
    }
    std::fprintf(stderr, "\n");
    std::printf("%d of %lld failed\n", failures, count);
    return failures ? 1 : 0;
}

}  // namespace

int runSelftest(const std::vector<std::string>& args) {
    Options options({{"dir", 0, true, false},
                     {"create", 0, false, false},
                     {"massive", 0, true, false},
                     {"seed", 0, true, false},
                     {"time", 0, true, false}});
    options.parse(args);
    if (options.has("help")) {
        std::fputs(kSelftestUsage, stdout);
        return 0;
    }
    if (!options.positional().empty()) throw UsageError("unexpected argument '" + options.positional()[0] + "'");
    if (options.has("massive")) {
        const long long count = parseInteger("massive", options.value("massive"));
        if (count < 1) throw UsageError("option '--massive' needs a count of 1 or more");
        const long long seed = options.has("seed") ? parseInteger("seed", options.value("seed")) : 1;
        const double seconds = options.has("time") ? parseReal("time", options.value("time")) : 10.0;
        if (!(seconds > 0 && seconds <= 600)) throw UsageError("option '--time' must be above 0 and at most 600");
        return runMassive(options.value("dir", "out/selftest-massive"), count, uint32_t(seed), seconds);
    }
    return runList(options.value("dir", "tests/golden/selftest"), options.has("create"));
}

}  // namespace cli
