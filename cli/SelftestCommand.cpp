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
    "       tendrane selftest --noises [COUNT] [--dir DIR] [--seed S] [--time SECONDS]\n"
    "Renders the stored seeds and compares each with its recording.\n"
    "  --dir DIR          the folder with selftest.txt and the recordings\n"
    "                     (default tests/golden/selftest)\n"
    "  --create           record the tests anew instead of comparing\n"
    "  --massive COUNT    the long run: COUNT tests of random seed, rate and density,\n"
    "                     each recorded and then rendered again and compared,\n"
    "                     cycling 100 file names in DIR\n"
    "                     (default DIR out/selftest-massive)\n"
    "  --noises [COUNT]   write the random-noise set instead: COUNT files (default 100)\n"
    "                     noise000.wav, noise001.wav... at 44100 Hz, file i with seed S + i\n"
    "                     and (i / 10)^2 + 1 notes per second; the folder DIR\n"
    "                     (default out/noises) is made when missing, files are replaced\n"
    "  --seed S           start of the long run's generator, or the first seed of\n"
    "                     the noise set (default 1)\n"
    "  --time SECONDS     length of each test of the long run (default 10)\n"
    "                     or of each noise file (default 20)\n"
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

// The random-noise set, with a progress line on standard error.
int runNoises(const std::filesystem::path& dir, int count, uint32_t firstSeed, double seconds) {
    std::error_code error;
    std::filesystem::create_directories(dir, error);
    if (!std::filesystem::is_directory(dir, error)) throw Exception("Cannot create folder " + dir.string());
    auto progress = [](int i, int n, const engine::SelfTestSpec& s) {
        std::fprintf(stderr, "\rnoise %d/%d: %s, seed %u, density %g ", i + 1, n, s.file.c_str(), s.seed, s.density);
        std::fflush(stderr);
    };
    try {
        engine::generateRandomNoises(dir.string(), count, seconds, progress, firstSeed);
    } catch (...) {
        std::fprintf(stderr, "\n");  // the failure gets a line of its own
        throw;
    }
    std::fprintf(stderr, "\n");
    std::printf("%d file%s of %g s at 44100 Hz in %s\n", count, count == 1 ? "" : "s", seconds,
                dir.string().c_str());
    return 0;
}

}  // namespace

int runSelftest(const std::vector<std::string>& args) {
    Options options({{"dir", 0, true, false},
                     {"create", 0, false, false},
                     {"massive", 0, true, false},
                     {"seed", 0, true, false},
                     {"time", 0, true, false},
                     {"noises", 0, false, false}});
    options.parse(args);
    if (options.has("help")) {
        std::fputs(kSelftestUsage, stdout);
        return 0;
    }
    if (options.has("noises")) {
        // The count is the optional argument of --noises.
        const std::vector<std::string>& rest = options.positional();
        if (rest.size() > 1) throw UsageError("unexpected argument '" + rest[1] + "'");
        if (options.has("massive")) throw UsageError("options '--noises' and '--massive' exclude each other");
        if (options.has("create")) throw UsageError("options '--noises' and '--create' exclude each other");
        const long long count = rest.empty() ? engine::kRandomNoiseCount : parseInteger("noises", rest[0]);
        if (count < 1 || count > 100000) throw UsageError("option '--noises' needs a count from 1 to 100000");
        const long long seed = options.has("seed") ? parseInteger("seed", options.value("seed")) : 1;
        const double seconds =
            options.has("time") ? parseReal("time", options.value("time")) : engine::kRandomNoiseSeconds;
        if (!(seconds > 0 && seconds <= 600)) throw UsageError("option '--time' must be above 0 and at most 600");
        return runNoises(options.value("dir", "out/noises"), int(count), uint32_t(seed), seconds);
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
