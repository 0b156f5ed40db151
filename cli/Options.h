// A small command-line option reader shared by the subcommands.
//   --name VALUE, --name=VALUE, -x VALUE, flags, repeatable options and
//   positional arguments; "--" ends the options.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace cli {

struct OptionSpec {
    std::string name;        // long name without the dashes, e.g. "rate"
    char shortName = 0;      // e.g. 'o' for -o, or 0
    bool takesValue = false;
    bool repeatable = false;
};

// A mistake in how the program was called; main prints it with a hint to --help.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Options {
public:
    explicit Options(std::vector<OptionSpec> specs);

    // args excludes the program and subcommand names. Throws UsageError.
    void parse(const std::vector<std::string>& args);

    bool has(const std::string& name) const;
    // The option's last value, or fallback when it was not given.
    std::string value(const std::string& name, const std::string& fallback = "") const;
    std::vector<std::string> values(const std::string& name) const;
    const std::vector<std::string>& positional() const { return positional_; }

    // Occurrences in command-line order, for options whose order matters.
    struct Given {
        std::string name;
        std::string value;
    };
    const std::vector<Given>& given() const { return given_; }

private:
    const OptionSpec* findLong(const std::string& name) const;
    const OptionSpec* findShort(char c) const;

    std::vector<OptionSpec> specs_;
    std::vector<Given> given_;
    std::vector<std::string> positional_;
};

// Number readers that reject trailing text and report the option by name.
long long parseInteger(const std::string& option, const std::string& text);
double parseReal(const std::string& option, const std::string& text);

}  // namespace cli
