#include "patch/StartupBank.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "patch/Chunk.h"

namespace {

class MemoryBackend : public PreferenceBackend {
public:
    void lock() override {}
    void unlock() override {}
    std::string read() override { return value; }
    void write(std::string_view bytes) override {
        if (failWrites) throw std::runtime_error("disk full");
        value = std::string(bytes);
        ++writes;
    }
    std::string value;
    int writes = 0;
    bool failWrites = false;
};

NorvelleProgram factory(int i) {
    NorvelleProgram p;
    p.setName(u"Factory " + std::u16string(1, static_cast<char16_t>(u'a' + i)));
    p.seed = 500u + static_cast<uint32_t>(i);
    p.computeBranchDeviations();
    return p;
}

// An instance's slots.
class Instance : public BankSlots {
public:
    Instance(StartupBank& bank, OrlThreads::TimerService* timers = nullptr) : link(bank, *this, timers) {
        current = link.copyInto(programs);
    }
    uint32_t slotStamp(int slot) const override { return programs[static_cast<size_t>(slot)].stamp(); }
    NorvelleProgram slotProgram(int slot) const override { return programs[static_cast<size_t>(slot)]; }
    int currentSlot() const override { return current; }

    void edit(int slot, uint32_t seed) {
        programs[static_cast<size_t>(slot)].seed = seed;
        programs[static_cast<size_t>(slot)].touch(true);
    }

    std::vector<NorvelleProgram> programs = std::vector<NorvelleProgram>(PROGRAM_SLOT_COUNT);
    int current = 0;
    StartupBankLink link;
};

std::string storedBank(std::vector<NorvelleProgram> programs, int current) {
    return encodePreferenceMap({{StartupBank::STORE_KEY, encodeStartupBank(programs, current)}});
}

std::vector<NorvelleProgram> namedPrograms(int count, const std::u16string& prefix) {
    std::vector<NorvelleProgram> programs(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        programs[static_cast<size_t>(i)].setName(prefix + std::u16string(1, static_cast<char16_t>(u'A' + i)));
        programs[static_cast<size_t>(i)].path = u"/songs/" + programs[static_cast<size_t>(i)].getName() + u".tdrn";
    }
    return programs;
}

}  // namespace

TEST(StartupBankTest, WithoutAStoredBankTheFactoryPatchesFillIt) {
    MemoryBackend store;
    StartupBank bank(store, factory);
    Instance first(bank);
    EXPECT_EQ(bank.links(), 1);
    EXPECT_EQ(first.current, 0);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(first.programs[static_cast<size_t>(i)].getName(), factory(i).getName());
    EXPECT_FALSE(bank.changed());
}

TEST(StartupBankTest, AStoredBankIsLoadedWithItsCurrentSlotAndPaths) {
    MemoryBackend store;
    store.value = storedBank(namedPrograms(16, u"Stored "), 9);
    StartupBank bank(store, factory);
    Instance first(bank);
    EXPECT_EQ(first.current, 9);
    EXPECT_EQ(first.programs[15].getName(), u"Stored P");
    EXPECT_EQ(first.programs[15].path, u"/songs/Stored P.tdrn");
}

TEST(StartupBankTest, AShortStoredBankTakesTheRestFromTheFactory) {
    MemoryBackend store;
    store.value = storedBank(namedPrograms(3, u"Kept "), 2);
    StartupBank bank(store, factory);
    EXPECT_TRUE(bank.loadStartupBank());
    EXPECT_EQ(bank.program(2).getName(), u"Kept C");
    EXPECT_EQ(bank.program(3).getName(), u"Factory d");
    EXPECT_EQ(bank.currentSlot(), 2);
}

TEST(StartupBankTest, AnUnreadableBankCountsAsMissing) {
    MemoryBackend store;
    std::string bytes = encodeStartupBank(namedPrograms(16, u"Lost "), 4);
    bytes.resize(bytes.size() - 10);
    store.value = encodePreferenceMap({{StartupBank::STORE_KEY, bytes}});
    StartupBank bank(store, factory);
    EXPECT_FALSE(bank.loadStartupBank());
    for (int i = 0; i < 16; ++i) EXPECT_EQ(bank.program(i).getName(), factory(i).getName());
    EXPECT_EQ(bank.currentSlot(), 0);

    MemoryBackend damaged;
    damaged.value = "garbage";
    StartupBank other(damaged, factory);
    EXPECT_FALSE(other.loadStartupBank());
    EXPECT_EQ(other.program(0).getName(), u"Factory a");
}

TEST(StartupBankTest, UnchangedSlotsCopyNothingAndSaveNothing) {
    MemoryBackend store;
    {
        StartupBank bank(store, factory);
        Instance first(bank);
        first.link.poll();
        first.link.poll();
        EXPECT_FALSE(bank.changed());
    }
    EXPECT_EQ(store.writes, 0);
}

TEST(StartupBankTest, AChangedSlotGoesToTheBankAndIsStoredAtTheLastClose) {
    MemoryBackend store;
    StartupBank bank(store, factory);
    {
        Instance a(bank);
        {
            Instance b(bank);
            b.edit(4, 4444);
            b.current = 4;
            b.link.poll();
            EXPECT_TRUE(bank.changed());
            EXPECT_EQ(bank.program(4).seed, 4444u);
            EXPECT_EQ(bank.currentSlot(), 4);
        }
        EXPECT_EQ(store.writes, 0);  // a is still open
        EXPECT_EQ(bank.links(), 1);
    }
    EXPECT_EQ(store.writes, 1);
    EXPECT_FALSE(bank.changed());
    std::vector<NorvelleProgram> back(16);
    uint32_t count = 0;
    PreferenceMap map = decodePreferenceMap(store.value);
    EXPECT_EQ(decodeStartupBank(map[StartupBank::STORE_KEY], back, count), 4);
    EXPECT_EQ(count, 16u);
    EXPECT_EQ(back[4].seed, 4444u);
    EXPECT_EQ(back[5].getName(), u"Factory f");
}

TEST(StartupBankTest, TheLastInstanceToChangeASlotWinsSlotBySlot) {
    MemoryBackend store;
    StartupBank bank(store, factory);
    Instance a(bank);
    Instance b(bank);
    a.edit(1, 11);
    b.edit(1, 21);
    b.edit(2, 22);
    a.link.poll();
    b.link.poll();
    EXPECT_EQ(bank.program(1).seed, 21u);
    a.edit(1, 12);
    a.link.poll();
    b.link.poll();  // b's slot 1 hasn't changed since its last pass
    EXPECT_EQ(bank.program(1).seed, 12u);
    EXPECT_EQ(bank.program(2).seed, 22u);
}

TEST(StartupBankTest, OpeningASongDoesNotChangeTheBankUntilASlotChanges) {
    MemoryBackend store;
    StartupBank bank(store, factory);
    Instance song(bank);
    // A bank chunk arrives: each block's stamp is remembered before it shows.
    std::vector<NorvelleProgram> chunkPrograms = namedPrograms(16, u"Song ");
    for (int i = 0; i < 16; ++i) {
        song.link.remember(i, chunkPrograms[static_cast<size_t>(i)].stamp());
        song.programs[static_cast<size_t>(i)] = chunkPrograms[static_cast<size_t>(i)];
    }
    song.link.poll();
    EXPECT_FALSE(bank.changed());
    EXPECT_EQ(bank.program(0).getName(), u"Factory a");
    song.edit(0, 99);
    song.link.poll();
    EXPECT_TRUE(bank.changed());
    EXPECT_EQ(bank.program(0).getName(), u"Song A");
    EXPECT_EQ(bank.program(1).getName(), u"Factory b");
}

TEST(StartupBankTest, ANewInstanceStartsFromTheProcessBank) {
    MemoryBackend store;
    StartupBank bank(store, factory);
    Instance a(bank);
    a.edit(7, 77);
    a.current = 7;
    a.link.poll();
    Instance b(bank);
    EXPECT_EQ(b.programs[7].seed, 77u);
    EXPECT_EQ(b.current, 7);
    EXPECT_EQ(b.programs[7].stamp(), a.programs[7].stamp());
}

TEST(StartupBankTest, AFailedSaveAtCloseIsIgnored) {
    MemoryBackend store;
    store.failWrites = true;
    StartupBank bank(store, factory);
    {
        Instance a(bank);
        a.edit(0, 5);
        a.link.poll();
    }
    EXPECT_EQ(store.writes, 0);
    EXPECT_EQ(bank.links(), 0);
}

TEST(StartupBankTest, PeriodicTasksRunAtTenAndThousandMilliseconds) {
    uint64_t now = 0;
    OrlThreads::TimerService timers(OrlThreads::TimerService::Mode::manual, [&now] { return now; });
    MemoryBackend store;
    StartupBank bank(store, factory);
    {
        Instance a(bank, &timers);
        EXPECT_EQ(timers.pending(), 2u);
        a.edit(3, 33);
        now = 9;
        EXPECT_EQ(timers.runDue(), 0u);
        now = 10;
        EXPECT_EQ(timers.runDue(), 1u);  // the first pass
        EXPECT_EQ(bank.program(3).seed, 33u);
        a.edit(3, 34);
        now = 999;
        EXPECT_EQ(timers.runDue(), 0u);
        EXPECT_EQ(bank.program(3).seed, 33u);
        now = 1000;
        EXPECT_EQ(timers.runDue(), 1u);
        EXPECT_EQ(bank.program(3).seed, 34u);
        EXPECT_EQ(timers.pending(), 1u);  // the periodic task again
        a.edit(3, 35);
        now = 2000;
        EXPECT_EQ(timers.runDue(), 1u);
        EXPECT_EQ(bank.program(3).seed, 35u);
    }
    EXPECT_EQ(timers.pending(), 0u);
    EXPECT_EQ(store.writes, 1);
}
