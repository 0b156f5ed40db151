#include "quol/Evaluator.h"

#include <cmath>
#include <cstdint>
#include <string>

#include "quol/Classification.h"
#include "notation/Escape.h"
#include "quol/Exception.h"
#include "quol/Number.h"

namespace Quol {

namespace {

// The evaluator recurses once per nested term. Two limits keep that recursion
// off the end of the native stack: a count of nested expressions, and the
// bytes of stack used since the outermost expression of this thread.
#if defined(__SANITIZE_ADDRESS__)
#define QUOL_LARGE_FRAMES 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUOL_LARGE_FRAMES 1
#endif
#endif
#ifdef QUOL_LARGE_FRAMES
constexpr std::size_t kStackBudget = 5u << 20;  // instrumented frames are several times larger
#else
constexpr std::size_t kStackBudget = 640u << 10;  // leaves room on a 1 MiB thread stack
#endif

thread_local int nesting = 0;
thread_local std::uintptr_t stackBase = 0;
thread_local unsigned long long* stepsLeft = nullptr;

class NestingGuard {
public:
    NestingGuard() {
        const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
        if (nesting == 0) stackBase = here;
        const std::uintptr_t used = stackBase > here ? stackBase - here : here - stackBase;
        if (nesting >= kMaxNesting || used > kStackBudget) fail("Expression nesting too deep");
        if (stepsLeft) {
            if (*stepsLeft == 0) fail("Step limit exceeded");
            --*stepsLeft;
        }
        ++nesting;
    }
    ~NestingGuard() { --nesting; }
    NestingGuard(const NestingGuard&) = delete;
    NestingGuard& operator=(const NestingGuard&) = delete;
};

// The outcome of a term or an expression: a symbol not yet read, or a value.
struct Result {
    bool isSymbol = false;
    Value text;

    void plain(Value v = Value()) {
        isSymbol = false;
        text = std::move(v);
    }
    void symbol(Value v) {
        isSymbol = true;
        text = std::move(v);
    }
};

enum class Op {
    None, Member, Index, Call, PostIncrement, PostDecrement,
    Multiply, Divide, Remainder, Add, Subtract, ShiftLeft, ShiftRight, Concatenate,
    Less, LessEqual, Greater, GreaterEqual, Equal, NotEqual, Same, NotSame,
    BitAnd, BitXor, BitOr, And, Or,
    Assign, AddAssign, SubtractAssign, MultiplyAssign, DivideAssign, RemainderAssign, ConcatenateAssign,
    ShiftLeftAssign, ShiftRightAssign, BitAndAssign, BitXorAssign, BitOrAssign,
};

struct Operator {
    Op op;
    int precedence;
    int length;
};

constexpr int kAssignment = 1;

bool isHexDigit(int c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }
int hexValue(int c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; }

// The operation that a compound assignment combines with.
Op combining(Op op) {
    switch (op) {
    case Op::AddAssign: return Op::Add;
    case Op::SubtractAssign: return Op::Subtract;
    case Op::MultiplyAssign: return Op::Multiply;
    case Op::DivideAssign: return Op::Divide;
    case Op::RemainderAssign: return Op::Remainder;
    case Op::ConcatenateAssign: return Op::Concatenate;
    case Op::ShiftLeftAssign: return Op::ShiftLeft;
    case Op::ShiftRightAssign: return Op::ShiftRight;
    case Op::BitAndAssign: return Op::BitAnd;
    case Op::BitXorAssign: return Op::BitXor;
    case Op::BitOrAssign: return Op::BitOr;
    default: return Op::None;
    }
}

int compareBytes(std::string_view a, std::string_view b) { return a.compare(b) < 0 ? -1 : (a == b ? 0 : 1); }

// Relational order: numbers below everything else, numbers among themselves
// as floats, the rest by bytes.
int compareValues(const Value& l, const Value& r) {
    double a, b;
    const bool ln = strictNumber(l, a), rn = strictNumber(r, b);
    if (ln && rn) return a < b ? -1 : (a > b ? 1 : 0);
    if (ln) return -1;
    if (rn) return 1;
    return compareBytes(l, r);
}

bool equalValues(const Value& l, const Value& r) {
    double a, b;
    const bool ln = strictNumber(l, a), rn = strictNumber(r, b);
    if (ln && rn) return a == b;
    if (ln != rn) return false;
    return l == r;
}

Value integerResult(std::uint32_t v) { return integerToString(static_cast<std::int32_t>(v)); }

Value binary(Op op, Value left, const Value& right) {
    switch (op) {
    case Op::Multiply: {
        const double a = readNumber(left);
        return numberToString(a * readNumber(right));
    }
    case Op::Divide: {
        const double a = readNumber(left);
        return numberToString(a / readNumber(right));
    }
    case Op::Remainder: {
        const double a = readNumber(left);
        return numberToString(std::fmod(a, readNumber(right)));
    }
    case Op::Add: {
        const double a = readNumber(left);
        return numberToString(a + readNumber(right));
    }
    case Op::Subtract: {
        const double a = readNumber(left);
        return numberToString(a - readNumber(right));
    }
    case Op::ShiftLeft: {
        const auto a = static_cast<std::uint32_t>(readInteger(left));
        return integerResult(a << (static_cast<std::uint32_t>(readInteger(right)) & 31u));
    }
    case Op::ShiftRight: {
        const auto a = static_cast<std::uint32_t>(readInteger(left));
        return integerResult(a >> (static_cast<std::uint32_t>(readInteger(right)) & 31u));
    }
    case Op::BitAnd: {
        const auto a = static_cast<std::uint32_t>(readInteger(left));
        return integerResult(a & static_cast<std::uint32_t>(readInteger(right)));
    }
    case Op::BitXor: {
        const auto a = static_cast<std::uint32_t>(readInteger(left));
        return integerResult(a ^ static_cast<std::uint32_t>(readInteger(right)));
    }
    case Op::BitOr: {
        const auto a = static_cast<std::uint32_t>(readInteger(left));
        return integerResult(a | static_cast<std::uint32_t>(readInteger(right)));
    }
    case Op::Concatenate:
        left.append(right);
        return left;
    case Op::Less: return booleanValue(compareValues(left, right) < 0);
    case Op::LessEqual: return booleanValue(compareValues(left, right) <= 0);
    case Op::Greater: return booleanValue(compareValues(left, right) > 0);
    case Op::GreaterEqual: return booleanValue(compareValues(left, right) >= 0);
    case Op::Equal: return booleanValue(equalValues(left, right));
    case Op::NotEqual: return booleanValue(!equalValues(left, right));
    case Op::Same: return booleanValue(left == right);
    case Op::NotSame: return booleanValue(!(left == right));
    default: return Value();
    }
}

class Evaluator {
public:
    Evaluator(Frame& frame, const Value& source)
        : frame_(frame), source_(source), text_(source.data()), end_(source.size()) {}

    Value run() {
        Result r;
        expression(r, true, false, 0);
        skipWhite();
        if (pos_ < end_) fail("Syntax error");
        return read(r);
    }

    std::size_t position() const { return pos_; }

private:
    int peek(std::size_t ahead = 0) const {
        return pos_ + ahead < end_ ? static_cast<unsigned char>(text_[pos_ + ahead]) : -1;
    }

    Value slice(std::size_t from, std::size_t to) const { return source_.substr(from, to - from); }

    Value read(const Result& r) { return r.isSymbol ? frame_.get(r.text, true) : r.text; }

    void skipWhite() {
        while (pos_ < end_) {
            const char c = text_[pos_];
            if (c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v') {
                ++pos_;
                continue;
            }
            if (c == '/' && pos_ + 1 < end_) {
                if (text_[pos_ + 1] == '/') {
                    pos_ += 2;
                    while (pos_ < end_ && text_[pos_] != '\n' && text_[pos_] != '\r') ++pos_;
                    continue;
                }
                if (text_[pos_ + 1] == '*') {
                    std::size_t p = pos_ + 2;
                    while (p + 1 < end_ && !(text_[p] == '*' && text_[p + 1] == '/')) ++p;
                    if (p + 1 >= end_) fail("Missing '*/'");
                    pos_ = p + 2;
                    continue;
                }
            }
            return;
        }
    }

    void skipSymbolBytes() {
        while (pos_ < end_ && isSymbolByte(static_cast<unsigned char>(text_[pos_]))) ++pos_;
    }

    // A keyword is a word only if no symbol byte follows it.
    bool keyword(std::string_view word) {
        if (end_ - pos_ < word.size() || std::string_view(text_ + pos_, word.size()) != word) return false;
        if (pos_ + word.size() < end_ && isSymbolByte(static_cast<unsigned char>(text_[pos_ + word.size()])))
            return false;
        pos_ += word.size();
        return true;
    }

    void expect(char opener, const char* failure) {
        skipWhite();
        if (peek() != opener) fail(failure);
        ++pos_;
    }

    // One term, then every operator that binds tighter than precedence.
    bool expression(Result& r, bool optional, bool dry, int precedence) {
        NestingGuard guard;
        skipWhite();
        if (!term(r, dry)) {
            if (optional) return false;
            fail("Syntax error");
        }
        for (;;) {
            const std::size_t before = pos_;
            skipWhite();
            const Operator o = nextOperator();
            if (o.op == Op::None ||
                (o.precedence == kAssignment ? precedence > kAssignment : o.precedence <= precedence)) {
                pos_ = before;
                return true;
            }
            pos_ += static_cast<std::size_t>(o.length);
            apply(o, r, dry);
        }
    }

    void closedExpression(Result& r, bool optional, bool dry, int precedence, char closer) {
        expression(r, optional, dry, precedence);
        skipWhite();
        if (peek() != static_cast<unsigned char>(closer)) {
            std::string message = "Missing '";
            message += closer;
            message += '\'';
            fail(message.c_str());
        }
        ++pos_;
    }

    Operator nextOperator() const {
        const int c = peek(), c1 = peek(1), c2 = peek(2);
        switch (c) {
        case '.': return {Op::Member, 14, 1};
        case '[': return {Op::Index, 14, 1};
        case '(': return {Op::Call, 14, 1};
        case '+':
            if (c1 == '+') return {Op::PostIncrement, 14, 2};
            if (c1 == '=') return {Op::AddAssign, kAssignment, 2};
            return {Op::Add, 11, 1};
        case '-':
            if (c1 == '-') return {Op::PostDecrement, 14, 2};
            if (c1 == '=') return {Op::SubtractAssign, kAssignment, 2};
            return {Op::Subtract, 11, 1};
        case '*': return c1 == '=' ? Operator{Op::MultiplyAssign, kAssignment, 2} : Operator{Op::Multiply, 12, 1};
        case '/': return c1 == '=' ? Operator{Op::DivideAssign, kAssignment, 2} : Operator{Op::Divide, 12, 1};
        case '%': return c1 == '=' ? Operator{Op::RemainderAssign, kAssignment, 2} : Operator{Op::Remainder, 12, 1};
        case '<':
            if (c1 == '<') return c2 == '=' ? Operator{Op::ShiftLeftAssign, kAssignment, 3} : Operator{Op::ShiftLeft, 10, 2};
            if (c1 == '=') return {Op::LessEqual, 8, 2};
            return {Op::Less, 8, 1};
        case '>':
            if (c1 == '>') return c2 == '=' ? Operator{Op::ShiftRightAssign, kAssignment, 3} : Operator{Op::ShiftRight, 10, 2};
            if (c1 == '=') return {Op::GreaterEqual, 8, 2};
            return {Op::Greater, 8, 1};
        case '#': return c1 == '=' ? Operator{Op::ConcatenateAssign, kAssignment, 2} : Operator{Op::Concatenate, 9, 1};
        case '=':
            if (c1 == '=') return c2 == '=' ? Operator{Op::Same, 7, 3} : Operator{Op::Equal, 7, 2};
            return {Op::Assign, kAssignment, 1};
        case '!':
            if (c1 == '=') return c2 == '=' ? Operator{Op::NotSame, 7, 3} : Operator{Op::NotEqual, 7, 2};
            return {Op::None, 0, 0};
        case '&':
            if (c1 == '&') return {Op::And, 3, 2};
            if (c1 == '=') return {Op::BitAndAssign, kAssignment, 2};
            return {Op::BitAnd, 6, 1};
        case '^': return c1 == '=' ? Operator{Op::BitXorAssign, kAssignment, 2} : Operator{Op::BitXor, 5, 1};
        case '|':
            if (c1 == '|') return {Op::Or, 2, 2};
            if (c1 == '=') return {Op::BitOrAssign, kAssignment, 2};
            return {Op::BitOr, 4, 1};
        default: return {Op::None, 0, 0};
        }
    }

    // Each operator has a helper of its own, so that the frames on a deep
    // recursion stay small.
    void apply(const Operator& o, Result& r, bool dry) {
        switch (o.op) {
        case Op::Member:
        case Op::Index: member(o.op, r, dry); return;
        case Op::Call: call(r, dry); return;
        case Op::PostIncrement:
        case Op::PostDecrement: postIncrement(o.op, r, dry); return;
        case Op::And:
        case Op::Or: shortCircuit(o, r, dry); return;
        case Op::Assign: assign(r, dry); return;
        default: break;
        }
        if (o.precedence == kAssignment)
            compoundAssign(o.op, r, dry);
        else
            binaryOperator(o, r, dry);
    }

    // .key takes the text of a symbol as key, [key] the value of an
    // expression; the left side must be a symbol and is not read.
    [[gnu::noinline]] void member(Op op, Result& r, bool dry) {
        Result key;
        if (op == Op::Member) {
            expression(key, false, dry, 14);
            if (!key.isSymbol || !r.isSymbol) fail("Invalid lvalue");
            if (!dry) r.text = memberName(r.text, key.text);
            return;
        }
        closedExpression(key, false, dry, 0, ']');
        if (!r.isSymbol) fail("Invalid lvalue");
        if (!dry) r.text = memberName(r.text, read(key));
    }

    [[gnu::noinline]] void postIncrement(Op op, Result& r, bool dry) {
        if (!r.isSymbol) fail("Invalid lvalue");
        if (dry) {
            r.plain();
            return;
        }
        Value old = frame_.get(r.text, false);
        const double n = readInteger(old);
        frame_.set(r.text, numberToString(op == Op::PostIncrement ? n + 1.0 : n - 1.0));
        r.plain(std::move(old));
    }

    [[gnu::noinline]] void shortCircuit(const Operator& o, Result& r, bool dry) {
        const bool left = dry ? false : readBoolean(read(r));
        Result right;
        const bool decided = o.op == Op::Or ? left : !left;
        if (dry || decided) {
            expression(right, false, true, o.precedence);
            r.plain(dry ? Value() : booleanValue(left));
        } else {
            expression(right, false, false, o.precedence);
            r.plain(booleanValue(readBoolean(read(right))));
        }
    }

    // The right side runs first; then the left side must be a symbol.
    [[gnu::noinline]] void assign(Result& r, bool dry) {
        Result right;
        expression(right, false, dry, kAssignment);
        if (!r.isSymbol) fail("Invalid lvalue");
        if (dry) {
            r.plain();
            return;
        }
        Value v = read(right);
        frame_.set(r.text, v);
        r.plain(std::move(v));
    }

    // The old value is read without the fallback to the root.
    [[gnu::noinline]] void compoundAssign(Op op, Result& r, bool dry) {
        if (!r.isSymbol) fail("Invalid lvalue");
        Value old;
        if (!dry) old = frame_.get(r.text, false);
        Result right;
        expression(right, false, dry, kAssignment);
        if (dry) {
            r.plain();
            return;
        }
        Value v = binary(combining(op), std::move(old), read(right));
        frame_.set(r.text, v);
        r.plain(std::move(v));
    }

    // Left-associative: the left side is read before the right one runs.
    [[gnu::noinline]] void binaryOperator(const Operator& o, Result& r, bool dry) {
        Value left;
        if (!dry) left = read(r);
        Result right;
        expression(right, false, dry, o.precedence);
        if (dry) {
            r.plain();
            return;
        }
        r.plain(binary(o.op, std::move(left), read(right)));
    }

    // Arguments are optional expressions separated by commas; once a comma
    // stands, every gap is a void argument.
    [[gnu::noinline]] std::size_t arguments(Frame* frame, bool dry) {
        skipWhite();
        if (peek() == ')') {
            ++pos_;
            return 0;
        }
        std::size_t count = 0;
        for (;;) {
            Result a;
            expression(a, true, dry, 0);
            if (!dry) frame->assign(argumentName(count), read(a));
            ++count;
            skipWhite();
            const int c = peek();
            ++pos_;
            if (c == ',') continue;
            if (c == ')') return count;
            --pos_;
            fail("Expected ',' or ')'");
        }
    }

    [[gnu::noinline]] void call(Result& r, bool dry) {
        if (dry) {
            arguments(nullptr, true);
            r.plain();
            return;
        }
        Frame frame(frame_);
        const std::size_t count = arguments(&frame, false);
        frame.assign(Value::external("$n", 2), integerToString(static_cast<std::int32_t>(count)));
        if (r.isSymbol) {
            const std::size_t dot = r.text.view().rfind('.');
            if (dot != std::string_view::npos && dot > 0) {
                Value self = frame_.reference(r.text.substr(0, dot));
                if (!self.empty()) frame.assign(Value::external("$this", 5), self);
            }
        }
        const Value callee = read(r);
        r.plain(frame_.call(callee, frame));
    }

    // The cases of term that recurse live in helpers of their own, so that
    // the frames on a deep recursion stay small.
    bool term(Result& r, bool dry) {
        if (pos_ >= end_) return false;
        const unsigned char c = static_cast<unsigned char>(text_[pos_]);
        switch (c) {
        case '!':
        case '~':
        case '@': prefix(c, r, dry); return true;
        case '+':
        case '-':
            if (peek(1) == c)
                increment(c, r, dry);
            else
                prefix(c, r, dry);
            return true;
        case '"':
        case '\'': stringLiteral(r, dry); return true;
        case '$':
        case '^': symbol(r); return true;
        case ':':
            if (peek(1) != ':') return false;
            symbol(r);
            return true;
        case '(':
        case '[': bracketed(c, r, dry); return true;
        case '{': block(r, dry); return true;
        case '<': nativeLiteral(r); return true;
        case '>': lambda(r, dry); return true;
        default: break;
        }
        if (c >= '0' && c <= '9') {
            number(r, dry);
            return true;
        }
        if (!isSymbolByte(c)) return false;
        word(c, r, dry);
        return true;
    }

    // $name, ^^$name, ::name: the frame part, then symbol bytes.
    [[gnu::noinline]] void symbol(Result& r) {
        const std::size_t start = pos_;
        if (text_[pos_] == ':') {
            pos_ += 2;
        } else if (text_[pos_] == '$') {
            ++pos_;
        } else {
            while (peek() == '^') ++pos_;
            if (peek() == '$') ++pos_;
        }
        skipSymbolBytes();
        r.symbol(slice(start, pos_));
    }

    // The text up to and including the next '>', as a plain value.
    [[gnu::noinline]] void nativeLiteral(Result& r) {
        const std::size_t start = pos_++;
        while (pos_ < end_ && text_[pos_] != '>') ++pos_;
        if (pos_ < end_) ++pos_;
        r.plain(slice(start, pos_));
    }

    // A keyword, or else a plain symbol. Keywords start with f, i, t or v.
    [[gnu::noinline]] void word(unsigned char c, Result& r, bool dry) {
        switch (c) {
        case 't':
            if (keyword("true")) return r.plain(booleanValue(true));
            break;
        case 'f':
            if (keyword("false")) return r.plain(booleanValue(false));
            if (keyword("for")) return forLoop(r, dry);
            if (keyword("function")) return function(r);
            break;
        case 'i':
            if (keyword("if")) return ifElse(r, dry);
            break;
        case 'v':
            if (keyword("void")) return r.plain();
            break;
        default: break;
        }
        const std::size_t start = pos_;
        skipSymbolBytes();
        r.symbol(slice(start, pos_));
    }

    // ! ~ @ and the single + and -: the operand is a term at precedence 13.
    [[gnu::noinline]] void prefix(unsigned char c, Result& r, bool dry) {
        ++pos_;
        Result o;
        expression(o, false, dry, 13);
        if (c == '@') {
            if (!o.isSymbol) fail("Invalid lvalue");
            r.plain(dry ? Value() : frame_.reference(o.text));
            return;
        }
        if (dry) {
            r.plain();
            return;
        }
        switch (c) {
        case '!': r.plain(booleanValue(!readBoolean(read(o)))); return;
        case '~': r.plain(integerResult(~static_cast<std::uint32_t>(readInteger(read(o))))); return;
        default: {
            const double v = readNumber(read(o));
            r.plain(numberToString(c == '-' ? -v : v));
            return;
        }
        }
    }

    // Prefix ++ and --: the new value, read as an integer without fallback.
    [[gnu::noinline]] void increment(unsigned char c, Result& r, bool dry) {
        pos_ += 2;
        Result o;
        expression(o, false, dry, 13);
        if (!o.isSymbol) fail("Invalid lvalue");
        if (dry) {
            r.plain();
            return;
        }
        const double n = readInteger(frame_.get(o.text, false));
        Value v = numberToString(c == '+' ? n + 1.0 : n - 1.0);
        frame_.set(o.text, v);
        r.plain(std::move(v));
    }

    // ( ... ) keeps a symbol a symbol; [ ... ] turns a value into one.
    [[gnu::noinline]] void bracketed(unsigned char c, Result& r, bool dry) {
        ++pos_;
        Result inner;
        closedExpression(inner, false, dry, 0, c == '(' ? ')' : ']');
        if (c == '(')
            r = std::move(inner);
        else
            r.symbol(dry ? Value() : read(inner));
    }

    [[gnu::noinline]] void stringLiteral(Result& r, bool dry) {
        const char quote = text_[pos_];
        const std::size_t start = pos_ + 1;
        std::size_t p = start;
        bool escapes = false;
        if (quote == '\'') {
            while (p < end_ && text_[p] != '\'') ++p;
        } else {
            while (p < end_ && text_[p] != '"') {
                if (text_[p] == '\\') {
                    escapes = true;
                    p += 2;
                } else {
                    ++p;
                }
            }
        }
        if (p >= end_) fail("Unterminated string");
        if (!escapes || dry) {
            r.plain(dry ? Value() : slice(start, p));
            pos_ = p + 1;
            return;
        }
        std::size_t q = pos_;
        std::string text;
        try {
            text = notation::readStringLiteral(source_.view(), q);
        } catch (const Exception&) {
            throw;
        } catch (const ::Exception& e) {
            fail(e.what());
        }
        pos_ = q;
        r.plain(Value(text));
    }

    [[gnu::noinline]] void number(Result& r, bool dry) {
        const std::size_t start = pos_;
        if (text_[pos_] == '0' && peek(1) == 'x') {
            pos_ += 2;
            std::uint32_t v = 0;
            const std::size_t digits = pos_;
            while (isHexDigit(peek())) v = v * 16u + static_cast<std::uint32_t>(hexValue(text_[pos_++]));
            if (pos_ == digits) fail("Invalid hexadecimal number");
            r.plain(dry ? Value() : integerResult(v));
            return;
        }
        std::size_t p = pos_;
        const double v = parseNumber(source_.view(), p);
        if (p == pos_) fail("Invalid number");
        pos_ = p;
        if (dry) {
            r.plain();
            return;
        }
        // Literals are normalised at once; most already are, and keep
        // pointing into the source.
        char buffer[kNumberTextSize];
        const std::string_view written(buffer, writeNumber(buffer, v, 14, true));
        if (written == std::string_view(text_ + start, pos_ - start))
            r.plain(slice(start, pos_));
        else
            r.plain(Value(written));
    }

    [[gnu::noinline]] void block(Result& r, bool dry) {
        ++pos_;
        expression(r, true, dry, 0);
        for (;;) {
            skipWhite();
            if (pos_ >= end_) fail("Missing '}'");
            const char c = text_[pos_];
            if (c == '}') {
                ++pos_;
                return;
            }
            if (c != ';') fail("Missing ';'?");
            ++pos_;
            expression(r, true, dry, 0);
        }
    }

    [[gnu::noinline]] void ifElse(Result& r, bool dry) {
        expect('(', "Expected '('");
        Result condition;
        closedExpression(condition, false, dry, 0, ')');
        const bool taken = !dry && readBoolean(read(condition));
        if (dry || taken) {
            expression(r, true, dry, 0);
        } else {
            Result skipped;
            expression(skipped, true, true, 0);
        }
        const std::size_t before = pos_;
        skipWhite();
        if (!keyword("else")) {
            pos_ = before;
            return;
        }
        if (dry || !taken) {
            expression(r, true, dry, 5);
        } else {
            Result skipped;
            expression(skipped, true, true, 5);
        }
    }

    [[gnu::noinline]] void forLoop(Result& r, bool dry) {
        expect('(', "Expected '('");
        Result scratch;
        closedExpression(scratch, true, dry, 0, ';');
        const std::size_t conditionAt = pos_;
        closedExpression(scratch, true, dry, 0, ';');
        const std::size_t stepAt = pos_;
        {
            Result skipped;
            closedExpression(skipped, true, true, 0, ')');
        }
        const std::size_t bodyAt = pos_;
        if (dry) {
            expression(r, true, true, 0);
            return;
        }
        bool running = readBoolean(read(scratch));
        if (!running) {
            Result skipped;
            expression(skipped, true, true, 0);
            return;
        }
        std::size_t after = bodyAt;
        while (running) {
            pos_ = bodyAt;
            expression(r, true, false, 0);
            after = pos_;
            pos_ = stepAt;
            closedExpression(r, true, false, 0, ')');
            pos_ = conditionAt;
            closedExpression(scratch, true, false, 0, ';');
            running = readBoolean(read(scratch));
        }
        pos_ = after;
    }

    [[gnu::noinline]] void function(Result& r) {
        skipWhite();
        if (peek() != '{') fail("Expected '{'");
        const std::size_t start = pos_;
        Result skipped;
        block(skipped, true);
        r.plain(slice(start, pos_));
    }

    [[gnu::noinline]] void lambda(Result& r, bool dry) {
        ++pos_;
        skipWhite();
        const std::size_t start = pos_;
        Result skipped;
        expression(skipped, false, true, 0);
        if (dry) {
            r.plain();
            return;
        }
        r.plain(Value::joined(">", frame_.closure().label(), std::string_view(text_ + start, pos_ - start)));
    }

    Frame& frame_;
    const Value source_;
    const char* text_;
    std::size_t end_;
    std::size_t pos_ = 0;
};

}  // namespace

StepLimit::StepLimit(unsigned long long steps) : left_(steps) { stepsLeft = &left_; }
StepLimit::~StepLimit() { stepsLeft = nullptr; }

Value evaluate(Frame& frame, const Value& source) {
    Evaluator evaluator(frame, source);
    try {
        return evaluator.run();
    } catch (Exception& e) {
        e.addPosition(source, evaluator.position());
        throw;
    }
}

}  // namespace Quol
