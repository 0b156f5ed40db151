#include "quol/Frame.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "quol/Evaluator.h"
#include "quol/Exception.h"
#include "quol/Natives.h"

using Quol::Frame;
using Quol::Value;

namespace {

std::string failureOf(const std::function<void()>& f) {
    try {
        f();
    } catch (const Quol::Exception& e) {
        return e.text().str();
    }
    return "no failure";
}

// A frame that refuses writes to names beginning with "const".
class GuardedFrame : public Frame {
public:
    using Frame::Frame;
    bool assign(const Value& name, const Value& value) override {
        if (name.view().substr(0, 5) == "const") return false;
        return Frame::assign(name, value);
    }
};

}  // namespace

TEST(FrameTest, LabelsAreBase62BetweenColons) {
    EXPECT_EQ(Frame::labelText(1), ":1:");
    EXPECT_EQ(Frame::labelText(9), ":9:");
    EXPECT_EQ(Frame::labelText(10), ":A:");
    EXPECT_EQ(Frame::labelText(35), ":Z:");
    EXPECT_EQ(Frame::labelText(36), ":a:");
    EXPECT_EQ(Frame::labelText(61), ":z:");
    EXPECT_EQ(Frame::labelText(62), ":10:");
    EXPECT_EQ(Frame::labelText(63), ":11:");
    EXPECT_EQ(Frame::labelText(62 * 62), ":100:");
}

TEST(FrameTest, EveryFrameTakesTheNextLabelAndTheRootIsDoubleColon) {
    Frame root;
    EXPECT_EQ(root.label(), "::");
    EXPECT_EQ(&root.root(), &root);
    EXPECT_EQ(&root.closure(), &root);
    EXPECT_EQ(root.depth(), 0);
    EXPECT_EQ(root.previous(), nullptr);
    const Value expected = Frame::labelText(Frame::nextLabelNumber());
    Frame a(root);
    EXPECT_EQ(a.label(), expected);
    Frame b(a);
    EXPECT_NE(a.label(), b.label());
    EXPECT_EQ(b.depth(), 2);
    EXPECT_EQ(&b.root(), &root);
    EXPECT_EQ(b.previous(), &a);
}

TEST(FrameTest, DepthLimitAllows199NestedFrames) {
    Frame root;
    std::vector<std::unique_ptr<Frame>> chain;
    Frame* last = &root;
    for (int i = 1; i <= 199; ++i) {
        chain.push_back(std::make_unique<Frame>(*last));
        last = chain.back().get();
    }
    EXPECT_EQ(last->depth(), 199);
    EXPECT_EQ(failureOf([&] { Frame tooDeep(*last); }), "Call depth limit exceeded");
}

TEST(FrameTest, ResolveWalksTheFramePartAndStripsIt) {
    Frame root;
    Frame caller(root);
    Frame callee(caller);
    Value s("^^x");
    EXPECT_EQ(&callee.resolve(s), &root);
    EXPECT_EQ(s, "x");
    s = Value("^$0");
    EXPECT_EQ(&callee.resolve(s), &caller);
    EXPECT_EQ(s, "$0");
    s = Value("::y");
    EXPECT_EQ(&callee.resolve(s), &root);
    EXPECT_EQ(s, "y");
    s = Value::joined(caller.label(), "z");
    EXPECT_EQ(&callee.resolve(s), &caller);
    EXPECT_EQ(s, "z");
    s = Value("");
    EXPECT_EQ(&callee.resolve(s), &callee);
    s = Value("^");
    EXPECT_EQ(&callee.resolve(s), &caller);
    EXPECT_TRUE(s.empty());
    // Plain names go to the closure, $ names to the frame itself.
    callee.setClosure(root);
    s = Value("plain");
    EXPECT_EQ(&callee.resolve(s), &root);
    s = Value("$local");
    EXPECT_EQ(&callee.resolve(s), &callee);
    EXPECT_EQ(failureOf([&] { Value t("^^^x"); callee.resolve(t); }), "Frame does not exist");
    EXPECT_EQ(failureOf([&] { Value t(":abc"); callee.resolve(t); }), "Invalid identifier: ':abc'");
    EXPECT_EQ(failureOf([&] { Value t(":nope:x"); callee.resolve(t); }), "Frame does not exist: ':nope:'");
}

TEST(FrameTest, GetFallsBackToTheRootOnlyWhenAsked) {
    Frame root;
    root.set(Value("g"), Value("global"));
    Frame f(root);
    EXPECT_EQ(f.get(Value("g"), true), "global");
    EXPECT_EQ(failureOf([&] { f.get(Value("g"), false); }), "Undefined / inappropriate: 'g'");
    EXPECT_EQ(failureOf([&] { f.get(Value("missing"), true); }), "Undefined: 'missing'");
    f.set(Value("v"), Value());
    EXPECT_EQ(f.get(Value("v"), false), "");
    EXPECT_EQ(f.reference(Value("v")), Value::joined(f.label(), "v"));
    EXPECT_EQ(root.reference(Value("v")), "::v");
}

TEST(FrameTest, AFrameCanMakeNamesReadOnly) {
    GuardedFrame root;
    root.set(Value("free"), Value("1"));
    EXPECT_EQ(failureOf([&] { root.set(Value("constant"), Value("1")); }), "Cannot modify: 'constant'");
    EXPECT_EQ(failureOf([&] { Quol::evaluate(root, Value("{ constName = 2 }")); }), "Cannot modify: 'constName'");
}

TEST(FrameTest, ListGivesNamesWithThePrefixInByteOrder) {
    Frame root;
    for (const char* n : {"a.2", "a.10", "a", "b.1", "a.x.y", "a-"}) root.set(Value(n), Value(n));
    Frame::Entries entries;
    root.list("a.", entries);
    std::string names;
    for (const auto& e : entries) names += e.first.str() + " ";
    EXPECT_EQ(names, "a.10 a.2 a.x.y ");
}

TEST(FrameTest, MemberNamesPutADotOnlyAfterASymbolByte) {
    EXPECT_EQ(Quol::memberName(Value("a"), "b"), "a.b");
    EXPECT_EQ(Quol::memberName(Value("a"), "3"), "a.3");
    EXPECT_EQ(Quol::memberName(Value("$"), "2"), "$2");
    EXPECT_EQ(Quol::memberName(Value("^$"), "n"), "^$n");
    EXPECT_EQ(Quol::memberName(Value("^"), ""), "^");
    EXPECT_EQ(Quol::memberName(Value(""), "k"), "k");
    EXPECT_EQ(Quol::memberName(Value(":7:"), "k"), ":7:k");
    EXPECT_EQ(Quol::memberName(Value("a_"), "k"), "a_.k");
}

TEST(FrameTest, CallsDispatchOnTheFirstByte) {
    Frame root;
    Quol::installStandardNatives(root);
    Frame args(root);
    args.set(Value("$0"), Value("abc"));
    EXPECT_EQ(root.call(Value("<length>"), args), "3");
    EXPECT_EQ(root.call(Value("{ $0 # '!' }"), args), "abc!");
    EXPECT_EQ(root.call(Value(">::$0 # '?'"), args), "abc?");
    EXPECT_EQ(failureOf([&] { root.call(Value("<nothing>"), args); }), "Unknown native function: '<nothing>'");
    EXPECT_EQ(failureOf([&] { root.call(Value("text"), args); }), "Illegal call on: 'text'");
    EXPECT_EQ(failureOf([&] { root.call(Value(), args); }), "Illegal call on: ''");
    // A native can be looked up in a labelled frame.
    Frame holder(root);
    Quol::installStandardNatives(holder);
    Frame inner(holder);
    Frame innerArgs(inner);
    innerArgs.set(Value("$0"), Value("xy"));
    EXPECT_EQ(inner.call(Value::joined("<", holder.label(), "length>"), innerArgs), "2");
}

TEST(FrameTest, NativesHaveCallableVariables) {
    Frame root;
    Quol::installStandardNatives(root);
    EXPECT_EQ(root.get(Value("print"), false), "<print>");
    EXPECT_EQ(root.natives.size(), 46u);
    for (const auto& entry : root.natives)
        EXPECT_EQ(root.get(entry.first, false), Value::joined("<", entry.first, ">")) << entry.first.str();
}
