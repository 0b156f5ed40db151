// Script evaluation speed: a 200-line script of everyday statements, and a
// tight loop of 100 000 iterations (reported per loop iteration).
#include <benchmark/benchmark.h>

#include <string>

#include "quol/Evaluator.h"
#include "quol/Frame.h"
#include "quol/StandardLibrary.h"

namespace {

// 200 lines: assignments, arithmetic, strings, members, calls, branches.
std::string twoHundredLines() {
    std::string text = "{\n  count = 0; text = ''; add = function { $0 + $1 };\n";
    int lines = 2;
    for (int i = 0; lines < 199; ++i) {
        const std::string n = std::to_string(i);
        switch (i % 6) {
        case 0: text += "  v" + n + " = " + n + " * 2 + 1;\n"; break;
        case 1: text += "  text #= 'item' # " + n + " # ',';\n"; break;
        case 2: text += "  obj.field" + n + " = add(" + n + ", count);\n"; break;
        case 3: text += "  if (count < " + n + ") { count += 1 } else { count -= 1 };\n"; break;
        case 4: text += "  s" + n + " = substr('abcdefghij', " + std::to_string(i % 10) + ", 3) # upper('x');\n"; break;
        default: text += "  ok = count >= 0 && length(text) > 0 || false;\n"; break;
        }
        ++lines;
    }
    text += "  count\n}\n";
    return text;
}

void BM_Script200Lines(benchmark::State& state) {
    Quol::Frame root;
    Quol::prepareStandardRoot(root);
    const Quol::Value script(twoHundredLines());
    for (auto _ : state) {
        Quol::Frame frame(root);
        benchmark::DoNotOptimize(Quol::evaluate(frame, script));
    }
    state.counters["per_line"] =
        benchmark::Counter(200, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_Script200Lines)->Unit(benchmark::kMicrosecond);

void BM_TightForLoop(benchmark::State& state) {
    Quol::Frame root;
    Quol::prepareStandardRoot(root);
    const Quol::Value script("{ s = 0; for (i = 0; i < 100000; ++i) s += i; s }");
    for (auto _ : state) {
        Quol::Frame frame(root);
        benchmark::DoNotOptimize(Quol::evaluate(frame, script));
    }
    state.counters["per_iteration"] =
        benchmark::Counter(100000, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_TightForLoop)->Unit(benchmark::kMillisecond);

}  // namespace
