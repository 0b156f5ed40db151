// A scope of script variables, and the rules by which a symbol finds its
// frame: plain names live in the closure, `$` names in the frame itself,
// `^` steps to the caller, `:label:` searches the call chain, `::` is the
// root. Calls dispatch on the first byte of the callable value.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "quol/Value.h"

namespace Quol {

class Frame;

// A built-in function. It reads its arguments as $0, $1, ... from the
// arguments frame it is given.
class Native {
public:
    virtual ~Native() = default;
    virtual Value run(Frame& arguments) = 0;
};

// The deepest call chain: the root has depth 0 and a frame may not reach this.
constexpr int kMaxCallDepth = 200;

class Frame {
public:
    using Variables = std::map<Value, Value, Value::Less>;
    using Natives = std::map<Value, std::unique_ptr<Native>, Value::Less>;
    using Entries = std::vector<std::pair<Value, Value>>;

    // A root frame, labelled "::".
    Frame();
    // A frame called from `previous`; fails with "Call depth limit exceeded"
    // when the chain would get too deep.
    explicit Frame(Frame& previous);
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    Frame* previous() const { return previous_; }
    Frame& root() const { return *root_; }
    Frame& closure() const { return *closure_; }
    void setClosure(Frame& closure) { closure_ = &closure; }
    const Value& label() const { return label_; }
    int depth() const { return depth_; }

    Variables variables;
    Natives natives;

    virtual bool lookup(std::string_view name, Value& result);
    virtual bool assign(const Value& name, const Value& value);
    virtual void erase(std::string_view name);
    virtual void list(std::string_view prefix, Entries& entries);
    virtual bool callNative(std::string_view name, Frame& arguments, Value& result);
    virtual ~Frame();

    // Walks the frame part of symbol and strips it, leaving the name.
    Frame& resolve(Value& symbol);
    Value get(const Value& symbol, bool fallbackToRoot);
    Value set(const Value& symbol, const Value& value);
    // The label of the frame that symbol resolves to, then the name.
    Value reference(const Value& symbol);
    // Calls callable from this frame with the prepared arguments frame.
    Value call(const Value& callable, Frame& arguments);

    // Registers a native and sets the variable of the same name to "<name>".
    void addNative(std::string_view name, std::unique_ptr<Native> native);

    // The label that the next new frame will take, and the text of a label
    // number (":1:", ":A:", ":10:"...).
    static std::uint64_t nextLabelNumber();
    static Value labelText(std::uint64_t number);

private:
    Frame* previous_;
    Frame* root_;
    Frame* closure_;
    Value label_;
    int depth_;
};

// The name of a member: the left name, a dot if the left name ends in a
// letter, digit or underscore, then the key.
Value memberName(const Value& left, std::string_view key);

bool isSymbolByte(unsigned char c);

// The name of argument i: "$0", "$1", ...
Value argumentName(std::size_t i);

// Calls callable from caller with the given arguments, building the
// arguments frame as a script call does ($0..., $n and, if given, $this).
Value callWith(Frame& caller, const Value& callable, const Value* arguments, std::size_t count,
               const Value& self = Value());

}  // namespace Quol
