#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#ifdef _WIN32
#include <io.h>
#define TENDRANE_ISATTY _isatty
#define TENDRANE_FILENO _fileno
#else
#include <unistd.h>
#define TENDRANE_ISATTY isatty
#define TENDRANE_FILENO fileno
#endif

#include "cli/Command.h"
#include "cli/Options.h"
#include "quol/Evaluator.h"
#include "quol/Exception.h"
#include "quol/Frame.h"
#include "quol/StandardLibrary.h"

namespace cli {

const char* const kQuolUsage =
    "Usage: tendrane quol [-e EXPR] [FILE]\n"
    "\n"
    "Evaluates script text in a root frame that holds the standard natives and\n"
    "the standard library, and prints its value. With -e the expression is\n"
    "evaluated, with FILE the script in the file (both may be given: the\n"
    "expression runs first). With neither, the script is read from standard\n"
    "input, or, when standard input is a terminal, lines are read and\n"
    "evaluated one by one until the end of the input.\n"
    "\n"
    "A failing script prints its failure report and exits with status 1.\n"
    "\n"
    "Options:\n"
    "  -e, --expression EXPR   evaluate EXPR\n";

namespace {

void printValue(const Quol::Value& v) {
    if (v.empty()) return;
    std::fwrite(v.data(), 1, v.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

void printFailure(const Quol::Exception& e) {
    std::fflush(stdout);
    std::fprintf(stderr, "Quol error: %s", Quol::failureReport(e).c_str());
}

// Evaluates one text; false if it failed (the report is printed).
bool run(Quol::Frame& root, const std::string& text) {
    try {
        printValue(Quol::evaluate(root, Quol::Value(text)));
        return true;
    } catch (const Quol::Exception& e) {
        printFailure(e);
        return false;
    }
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("Cannot open file for reading: " + path);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

void readEvalPrint(Quol::Frame& root) {
    std::string line;
    for (;;) {
        std::fputs("quol> ", stdout);
        std::fflush(stdout);
        if (!std::getline(std::cin, line)) break;
        if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
        run(root, line);
    }
    std::fputc('\n', stdout);
}

}  // namespace

int runQuol(const std::vector<std::string>& args) {
    Options options({{"expression", 'e', true, false}});
    options.parse(args);
    if (options.positional().size() > 1) throw UsageError("more than one script file given");

    Quol::Frame root;
    try {
        Quol::prepareStandardRoot(root);
    } catch (const Quol::Exception& e) {
        printFailure(e);
        return 1;
    }
    const bool hasExpression = options.has("expression");
    const bool hasFile = !options.positional().empty();
    if (hasExpression && !run(root, options.value("expression"))) return 1;
    if (hasFile && !run(root, readFile(options.positional().front()))) return 1;
    if (hasExpression || hasFile) return 0;
    if (TENDRANE_ISATTY(TENDRANE_FILENO(stdin))) {
        readEvalPrint(root);
        return 0;
    }
    std::string text((std::istreambuf_iterator<char>(std::cin)), std::istreambuf_iterator<char>());
    return run(root, text) ? 0 : 1;
}

}  // namespace cli
