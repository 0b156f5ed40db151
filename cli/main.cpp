// tendrane: the offline tool and the test harness's entry point.
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/Options.h"

namespace {

void printCommandList(std::FILE* out) {
    std::fprintf(out, "Usage: tendrane COMMAND [OPTIONS]\n\nCommands:\n");
    for (const cli::Command& c : cli::commands())
        std::fprintf(out, "  %-10s %s\n", c.name, c.summary);
    std::fprintf(out, "\nRun 'tendrane COMMAND --help' for the options of a command.\n");
}

const cli::Command* findCommand(const char* name) {
    for (const cli::Command& c : cli::commands())
        if (std::strcmp(c.name, name) == 0) return &c;
    return nullptr;
}

bool wantsHelp(const std::vector<std::string>& args) {
    for (const std::string& a : args) {
        if (a == "--") return false;
        if (a == "--help" || a == "-h") return true;
    }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        printCommandList(stderr);
        return 1;
    }
    const char* name = argv[1];
    if (std::strcmp(name, "--help") == 0 || std::strcmp(name, "-h") == 0 ||
        std::strcmp(name, "help") == 0) {
        if (argc > 2 && std::strcmp(name, "help") == 0) {
            if (const cli::Command* c = findCommand(argv[2])) {
                std::fputs(c->usage, stdout);
                return 0;
            }
            std::fprintf(stderr, "tendrane: unknown command '%s'\n", argv[2]);
            return 1;
        }
        printCommandList(stdout);
        return 0;
    }
    if (std::strcmp(name, "--version") == 0) name = "version";
    const cli::Command* command = findCommand(name);
    if (!command) {
        std::fprintf(stderr, "tendrane: unknown command '%s'\nRun 'tendrane --help' for the list of commands.\n",
                     name);
        return 1;
    }
    std::vector<std::string> args(argv + 2, argv + argc);
    if (wantsHelp(args)) {
        std::fputs(command->usage, stdout);
        return 0;
    }
    try {
        return command->run(args);
    } catch (const cli::UsageError& e) {
        std::fprintf(stderr, "tendrane %s: %s\nRun 'tendrane %s --help' for its options.\n", command->name,
                     e.what(), command->name);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "tendrane %s: %s\n", command->name, e.what());
    } catch (...) {
        std::fprintf(stderr, "tendrane %s: Unexpected error\n", command->name);
    }
    return 1;
}
