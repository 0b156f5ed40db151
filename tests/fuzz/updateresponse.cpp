// The update service's answer on arbitrary bytes, read twice: as object
// notation the way the application script reads it (the body, then the
// nested texts for the product, the platform and the processor, then the
// fields of the build), and by the application script's own
// `autoUpdate.offer` in a root frame with the application's start script.
// A bad answer may fail as the script's own failure and nothing else; an
// alert it asks for is always one the panel can read.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fomal/HostNatives.h"
#include "notation/Escape.h"
#include "notation/Notation.h"
#include "platform/Exceptions.h"
#include "quol/Evaluator.h"
#include "quol/Exception.h"
#include "quol/Frame.h"
#include "quol/Natives.h"

namespace {

// A value of the notation as text: quoted ones unescaped.
std::string notationText(const std::string& raw) {
    if (!raw.empty() && (raw.front() == '"' || raw.front() == '\'')) return notation::unescape(raw);
    return raw;
}

void readAsTheScriptDoes(std::string_view body) {
    const notation::Object r = notation::parseObject(body);
    const std::string* product = r.find("Tendrane1");
    if (product == nullptr) return;
    const notation::Object forOs = notation::parseObject(*product);
    for (const auto& [os, cpus] : forOs.entries()) {
        const notation::Object forCpu = notation::parseObject(cpus);
        for (const auto& [cpu, raw] : forCpu.entries()) {
            try {
                const notation::Object v = notation::parseObject(notationText(raw));
                for (const char* key : {"build", "urgent", "message", "url"})
                    if (const std::string* field = v.find(key)) (void)notationText(*field);
            } catch (const Exception&) {
                // An unterminated or stray quote: the notation's own failure.
            }
        }
    }
}

class Native : public Quol::Native {
public:
    using Body = Quol::Value (*)(Quol::Frame&);
    explicit Native(Body body) : body_(body) {}
    Quol::Value run(Quol::Frame& a) override { return body_(a); }

private:
    Body body_;
};

std::vector<std::string>& alerts() {
    static std::vector<std::string> asked;
    return asked;
}

Quol::Frame& applicationRoot() {
    static std::unique_ptr<Quol::Frame> root = [] {
        auto r = std::make_unique<Quol::Frame>();
        Quol::installStandardNatives(*r);
        Fomal::installHostNatives(*r);
        r->addNative("readPrefs", std::make_unique<Native>([](Quol::Frame&) { return Quol::Value(); }));
        r->addNative("writePrefs", std::make_unique<Native>([](Quol::Frame&) { return Quol::Value("true"); }));
        r->addNative("userBusy", std::make_unique<Native>([](Quol::Frame&) { return Quol::Value("false"); }));
        // The alert is noted: its parameters are checked below.
        r->addNative("perform", std::make_unique<Native>([](Quol::Frame& a) {
                         if (Quol::argument(a, 0) == "alert") alerts().push_back(Quol::argument(a, 1).str());
                         return Quol::Value();
                     }));
        Quol::evaluate(*r, Quol::Value::external(Fomal::scriptResource("autoexec.quol")));
        return r;
    }();
    return *root;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view body(reinterpret_cast<const char*>(data), size);
    readAsTheScriptDoes(body);

    Quol::Frame& root = applicationRoot();
    alerts().clear();
    const Quol::Value argument{std::string(body)};
    try {
        Quol::callWith(root, root.get(Quol::Value("autoUpdate.offer"), true), &argument, 1);
    } catch (const Quol::Exception&) {
        // A malformed answer: the delayed action that runs the check drops it.
    }
    for (const std::string& params : alerts()) {
        const notation::Object alert = notation::parseObject(params);
        if (alert.get("title") != "\"Tendrane\"" || alert.get("type") != "\"info\"" || !alert.has("text")) std::abort();
        (void)notation::unescape(alert.get("text"));
    }
    return 0;
}
