#include "quol/Evaluator.h"

#include <gtest/gtest.h>

#include <string>

#include "quol/Exception.h"
#include "quol/Frame.h"
#include "quol/StandardLibrary.h"

using Quol::Frame;
using Quol::Value;

namespace {

class EvaluatorTest : public testing::Test {
protected:
    EvaluatorTest() { Quol::prepareStandardRoot(root); }

    std::string run(const std::string& text) { return Quol::evaluate(root, Value(text)).str(); }

    std::string failure(const std::string& text) {
        try {
            run(text);
        } catch (const Quol::Exception& e) {
            return e.text().str();
        }
        return "no failure";
    }

    Quol::Exception caught(const std::string& text) {
        try {
            run(text);
        } catch (const Quol::Exception& e) {
            return e;
        }
        return Quol::Exception("no failure");
    }

    Frame root;
};

}  // namespace

TEST_F(EvaluatorTest, AWholeTextIsOneOptionalExpression) {
    EXPECT_EQ(run(""), "");
    EXPECT_EQ(run("  // nothing\n"), "");
    EXPECT_EQ(run("1 + 2"), "3");
    EXPECT_EQ(run("{ x = 4; x * x }"), "16");
    EXPECT_EQ(failure("1; 2"), "Syntax error");
    EXPECT_EQ(failure(")"), "Syntax error");
}

TEST_F(EvaluatorTest, ScriptPiIsPrintedWithFourteenDigits) { EXPECT_EQ(run("PI"), "3.1415926535898"); }

TEST_F(EvaluatorTest, FunctionsAreTheTextOfTheirBlock) {
    const Value source("f = function { $0 + 1 }");
    Quol::evaluate(root, source);
    const Value f = root.get(Value("f"), false);
    EXPECT_EQ(f, "{ $0 + 1 }");
    // The function's text is the source's own bytes, not a copy.
    EXPECT_TRUE(f.sharesBufferWith(source));
    EXPECT_EQ(run("f(41)"), "42");
}

TEST_F(EvaluatorTest, LambdasCarryTheClosureLabel) {
    EXPECT_EQ(run("> x + 1"), ">::x + 1");
    EXPECT_EQ(run(">  ^lv == 789  "), ">::^lv == 789");
    const std::string inside = run("function { > $0 }()");
    EXPECT_EQ(inside.front(), '>');
    EXPECT_EQ(inside.substr(inside.size() - 2), "$0");
    EXPECT_NE(inside, ">::$0");
}

TEST_F(EvaluatorTest, FailuresRecordTheirPositions) {
    const Quol::Exception e = caught("{\n  f = function { 1 + undefinedThing };\n  f()\n}");
    EXPECT_EQ(e.text(), "Undefined: 'undefinedThing'");
    ASSERT_EQ(e.positions().size(), 2u);
    // Innermost first: inside the function body, then at the call.
    EXPECT_EQ(e.positions()[0].source, "{ 1 + undefinedThing }");
    EXPECT_EQ(e.positions()[0].offset, 20u);
    EXPECT_EQ(e.positions()[1].offset, 46u);
    EXPECT_EQ(Quol::faultLines(e),
              "{ 1 + undefinedThing <!>  }\n"
              "...efinedThing };\n  f() <!> \n}\n");
}

TEST_F(EvaluatorTest, FaultLinesStopAtTwentyBytesAndAtANul) {
    Quol::Exception e("x");
    e.addPosition(Value("0123456789012345678901234567890123456789"), 25);
    e.addPosition(Value(std::string("ab\0cd", 5)), 4);
    e.addPosition(Value("short"), 2);
    EXPECT_EQ(Quol::faultLines(e), "...56789012345678901234 <!> 567890123456789\nab <!> d\nsh <!> ort\n");
    EXPECT_EQ(Quol::failureReport(e), "x\n" + Quol::faultLines(e));
}

TEST_F(EvaluatorTest, DeepParenthesesFailCleanly) {
    const int depth = 100000;
    const std::string text = std::string(depth, '(') + "1" + std::string(depth, ')');
    EXPECT_EQ(failure(text), "Expression nesting too deep");
    // The evaluator is usable afterwards.
    EXPECT_EQ(run("((((1))))"), "1");
}

TEST_F(EvaluatorTest, DeepBlocksAndOperatorsFailCleanly) {
    const int depth = 100000;
    EXPECT_EQ(failure(std::string(depth, '{') + std::string(depth, '}')), "Expression nesting too deep");
    EXPECT_EQ(failure(std::string(depth, '!') + "true"), "Expression nesting too deep");
    std::string chain;
    for (int i = 0; i < depth; ++i) chain += "1+(";
    EXPECT_EQ(failure(chain + "1" + std::string(depth, ')')), "Expression nesting too deep");
    std::string lambdas(depth, '>');
    EXPECT_EQ(failure(lambdas + "1"), "Expression nesting too deep");
    std::string indirections(depth, '[');
    EXPECT_EQ(failure(indirections), "Expression nesting too deep");
}

TEST_F(EvaluatorTest, ModerateNestingWorks) {
    const int depth = 500;
    EXPECT_EQ(run(std::string(depth, '(') + "7" + std::string(depth, ')')), "7");
    EXPECT_EQ(run(std::string(depth, '{') + "8" + std::string(depth, '}')), "8");
}

TEST_F(EvaluatorTest, DeepRecursionWithNestedExpressionsHitsTheCallLimit) {
    // Every level nests a few expressions; the call limit comes first.
    EXPECT_EQ(run("{ r = function { if ($0 > 0) ((((r($0 - 1) + 1)))) else 0 }; r(198) }"), "198");
    EXPECT_EQ(run("try(> { r = function { ((((r($0 + 1))))) }; r(0) })"), "Call depth limit exceeded");
    // Through natives as well.
    EXPECT_EQ(run("try(> { r = function { try(> r()) }; r() })"), "");
    EXPECT_EQ(run("{ hits = 0; r = function { ::hits += 1; foreach(@$, > r()) }; try(r); hits > 50 }"), "true");
}

TEST_F(EvaluatorTest, DryModeTouchesNothing) {
    EXPECT_EQ(run("{ n = 0; if (false) { n = 1; print(n) }; n }"), "0");
    EXPECT_EQ(run("{ n = 0; f = function { n = 1 }; n }"), "0");
    EXPECT_EQ(run("{ n = 0; l = > n = 1; n }"), "0");
}

TEST_F(EvaluatorTest, OnlyScriptFailuresLeaveTheEvaluator) {
    // A failure of the literal reader comes out as a script failure.
    EXPECT_EQ(failure("unescape('x')"), "Invalid string literal: 'x'");
    EXPECT_EQ(failure("\"abc"), "Unterminated string");
}

TEST_F(EvaluatorTest, AStepLimitEndsEndlessLoops) {
    Quol::StepLimit limit(10000);
    EXPECT_EQ(failure("{ for (;true;) 1 }"), "Step limit exceeded");
    // Once spent, nothing more runs, not even inside try.
    EXPECT_EQ(failure("try(> 1)"), "Step limit exceeded");
}

TEST_F(EvaluatorTest, TextsHaveAMaximumLength) {
    const std::size_t saved = Quol::maxValueSize();
    Quol::setMaxValueSize(1000);
    EXPECT_EQ(failure("{ s = 'x'; for (;true;) s #= s }"), "Text too long");
    EXPECT_EQ(failure("{ s = 'x'; for (;true;) s = s # s }"), "Text too long");
    EXPECT_EQ(run("{ s = 'x'; for (i = 0; i < 9; ++i) s #= s; length(s) }"), "512");
    Quol::setMaxValueSize(saved);
}
