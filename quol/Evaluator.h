// The script evaluator: one recursive-descent walk over the source text that
// evaluates as it goes. There is no syntax tree and no cache; loops re-read
// their text, and what is not to run is walked in dry mode, which checks the
// syntax and touches nothing.
#pragma once

#include "quol/Frame.h"
#include "quol/Value.h"

namespace Quol {

// Evaluates source, which must be one optional expression (as a rule a block
// in braces), in frame, and gives its value. Failures throw Exception with
// the fault position added.
Value evaluate(Frame& frame, const Value& source);

// How deeply expressions may nest on one thread, across calls, before the
// evaluator refuses to go deeper with "Expression nesting too deep". A
// budget of native stack bytes, counted from the outermost expression,
// applies as well. Together they keep text such as a hundred thousand
// parentheses from overflowing the stack, while 199 nested script calls fit.
constexpr int kMaxNesting = 3000;

// While it lives, limits the expressions this thread may evaluate: after
// `steps` of them every further one fails with "Step limit exceeded". For
// text that may never end, such as fuzzed input. Limits do not nest.
class StepLimit {
public:
    explicit StepLimit(unsigned long long steps);
    ~StepLimit();
    StepLimit(const StepLimit&) = delete;
    StepLimit& operator=(const StepLimit&) = delete;

private:
    unsigned long long left_;
};

}  // namespace Quol
