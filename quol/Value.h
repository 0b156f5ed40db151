// The one data type of the script language: an immutable, counted byte
// string. Copies and substrings share one buffer through a reference count,
// so taking the body of a function out of a script copies nothing.
//
// Buffers come from a free list of fixed-size blocks that hold up to
// Value::kInlineBytes of text next to their header; longer texts get a
// separate buffer. A value that is the only owner of its buffer and has room
// behind its end grows in place when appended to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Quol {

class Value {
public:
    static constexpr std::size_t kInlineBytes = 52;
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

    Value() noexcept = default;
    Value(const char* text) : Value(std::string_view(text)) {}
    Value(std::string_view text);
    Value(const std::string& text) : Value(std::string_view(text)) {}
    Value(const Value& other) noexcept;
    Value(Value&& other) noexcept;
    Value& operator=(const Value& other) noexcept;
    Value& operator=(Value&& other) noexcept;
    ~Value();

    // A value over memory that outlives every value made from it (string
    // literals in the code, embedded resources): nothing is copied or counted.
    static Value external(const char* data, std::size_t size) noexcept;
    static Value external(std::string_view text) noexcept { return external(text.data(), text.size()); }

    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    const char* data() const noexcept { return data_; }
    unsigned char operator[](std::size_t i) const noexcept { return static_cast<unsigned char>(data_[i]); }
    unsigned char front() const noexcept { return static_cast<unsigned char>(data_[0]); }
    unsigned char back() const noexcept { return static_cast<unsigned char>(data_[size_ - 1]); }
    std::string_view view() const noexcept { return {data_, size_}; }
    operator std::string_view() const noexcept { return view(); }
    std::string str() const { return std::string(data_, size_); }

    // Shares the buffer; pos beyond the end gives the empty value.
    Value substr(std::size_t pos, std::size_t count = npos) const noexcept;

    // The texts one after the other, in one buffer.
    static Value joined(std::string_view a, std::string_view b, std::string_view c = {});

    void append(std::string_view text);
    void append(char byte) { append(std::string_view(&byte, 1)); }

    // True if the value owns its buffer alone (for tests of the sharing).
    bool uniquelyOwned() const noexcept;
    // True if this and other view the same buffer.
    bool sharesBufferWith(const Value& other) const noexcept;

    friend bool operator==(const Value& a, const Value& b) noexcept { return a.view() == b.view(); }
    friend bool operator==(const Value& a, std::string_view b) noexcept { return a.view() == b; }
    friend bool operator==(const Value& a, const char* b) noexcept { return a.view() == std::string_view(b); }

    // Byte order: the common prefix compared as unsigned bytes, then the
    // shorter first. This is the order of every variable map.
    struct Less {
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const noexcept { return a < b; }
    };

    struct Block;

private:
    void release() noexcept;

    Block* block_ = nullptr;       // null for the empty value and for external text
    const char* data_ = emptyText();
    std::size_t size_ = 0;

    static const char* emptyText() noexcept { return ""; }
};

// The longest value this thread may build; a longer one fails with the
// script failure "Text too long". 64 MiB unless set otherwise.
std::size_t maxValueSize();
void setMaxValueSize(std::size_t bytes);

// Pool statistics for tests and benchmarks: blocks handed out and blocks
// waiting in this thread's free list.
struct ValuePoolStats {
    std::size_t blocksInUse;
    std::size_t blocksFree;
};
ValuePoolStats valuePoolStats();

}  // namespace Quol
