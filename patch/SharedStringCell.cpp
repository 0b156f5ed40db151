#include "patch/SharedStringCell.h"

#include <thread>

SharedStringCell::SharedStringCell() : SharedStringCell(std::u16string_view{}) {}

SharedStringCell::SharedStringCell(std::u16string_view text) {
    slots_[0].text.assign(text);
    slots_[0].state.store(2);
    current_.store(0);
    lastClaimed_.store(0);
}

SharedStringCell::SharedStringCell(const SharedStringCell& other)
    : SharedStringCell(std::u16string_view(other.read())) {}

SharedStringCell& SharedStringCell::operator=(const SharedStringCell& other) {
    if (this != &other) write(other.read());
    return *this;
}

void SharedStringCell::write(std::u16string_view text) {
    // Claim a slot: start two past the last claimed one when that is inside
    // the pool, else at slot 0, and search upward with wrap-around.
    const uint32_t last = lastClaimed_.load();
    uint32_t index = last + 2 < SLOT_COUNT ? last + 2 : 0;
    for (uint32_t tries = 0;; ++tries) {
        uint32_t expected = 0;
        if (slots_[index].state.compare_exchange_strong(expected, 1)) break;
        index = (index + 1) % SLOT_COUNT;
        if (tries % SLOT_COUNT == SLOT_COUNT - 1) std::this_thread::yield();
    }
    lastClaimed_.store(index);

    slots_[index].text.assign(text);
    slots_[index].state.store(2);
    const uint32_t old = current_.exchange(index);
    releaseSlot(old);
}

std::u16string SharedStringCell::read() const {
    for (;;) {
        const uint32_t index = current_.load();
        uint32_t state = slots_[index].state.load();
        if (state >= 2 && slots_[index].state.compare_exchange_strong(state, state + 1)) {
            std::u16string copy = slots_[index].text;
            releaseSlot(index);
            return copy;
        }
        std::this_thread::yield();
    }
}

void SharedStringCell::releaseSlot(uint32_t index) const {
    if (slots_[index].state.fetch_sub(1) - 1 == 1) {
        slots_[index].text.clear();
        slots_[index].state.store(0);
    }
}
