#include "cli/Options.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>

#include "notation/LeadingNumbers.h"

namespace cli {

Options::Options(std::vector<OptionSpec> specs) : specs_(std::move(specs)) {
    specs_.push_back({"help", 'h', false, false});
}

const OptionSpec* Options::findLong(const std::string& name) const {
    for (const OptionSpec& s : specs_)
        if (s.name == name) return &s;
    return nullptr;
}

const OptionSpec* Options::findShort(char c) const {
    for (const OptionSpec& s : specs_)
        if (s.shortName == c) return &s;
    return nullptr;
}

void Options::parse(const std::vector<std::string>& args) {
    bool optionsEnded = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (optionsEnded || a.size() < 2 || a[0] != '-' ||
            (a[1] != '-' && !(a[1] >= 'a' && a[1] <= 'z') && !(a[1] >= 'A' && a[1] <= 'Z'))) {
            positional_.push_back(a);
            continue;
        }
        if (a == "--") {
            optionsEnded = true;
            continue;
        }
        const OptionSpec* spec = nullptr;
        std::string inlineValue;
        bool hasInline = false;
        std::string shown = a;
        if (a[1] == '-') {
            std::string name = a.substr(2);
            std::size_t eq = name.find('=');
            if (eq != std::string::npos) {
                inlineValue = name.substr(eq + 1);
                hasInline = true;
                name = name.substr(0, eq);
                shown = "--" + name;
            }
            spec = findLong(name);
        } else {
            if (a.size() != 2) throw UsageError("unknown option '" + a + "'");
            spec = findShort(a[1]);
        }
        if (!spec) throw UsageError("unknown option '" + shown + "'");
        std::string value;
        if (spec->takesValue) {
            if (hasInline) {
                value = inlineValue;
            } else {
                if (i + 1 >= args.size()) throw UsageError("option '" + shown + "' needs a value");
                value = args[++i];
            }
        } else if (hasInline) {
            throw UsageError("option '" + shown + "' takes no value");
        }
        if (!spec->repeatable && has(spec->name))
            throw UsageError("option '--" + spec->name + "' given more than once");
        given_.push_back({spec->name, value});
    }
}

bool Options::has(const std::string& name) const {
    for (const Given& g : given_)
        if (g.name == name) return true;
    return false;
}

std::string Options::value(const std::string& name, const std::string& fallback) const {
    std::string result = fallback;
    for (const Given& g : given_)
        if (g.name == name) result = g.value;
    return result;
}

std::vector<std::string> Options::values(const std::string& name) const {
    std::vector<std::string> result;
    for (const Given& g : given_)
        if (g.name == name) result.push_back(g.value);
    return result;
}

long long parseInteger(const std::string& option, const std::string& text) {
    errno = 0;
    char* end = nullptr;
    long long v = std::strtoll(text.c_str(), &end, 0);
    if (text.empty() || *end != 0 || errno == ERANGE)
        throw UsageError("option '--" + option + "' needs an integer, not '" + text + "'");
    return v;
}

double parseReal(const std::string& option, const std::string& text) {
    const LeadingNumber n = leadingDouble(text);
    if (text.empty() || n.length != text.size() || !std::isfinite(n.value))
        throw UsageError("option '--" + option + "' needs a number, not '" + text + "'");
    return n.value;
}

}  // namespace cli
