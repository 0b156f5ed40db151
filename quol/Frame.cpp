#include "quol/Frame.h"

#include <atomic>

#include "quol/Evaluator.h"
#include "quol/Exception.h"
#include "quol/Number.h"

namespace Quol {

namespace {

// Labels are never reused in the life of the process.
std::atomic<std::uint64_t> labelCounter{0};

const Value& rootLabel() {
    static const Value label = Value::external("::", 2);
    return label;
}

}  // namespace

bool isSymbolByte(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

std::uint64_t Frame::nextLabelNumber() { return labelCounter.load() + 1; }

Value Frame::labelText(std::uint64_t number) {
    static const char digits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    char tmp[16];
    std::size_t n = 0;
    do {
        tmp[n++] = digits[number % 62];
        number /= 62;
    } while (number);
    char out[20];
    std::size_t pos = 0;
    out[pos++] = ':';
    while (n) out[pos++] = tmp[--n];
    out[pos++] = ':';
    return Value(std::string_view(out, pos));
}

Frame::Frame() : previous_(nullptr), root_(this), closure_(this), label_(rootLabel()), depth_(0) {}

Frame::Frame(Frame& previous)
    : previous_(&previous), root_(previous.root_), closure_(this), depth_(previous.depth_ + 1) {
    if (depth_ >= kMaxCallDepth) fail("Call depth limit exceeded");
    label_ = labelText(++labelCounter);
}

Frame::~Frame() = default;

bool Frame::lookup(std::string_view name, Value& result) {
    auto it = variables.find(name);
    if (it == variables.end()) return false;
    result = it->second;
    return true;
}

bool Frame::assign(const Value& name, const Value& value) {
    auto it = variables.find(name.view());
    if (it != variables.end())
        it->second = value;
    else
        variables.emplace(name, value);
    return true;
}

void Frame::erase(std::string_view name) {
    auto it = variables.find(name);
    if (it != variables.end()) variables.erase(it);
}

void Frame::list(std::string_view prefix, Entries& entries) {
    for (auto it = variables.lower_bound(prefix); it != variables.end(); ++it) {
        if (it->first.view().substr(0, prefix.size()) != prefix) break;
        entries.emplace_back(it->first, it->second);
    }
}

bool Frame::callNative(std::string_view name, Frame& arguments, Value& result) {
    auto it = natives.find(name);
    if (it == natives.end()) return false;
    result = it->second->run(arguments);
    return true;
}

Frame& Frame::resolve(Value& symbol) {
    Frame* f = this;
    std::size_t i = 0;
    const std::size_t n = symbol.size();
    while (i < n) {
        const unsigned char c = symbol[i];
        if (c == '^') {
            if (!f->previous_) fail("Frame does not exist");
            f = f->previous_;
            ++i;
        } else if (c == ':') {
            std::size_t close = i + 1;
            while (close < n && symbol[close] != ':') ++close;
            if (close >= n) fail("Invalid identifier: ", symbol.view().substr(i));
            std::string_view label = symbol.view().substr(i, close + 1 - i);
            Frame* found = f;
            while (found && found->label_ != label) found = found->previous_;
            if (!found) fail("Frame does not exist: ", label);
            f = found;
            i = close + 1;
        } else {
            break;
        }
    }
    if (i > 0) symbol = symbol.substr(i);
    if (!symbol.empty() && symbol.front() == '$') return *f;
    return *f->closure_;
}

Value Frame::get(const Value& symbol, bool fallbackToRoot) {
    Value name = symbol;
    Frame& f = resolve(name);
    Value result;
    if (f.lookup(name, result)) return result;
    if (fallbackToRoot) {
        if (&f != root_ && root_->lookup(name, result)) return result;
        fail("Undefined: ", name);
    }
    fail("Undefined / inappropriate: ", name);
}

Value Frame::set(const Value& symbol, const Value& value) {
    Value name = symbol;
    Frame& f = resolve(name);
    if (!f.assign(name, value)) fail("Cannot modify: ", name);
    return value;
}

Value Frame::reference(const Value& symbol) {
    Value name = symbol;
    Frame& f = resolve(name);
    if (f.label_.empty()) return name;
    Value result = f.label_;
    result.append(name);
    return result;
}

Value Frame::call(const Value& callable, Frame& arguments) {
    if (!callable.empty()) {
        switch (callable.front()) {
        case '{':
            return evaluate(arguments, callable);
        case '>': {
            Value body = callable.substr(1);
            Frame& closure = resolve(body);
            arguments.setClosure(closure);
            // What resolve consumed is cut; a `$` at the start stays.
            return evaluate(arguments, body);
        }
        case '<': {
            if (callable.size() >= 2) {
                Value name = callable.substr(1, callable.size() - 2);
                Value result;
                bool found;
                if (!name.empty() && (name.front() == ':' || name.front() == '^')) {
                    Frame& f = resolve(name);
                    found = f.callNative(name, arguments, result);
                } else {
                    found = root_->callNative(name, arguments, result);
                }
                if (found) return result;
            }
            fail("Unknown native function: ", callable);
        }
        default:
            break;
        }
    }
    fail("Illegal call on: ", callable);
}

void Frame::addNative(std::string_view name, std::unique_ptr<Native> native) {
    Value key(name);
    natives.insert_or_assign(key, std::move(native));
    Value callable("<");
    callable.append(name);
    callable.append('>');
    assign(key, callable);
}

Value memberName(const Value& left, std::string_view key) {
    Value result = left;
    if (!left.empty() && isSymbolByte(left.back())) result.append('.');
    result.append(key);
    return result;
}

Value argumentName(std::size_t i) {
    static const char* const names[] = {"$0", "$1", "$2", "$3", "$4", "$5", "$6", "$7",
                                        "$8", "$9", "$10", "$11", "$12", "$13", "$14", "$15"};
    if (i < 16) return Value::external(names[i], i < 10 ? 2 : 3);
    char buffer[24];
    buffer[0] = '$';
    std::size_t n = 1;
    char tmp[20];
    std::size_t k = 0;
    do {
        tmp[k++] = static_cast<char>('0' + i % 10);
        i /= 10;
    } while (i);
    while (k) buffer[n++] = tmp[--k];
    return Value(std::string_view(buffer, n));
}

Value callWith(Frame& caller, const Value& callable, const Value* arguments, std::size_t count,
               const Value& self) {
    Frame frame(caller);
    for (std::size_t i = 0; i < count; ++i) frame.assign(argumentName(i), arguments[i]);
    frame.assign(Value::external("$n", 2), integerToString(static_cast<std::int32_t>(count)));
    if (!self.empty()) frame.assign(Value::external("$this", 5), self);
    return caller.call(callable, frame);
}

}  // namespace Quol
