#include "quol/Value.h"

#include <cstring>
#include <new>

#include "quol/Exception.h"

namespace Quol {

// One allocation holds the header and up to kInlineBytes of text. A longer
// text lives in a separate heap buffer that the block points to.
struct Value::Block {
    std::uint32_t refs;
    std::uint32_t capacity;  // bytes available at text
    char* text;              // inlineText, or a heap buffer
    Block* nextFree;
    char inlineText[kInlineBytes];

    bool isInline() const { return text == inlineText; }
};

namespace {

constexpr std::size_t kMaxFreeBlocks = 4096;
constexpr std::size_t kGrowthStep = 64 * 1024;

// The free list belongs to the thread: the interpreter runs on one thread,
// and this keeps other threads that touch values out of its way.
struct BlockPool {
    Value::Block* head = nullptr;
    std::size_t freeCount = 0;
    std::size_t inUse = 0;
    ~BlockPool();
};

thread_local bool poolGone = false;
thread_local BlockPool pool;

BlockPool::~BlockPool() {
    while (head) {
        Value::Block* b = head;
        head = b->nextFree;
        ::operator delete(b);
    }
    freeCount = 0;
    poolGone = true;
}

Value::Block* takeBlock() {
    Value::Block* b;
    if (!poolGone && pool.head) {
        b = pool.head;
        pool.head = b->nextFree;
        --pool.freeCount;
    } else {
        b = static_cast<Value::Block*>(::operator new(sizeof(Value::Block)));
    }
    if (!poolGone) ++pool.inUse;
    b->refs = 1;
    b->capacity = Value::kInlineBytes;
    b->text = b->inlineText;
    b->nextFree = nullptr;
    return b;
}

void giveBlock(Value::Block* b) {
    if (!b->isInline()) delete[] b->text;
    if (poolGone) {
        ::operator delete(b);
        return;
    }
    --pool.inUse;
    if (pool.freeCount >= kMaxFreeBlocks) {
        ::operator delete(b);
        return;
    }
    b->nextFree = pool.head;
    pool.head = b;
    ++pool.freeCount;
}

thread_local std::size_t sizeLimit = 64u << 20;

void checkSize(std::size_t size) {
    if (size > sizeLimit) fail("Text too long");
}

// A block with room for at least `capacity` bytes.
Value::Block* blockFor(std::size_t capacity) {
    Value::Block* b = takeBlock();
    if (capacity > Value::kInlineBytes) {
        try {
            b->text = new char[capacity];
        } catch (...) {
            giveBlock(b);
            throw;
        }
        b->capacity = static_cast<std::uint32_t>(capacity);
    }
    return b;
}

}  // namespace

std::size_t maxValueSize() { return sizeLimit; }
void setMaxValueSize(std::size_t bytes) { sizeLimit = bytes; }

ValuePoolStats valuePoolStats() {
    if (poolGone) return {0, 0};
    return {pool.inUse, pool.freeCount};
}

Value::Value(std::string_view text) {
    if (text.empty()) return;
    checkSize(text.size());
    block_ = blockFor(text.size());
    std::memcpy(block_->text, text.data(), text.size());
    data_ = block_->text;
    size_ = text.size();
}

Value Value::joined(std::string_view a, std::string_view b, std::string_view c) {
    Value v;
    const std::size_t n = a.size() + b.size() + c.size();
    if (n == 0) return v;
    checkSize(n);
    v.block_ = blockFor(n);
    char* out = v.block_->text;
    if (!a.empty()) std::memcpy(out, a.data(), a.size());
    if (!b.empty()) std::memcpy(out + a.size(), b.data(), b.size());
    if (!c.empty()) std::memcpy(out + a.size() + b.size(), c.data(), c.size());
    v.data_ = out;
    v.size_ = n;
    return v;
}

Value Value::external(const char* data, std::size_t size) noexcept {
    Value v;
    if (size) {
        v.data_ = data;
        v.size_ = size;
    }
    return v;
}

Value::Value(const Value& other) noexcept : block_(other.block_), data_(other.data_), size_(other.size_) {
    if (block_) ++block_->refs;
}

Value::Value(Value&& other) noexcept : block_(other.block_), data_(other.data_), size_(other.size_) {
    other.block_ = nullptr;
    other.data_ = emptyText();
    other.size_ = 0;
}

Value& Value::operator=(const Value& other) noexcept {
    if (other.block_) ++other.block_->refs;
    release();
    block_ = other.block_;
    data_ = other.data_;
    size_ = other.size_;
    return *this;
}

Value& Value::operator=(Value&& other) noexcept {
    if (this != &other) {
        release();
        block_ = other.block_;
        data_ = other.data_;
        size_ = other.size_;
        other.block_ = nullptr;
        other.data_ = emptyText();
        other.size_ = 0;
    }
    return *this;
}

Value::~Value() { release(); }

void Value::release() noexcept {
    if (block_ && --block_->refs == 0) giveBlock(block_);
    block_ = nullptr;
}

Value Value::substr(std::size_t pos, std::size_t count) const noexcept {
    Value v;
    if (pos >= size_) return v;
    std::size_t n = size_ - pos;
    if (count < n) n = count;
    if (n == 0) return v;
    v.block_ = block_;
    if (block_) ++block_->refs;
    v.data_ = data_ + pos;
    v.size_ = n;
    return v;
}

void Value::append(std::string_view text) {
    if (text.empty()) return;
    const std::size_t n = text.size();
    const std::size_t needed = size_ + n;
    checkSize(needed);
    // Sole owner with room behind our end: whatever lies there is no longer
    // visible to anyone, so the text can be written in place.
    if (block_ && block_->refs == 1) {
        const std::size_t offset = static_cast<std::size_t>(data_ - block_->text) + size_;
        if (offset + n <= block_->capacity) {
            std::memcpy(block_->text + offset, text.data(), n);
            size_ += n;
            return;
        }
    }
    std::size_t capacity = needed;
    if (needed > kInlineBytes) capacity = needed + (needed < kGrowthStep ? needed : kGrowthStep);
    Block* b = blockFor(capacity);
    std::memcpy(b->text, data_, size_);
    std::memcpy(b->text + size_, text.data(), n);  // text may lie in the old buffer: still alive here
    release();
    block_ = b;
    data_ = b->text;
    size_ = needed;
}

bool Value::uniquelyOwned() const noexcept { return block_ && block_->refs == 1; }

bool Value::sharesBufferWith(const Value& other) const noexcept {
    return block_ != nullptr && block_ == other.block_;
}

}  // namespace Quol
