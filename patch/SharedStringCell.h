// A string of 16-bit characters that one thread may replace while others read
// it, with no lock: two slots, each with a state word, and the index of the
// current slot.
//
// Slot states: 0 free, 1 being written (or being cleared after retirement),
// 2 published with no reader, and each count above 2 is one reader. A retired
// slot keeps one count per remaining reader above 1; the last one out clears
// the text and frees the slot.
//
// A reader never sees a half-written text, and a writer never waits on a lock:
// when every slot is busy it yields its time slice and tries again.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

class SharedStringCell {
public:
    static constexpr uint32_t SLOT_COUNT = 2;

    SharedStringCell();
    explicit SharedStringCell(std::u16string_view text);
    // Copies the text, never the slots: a copy is a cell of its own.
    SharedStringCell(const SharedStringCell& other);
    SharedStringCell& operator=(const SharedStringCell& other);

    void write(std::u16string_view text);
    std::u16string read() const;

private:
    struct Slot {
        std::atomic<uint32_t> state{0};
        std::u16string text;
    };

    // Decrement of a slot's state; the reader or writer that leaves a
    // retired slot at 1 clears it and sets it free.
    void releaseSlot(uint32_t index) const;

    mutable Slot slots_[SLOT_COUNT];
    std::atomic<uint32_t> current_{0};
    std::atomic<uint32_t> lastClaimed_{0};
};
