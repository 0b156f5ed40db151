// The lock-free event ring: order, capacity, the overrun exception, partial
// reads and discarding.
#include <gtest/gtest.h>

#include <cstdint>

#include "engine/EventRing.h"
#include "engine/TimedEvent.h"
#include "platform/Exceptions.h"

TEST(EventRing, TimedEventIsEightBytes) { EXPECT_EQ(sizeof(TimedEvent), 8u); }

TEST(EventRing, ItemsComeOutInOrder) {
    EventRing<int32_t, 8> ring;
    for (int i = 0; i < 5; ++i) ring.write(i * 10);
    EXPECT_EQ(ring.available(), 5u);
    EXPECT_EQ(ring.freeSpace(), 3u);
    int32_t out[8] = {};
    EXPECT_EQ(ring.read(out, 3), 3u);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[2], 20);
    EXPECT_EQ(ring.read(out, 8), 2u);
    EXPECT_EQ(out[0], 30);
    EXPECT_EQ(out[1], 40);
    EXPECT_EQ(ring.read(out, 8), 0u);
    EXPECT_EQ(ring.freeSpace(), 8u);
}

TEST(EventRing, FullRingThrowsOverrunAndKeepsItsContent) {
    EventRing<int32_t, 4> ring;
    for (int i = 0; i < 4; ++i) ring.write(i);
    EXPECT_THROW(ring.write(99), Kvx::xCircularFIFOOverrun);
    try {
        ring.write(99);
    } catch (const Kvx::xCircularFIFOOverrun& e) {
        EXPECT_STREQ(e.what(), "Circular FIFO overrun");
    }
    int32_t out[4];
    ASSERT_EQ(ring.read(out, 4), 4u);
    EXPECT_EQ(out[3], 3);
    ring.write(5);  // room again
    EXPECT_EQ(ring.available(), 1u);
}

TEST(EventRing, DiscardDropsEverythingWaiting) {
    EventRing<TimedEvent, 16> ring;
    for (int i = 0; i < 10; ++i) ring.write(TimedEvent{i, 0x90, 60, 100, 0});
    ring.discard();
    EXPECT_EQ(ring.available(), 0u);
    EXPECT_EQ(ring.freeSpace(), 16u);
    TimedEvent out[4];
    EXPECT_EQ(ring.read(out, 4), 0u);
    ring.write(TimedEvent{7, 0x80, 1, 2, 0});
    EXPECT_EQ(ring.read(out, 4), 1u);
    EXPECT_EQ(out[0].time, 7);
}

TEST(EventRing, ReadOfZeroTakesNothing) {
    EventRing<int32_t, 4> ring;
    ring.write(1);
    int32_t out[1];
    EXPECT_EQ(ring.read(out, 0), 0u);
    EXPECT_EQ(ring.available(), 1u);
}

TEST(EventRing, ManyLapsKeepTheOrder) {
    EventRing<int32_t, 2> ring;
    int32_t out[2];
    for (int32_t i = 0; i < 100000; ++i) {
        ring.write(i);
        ring.write(-i);
        ASSERT_EQ(ring.read(out, 2), 2u);
        ASSERT_EQ(out[0], i);
        ASSERT_EQ(out[1], -i);
    }
}
