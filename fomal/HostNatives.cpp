#include "fomal/HostNatives.h"

#include <string>

#include "fomal/Clipboard.h"
#include "fomal/FetchResults.h"
#include "fomal/ScriptRandom.h"
#include "notation/Notation.h"
#include "platform/BuildInfo.h"
#include "platform/Log.h"
#include "platform/Resources.h"
#include "quol/Classification.h"
#include "quol/Exception.h"
#include "quol/Natives.h"
#include "quol/Number.h"

namespace Fomal {

std::string_view scriptResource(std::string_view name) {
    struct Kind {
        std::string_view extension, type;
    };
    static constexpr Kind kinds[] = {{".quol", "QUOL"}, {".txt", "TXT"}, {".fomal", "FOMAL"}};
    for (const Kind& k : kinds) {
        if (name.size() <= k.extension.size()) continue;
        if (name.substr(name.size() - k.extension.size()) != k.extension) continue;
        const platform::Resource r =
            platform::productResources().find(k.type, name.substr(0, name.size() - k.extension.size()));
        if (r) return r.text();
    }
    Quol::fail("Could not load text resource");
}

namespace {

using Quol::argument;
using Quol::Frame;
using Quol::Value;

class Function : public Quol::Native {
public:
    using Body = Value (*)(Frame&);
    explicit Function(Body body) : body_(body) {}
    Value run(Frame& arguments) override { return body_(arguments); }

private:
    Body body_;
};

void add(Frame& root, std::string_view name, Function::Body body) {
    root.addNative(name, std::make_unique<Function>(body));
}

Value xload(Frame& a) {
    // The resources live as long as the program.
    return Value::external(scriptResource(argument(a, 0).view()));
}

// print: to the development log, and only in debug mode (`const.debug`).
Value xprint(Frame& a) {
    const Value text = argument(a, 0);
    Value debug;
    if (a.root().lookup("const.debug", debug) && debug == "true") {
        if (!platform::Log::active()) {
            try {
                platform::Log::start();
            } catch (const std::exception&) {
                return Value();  // no log to be had: printing is no reason to fail
            }
        }
        platform::Log::write(platform::LogLevel::debug, "script", text.view());
    }
    return Value();
}

Value xrandom(Frame& a) {
    const double x = Quol::readNumber(argument(a, 0));
    return Quol::numberToString(ScriptRandom::process().uniform(x));
}

Value randomInt(Frame&) { return Value(std::to_string(ScriptRandom::process().nextWord())); }

Value gaussian(Frame& a) {
    const float mean = float(Quol::readNumber(argument(a, 0)));
    const float deviation = float(Quol::readNumber(argument(a, 1)));
    return Quol::numberToString(double(ScriptRandom::process().gaussian(mean, deviation)));
}

// Failures of the notation are plain exceptions; scripts see their own.
template <typename F>
void asScriptFailure(F&& f) {
    try {
        f();
    } catch (const Quol::Exception&) {
        throw;
    } catch (const std::exception& e) {
        Quol::fail(e.what());
    }
}

Value parseObjectNative(Frame& a) {
    const Value text = argument(a, 0);
    const Value reference = argument(a, 1);
    asScriptFailure([&] {
        const notation::Object object = notation::parseObject(text.view());
        for (const auto& [key, raw] : object.entries())
            a.set(Quol::memberName(reference, key), Value(raw));
    });
    return Value();
}

Value parseArrayNative(Frame& a) {
    const Value text = argument(a, 0);
    const Value reference = argument(a, 1);
    asScriptFailure([&] {
        const notation::Array elements = notation::parseArray(text.view());
        for (std::size_t i = 0; i < elements.size(); ++i)
            a.set(Quol::memberName(reference, std::to_string(i)), Value(elements[i]));
        a.set(Quol::memberName(reference, "n"), Quol::integerToString(std::int32_t(elements.size())));
    });
    return Value();
}

Value versionCheckQuery(Frame&) { return Value("?v=3"); }

// fetchURL(url, callback): the fetch runs on the worker thread; at a later
// idle tick of the editor whose script asked, the callback hears the body
// as $0, or void and the failure ("Internet error: ...") as $1.
Value fetchURL(Frame& a) {
    const Value url = argument(a, 0);
    const Value callback = argument(a, 1);
    if (!FetchResults::start(a.root(), std::string(url.view()), callback))
        Quol::fail("fetchURL needs an open editor");
    return Value();
}

Value writeClipboard(Frame& a) {
    Clipboard::system().write(argument(a, 0).view());
    return Value();
}

Value readClipboard(Frame&) {
    const std::optional<std::string> text = Clipboard::system().read();
    return text ? Value(*text) : Value();
}

}  // namespace

void installHostNatives(Frame& root) {
    add(root, "xload", xload);
    add(root, "xprint", xprint);
    add(root, "xrandom", xrandom);
    add(root, "randomInt", randomInt);
    add(root, "gaussian", gaussian);
    add(root, "parseArray", parseArrayNative);
    add(root, "parseObject", parseObjectNative);
    add(root, "versionCheckQuery", versionCheckQuery);
    add(root, "fetchURL", fetchURL);
    add(root, "writeClipboard", writeClipboard);
    add(root, "readClipboard", readClipboard);
    root.set(Value("load"), Value("<xload>"));
    root.set(Value("print"), Value("<xprint>"));
    root.set(Value("random"), Value("<xrandom>"));

    const platform::BuildInfo& build = platform::buildInfo();
    const std::pair<const char*, const std::string*> variables[] = {
        {"build.target", &build.target},     {"build.version", &build.version}, {"build.number", &build.number},
        {"build.date", &build.date},         {"build.time", &build.time},       {"build.compiler", &build.compiler},
        {"build.libs", &build.libs},         {"platform.os", &build.os},        {"platform.cpu", &build.cpu},
    };
    for (const auto& [name, value] : variables) root.set(Value(name), Value(*value));
}

}  // namespace Fomal
