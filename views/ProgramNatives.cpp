#include "views/ProgramNatives.h"

#include <cmath>
#include <optional>
#include <string>

#include "patch/Preferences.h"
#include "patch/ProgramText.h"
#include "platform/Utf16.h"
#include "quol/Classification.h"
#include "quol/Exception.h"
#include "quol/Natives.h"
#include "quol/Number.h"

namespace views {

using Quol::argument;
using Quol::Frame;
using Quol::optionalArgument;
using Quol::Value;

namespace {

Value member(const Value& reference, std::string_view key) { return Quol::memberName(reference, key); }

Value number(double v) { return Quol::numberToString(v); }

std::string text(const std::u16string& s) { return platform::utf16ToUtf8Lossy(s); }

std::u16string text16(const Value& v) {
    std::optional<std::u16string> s = platform::utf8ToUtf16(v.view());
    if (!s) Quol::fail("Invalid text: ", v.view());
    return *s;
}

std::uint32_t readSeed(const Value& v) {
    const double d = Quol::readNumber(v);
    if (!(d >= 0 && d <= 4294967295.0) || d != std::floor(d)) Quol::fail("Invalid seed: ", v.view());
    return std::uint32_t(d);
}

// A failure of the patch model is a plain exception; the script sees its own.
template <typename F>
auto asScriptFailure(F&& f) -> decltype(f()) {
    try {
        return f();
    } catch (const Quol::Exception&) {
        throw;
    } catch (const std::exception& e) {
        Quol::fail(e.what());
    }
}

class Function : public Quol::Native {
public:
    using Body = std::function<Value(Frame&)>;
    explicit Function(Body body) : body_(std::move(body)) {}
    Value run(Frame& arguments) override { return body_(arguments); }

private:
    Body body_;
};

void add(Frame& frame, std::string_view name, Function::Body body) {
    frame.addNative(name, std::make_unique<Function>(std::move(body)));
}

}  // namespace

void storeProgram(Frame& frame, const Value& reference, const NorvelleProgram& record) {
    for (int i = 0; i < PARAM_COUNT; ++i)
        frame.set(member(reference, PARAMETER_TABLE[i].name), number(double(record.param(i))));
    frame.set(member(reference, "name"), Value(text(record.getName())));
    frame.set(member(reference, "path"), Value(text(record.path)));
    frame.set(member(reference, "modified"), Quol::booleanValue(record.modified));
    frame.set(member(reference, "seed"), Value(std::to_string(record.seed)));
    frame.set(member(reference, "pitch"), number(double(record.pitch)));
    frame.set(member(reference, "cloned"), Quol::booleanValue(record.cloned));
    frame.set(member(reference, "implementation"), Quol::integerToString(record.implementation));
    const Value genes = member(reference, "genes");
    frame.set(member(genes, "n"), Quol::integerToString(GENE_COUNT));
    for (int g = 0; g < GENE_COUNT; ++g) {
        const Value gene = member(reference, GENE_TABLE[g].name);
        frame.set(gene, number(double(record.genes[g])));
        frame.set(member(genes, std::to_string(g)), frame.reference(gene));
    }
}

NorvelleProgram loadProgram(Frame& frame, const Value& reference) {
    auto get = [&](std::string_view key) { return frame.get(member(reference, key), true); };
    NorvelleProgram record;
    for (int i = 0; i < PARAM_COUNT; ++i) record.setParam(i, float(Quol::readNumber(get(PARAMETER_TABLE[i].name))));
    record.setName(text16(get("name")));
    record.path = text16(get("path"));
    record.modified = Quol::readBoolean(get("modified"));
    record.seed = readSeed(get("seed"));
    if (record.seed == 0) Quol::fail("Invalid seed: ", "0");
    record.pitch = float(Quol::readNumber(get("pitch")));
    record.cloned = Quol::readBoolean(get("cloned"));
    record.implementation = Quol::readInteger(get("implementation"));
    if (record.implementation < 0 || record.implementation > CURRENT_IMPLEMENTATION)
        Quol::fail("Invalid implementation: ", get("implementation").view());
    for (int g = 0; g < GENE_COUNT; ++g) record.genes[g] = float(Quol::readNumber(get(GENE_TABLE[g].name)));
    record.computeBranchDeviations();
    record.touch(false);
    return record;
}

void installProgramNatives(Frame& root) {
    add(root, "createProgram", [](Frame& a) {
        storeProgram(a, argument(a, 0), NorvelleProgram());
        return Value();
    });
    add(root, "marshalProgram", [](Frame& a) {
        const NorvelleProgram record = loadProgram(a, argument(a, 0));
        const Value flag = optionalArgument(a, 1);
        const bool forFile = !flag.empty() && Quol::readBoolean(flag);
        return Value(asScriptFailure([&] { return writeProgramText(record, forFile); }));
    });
    add(root, "unmarshalProgram", [](Frame& a) {
        const Value source = argument(a, 0);
        const NorvelleProgram record = asScriptFailure([&] { return readProgramText(source.view()); });
        storeProgram(a, argument(a, 1), record);
        return Value();
    });
    add(root, "isMarshaledProgram", [](Frame& a) { return Quol::booleanValue(isProgramText(argument(a, 0).view())); });
    // The plain preferences, beside the folders last used and the default
    // MIDI configuration.
    add(root, "readPrefs", [](Frame& a) {
        const std::string key(argument(a, 0).view());
        const std::optional<std::string> value = asScriptFailure([&] { return Preferences::read(key); });
        return value ? Value(*value) : Value();
    });
    add(root, "writePrefs", [](Frame& a) {
        const std::string key(argument(a, 0).view());
        const std::string value(argument(a, 1).view());
        asScriptFailure([&] { Preferences::write(key, value); });
        return Quol::booleanValue(true);
    });
}

void installGuiProgramNatives(Frame& gui, ProgramHost& host, std::function<bool()> userBusy) {
    add(gui, "readProgram", [&host](Frame& a) {
        storeProgram(a, argument(a, 0), host.program());
        return Value();
    });
    add(gui, "writeProgram", [&host](Frame& a) {
        host.writeProgram(loadProgram(a, argument(a, 0)));
        return Value();
    });
    add(gui, "setParam", [&host](Frame& a) {
        const Value name = argument(a, 0);
        const int index = findParameter(name.view());
        if (index < 0) Quol::fail("Unknown parameter: ", name.view());
        const double v = Quol::readNumber(argument(a, 1));
        host.setParameter(index, float(std::fmin(std::fmax(v, 0.0), 1.0)));
        return Value();
    });
    add(gui, "getParam", [&host](Frame& a) {
        const Value name = argument(a, 0);
        const int index = findParameter(name.view());
        if (index < 0) Quol::fail("Unknown parameter: ", name.view());
        return number(double(host.parameter(index)));
    });
    add(gui, "preview", [&host](Frame& a) {
        const Value reference = optionalArgument(a, 0);
        if (reference.empty()) {
            host.preview(nullptr);
        } else {
            const NorvelleProgram record = loadProgram(a, reference);
            host.preview(&record);
        }
        return Value();
    });
    add(gui, "saveUndo", [&host](Frame& a) {
        host.saveUndo(argument(a, 0).view());
        return Value();
    });
    add(gui, "userBusy", [busy = std::move(userBusy)](Frame&) { return Quol::booleanValue(busy && busy()); });
    add(gui, "getSelectedBranch", [&host](Frame&) {
        const int b = host.selectedBranch();
        return b < 0 ? Value() : Quol::integerToString(b);
    });
    add(gui, "selectBranch", [&host](Frame& a) {
        const Value index = optionalArgument(a, 0);
        int b = -1;
        if (!index.empty()) {
            b = Quol::readInteger(index);
            if (b < 0 || b >= BRANCH_COUNT) Quol::fail("Invalid branch: ", index.view());
        }
        host.selectBranch(b);
        return Value();
    });
}

}  // namespace views
