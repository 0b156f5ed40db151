#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "patch/Chunk.h"
#include "patch/MidiConfigText.h"
#include "platform/Exceptions.h"

namespace {

// An instance's slots, as a chunk sees them.
class Slots : public ChunkTarget {
public:
    Slots() {
        for (int i = 0; i < PROGRAM_SLOT_COUNT; ++i) {
            programs[static_cast<size_t>(i)].setName(u"Slot " + std::u16string(1, static_cast<char16_t>(u'A' + i)));
            programs[static_cast<size_t>(i)].seed = 1000u + static_cast<uint32_t>(i);
            programs[static_cast<size_t>(i)].computeBranchDeviations();
        }
    }
    int currentSlot() const override { return current; }
    void storeProgram(int slot, const NorvelleProgram& record, bool bank) override {
        programs[static_cast<size_t>(slot)] = record;
        fromBank.push_back(bank);
    }
    void setMidiConfig(const MidiConfigRecord& c) override {
        config = c;
        ++configsSet;
    }
    void everythingChanged() override { ++changes; }

    std::vector<uint8_t> chunk(bool single) const {
        std::vector<uint8_t> buffer;
        writeChunk(buffer, single, programs, current, config);
        return buffer;
    }

    std::vector<NorvelleProgram> programs = std::vector<NorvelleProgram>(PROGRAM_SLOT_COUNT);
    int current = 0;
    MidiConfigRecord config;
    std::vector<bool> fromBank;
    int configsSet = 0;
    int changes = 0;
};

uint32_t wordAt(const std::vector<uint8_t>& b, size_t at) {
    return static_cast<uint32_t>(b[at]) | static_cast<uint32_t>(b[at + 1]) << 8 | static_cast<uint32_t>(b[at + 2]) << 16 |
           static_cast<uint32_t>(b[at + 3]) << 24;
}

void setWord(std::vector<uint8_t>& b, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i) b[at + i] = static_cast<uint8_t>(v >> (8 * i));
}

void reseal(std::vector<uint8_t>& b) { setWord(b, 4, crc32(b.data() + 8, b.size() - 8)); }

std::string failureOf(const std::vector<uint8_t>& chunk, bool single, Slots& target) {
    try {
        readChunk(chunk.data(), chunk.size(), single, target);
    } catch (const std::exception& e) {
        return e.what();
    }
    return "no failure";
}

void expectSameRecord(const NorvelleProgram& a, const NorvelleProgram& b) {
    EXPECT_EQ(a.implementation, b.implementation);
    EXPECT_EQ(a.getName(), b.getName());
    EXPECT_EQ(a.path, b.path);
    EXPECT_EQ(a.modified, b.modified);
    EXPECT_EQ(a.seed, b.seed);
    EXPECT_EQ(std::bit_cast<uint32_t>(a.pitch), std::bit_cast<uint32_t>(b.pitch));
    EXPECT_EQ(a.cloned, b.cloned);
    for (int p = 0; p < PARAM_COUNT; ++p) EXPECT_EQ(std::bit_cast<uint32_t>(a.param(p)), std::bit_cast<uint32_t>(b.param(p)));
    for (int g = 0; g < GENE_COUNT; ++g) EXPECT_EQ(std::bit_cast<uint32_t>(a.genes[g]), std::bit_cast<uint32_t>(b.genes[g]));
    for (int r = 0; r < BRANCH_COUNT; ++r)
        for (int g = 0; g < MUTABLE_GENE_COUNT; ++g) EXPECT_EQ(a.branchDeviations[r][g], b.branchDeviations[r][g]);
}

}  // namespace

TEST(ChunkTest, CrcIsTheIeeeCheckValue) {
    const char* text = "123456789";
    EXPECT_EQ(crc32(reinterpret_cast<const uint8_t*>(text), 9), 0xCBF43926u);
    EXPECT_EQ(crc32(nullptr, 0), 0u);
}

TEST(ChunkTest, SingleProgramLayoutIsExact) {
    Slots s;
    s.programs[0] = NorvelleProgram();  // Init
    s.programs[0].cloned = true;
    s.programs[0].seed = 0xA1B2C3D4u;
    std::vector<uint8_t> c = s.chunk(true);
    ASSERT_EQ(c.size(), 20u + 277u);
    EXPECT_EQ(wordAt(c, 0), 0x3FDD1B02u);
    EXPECT_EQ(wordAt(c, 4), crc32(c.data() + 8, c.size() - 8));
    EXPECT_EQ(std::string(c.begin() + 8, c.begin() + 16), "dniW01XV");  // big-endian words stored little-endian
    EXPECT_EQ(wordAt(c, 16), 0x8Cu);
    EXPECT_EQ(wordAt(c, 20), 0x91CEA510u);
    EXPECT_EQ(wordAt(c, 24), 10u);
    EXPECT_EQ(wordAt(c, 28), 4u);  // "Init", one word per character
    EXPECT_EQ(wordAt(c, 32), static_cast<uint32_t>('I'));
    EXPECT_EQ(wordAt(c, 44), static_cast<uint32_t>('t'));
    EXPECT_EQ(wordAt(c, 48), 0u);  // no path
    EXPECT_EQ(wordAt(c, 52), 0u);  // not modified
    EXPECT_EQ(wordAt(c, 56 + 4 * Param::Tuning), std::bit_cast<uint32_t>(0.5f));
    EXPECT_EQ(wordAt(c, 56 + 4 * Param::WheelScale), std::bit_cast<uint32_t>(1.0f));
    EXPECT_EQ(wordAt(c, 140), 0xA1B2C3D4u);
    EXPECT_EQ(wordAt(c, 144), 0u);  // pitch 0.0
    EXPECT_EQ(c[148], 1);           // cloned: one byte, so the genes are unaligned
    EXPECT_EQ(wordAt(c, 149), std::bit_cast<uint32_t>(0.5f));
    EXPECT_EQ(wordAt(c, 149 + 4 * 36), std::bit_cast<uint32_t>(0.5f));
}

TEST(ChunkTest, BankHoldsSixteenProgramsAndTheMidiText) {
    Slots s;
    s.config.pitchWheelRange = 5;
    std::vector<uint8_t> c = s.chunk(false);
    EXPECT_EQ(wordAt(c, 0), 0xC388CF18u);
    EXPECT_EQ(wordAt(c, 20), 16u);
    std::string text = writeMidiConfig(s.config, false);
    ASSERT_GT(c.size(), text.size() + 4);
    EXPECT_EQ(wordAt(c, c.size() - text.size() - 4), text.size());
    EXPECT_EQ(std::string(c.end() - static_cast<long>(text.size()), c.end()), text);

    Slots other;
    other.current = 3;
    EXPECT_EQ(readChunk(c.data(), c.size(), false, other), c.size());
    for (int i = 0; i < PROGRAM_SLOT_COUNT; ++i) expectSameRecord(other.programs[static_cast<size_t>(i)], s.programs[static_cast<size_t>(i)]);
    EXPECT_EQ(other.config.pitchWheelRange, 5);
    EXPECT_EQ(other.configsSet, 1);
    EXPECT_EQ(other.changes, 1);
    EXPECT_EQ(other.fromBank, std::vector<bool>(16, true));
}

TEST(ChunkTest, SingleProgramGoesToTheCurrentSlot) {
    Slots s;
    s.current = 5;
    std::vector<uint8_t> c = s.chunk(true);
    Slots other;
    other.current = 9;
    EXPECT_EQ(readChunk(c.data(), c.size(), true, other), c.size());
    EXPECT_EQ(other.programs[9].getName(), u"Slot F");
    EXPECT_EQ(other.programs[5].getName(), u"Slot F");  // untouched, it had that name already
    EXPECT_EQ(other.programs[8].getName(), u"Slot I");
    EXPECT_EQ(other.fromBank, std::vector<bool>{false});
    EXPECT_EQ(other.configsSet, 0);
}

TEST(ChunkTest, KindMismatchFailsBothWays) {
    Slots s;
    std::vector<uint8_t> single = s.chunk(true);
    std::vector<uint8_t> bank = s.chunk(false);
    Slots t;
    EXPECT_EQ(failureOf(single, false, t), "Invalid data format (unsupported version)");
    EXPECT_EQ(failureOf(bank, true, t), "Invalid data format (unsupported version)");
    EXPECT_TRUE(t.fromBank.empty());
}

TEST(ChunkTest, AnyFlippedByteAfterOffsetEightFailsTheIntegrityCheck) {
    Slots s;
    std::vector<uint8_t> good = s.chunk(false);
    for (size_t at = 8; at < good.size(); at += 1) {
        if (at >= 12 && at < 16) continue;  // the project code has its own message
        std::vector<uint8_t> bad = good;
        bad[at] ^= 0x01;
        Slots t;
        ASSERT_EQ(failureOf(bad, false, t), "Invalid data format (data integrity check failed)") << at;
        ASSERT_TRUE(t.fromBank.empty());
    }
    std::vector<uint8_t> badCode = good;
    badCode[13] ^= 0x40;
    Slots t;
    EXPECT_EQ(failureOf(badCode, false, t), "Invalid data format (invalid project code)");
    std::vector<uint8_t> badCrc = good;
    badCrc[5] ^= 0x80;
    EXPECT_EQ(failureOf(badCrc, false, t), "Invalid data format (data integrity check failed)");
}

TEST(ChunkTest, TheIgnoredWordIsIgnored) {
    Slots s;
    std::vector<uint8_t> c = s.chunk(true);
    setWord(c, 16, 0x12345678u);
    reseal(c);
    Slots t;
    EXPECT_EQ(readChunk(c.data(), c.size(), true, t), c.size());
}

TEST(ChunkTest, FewerThanSixteenProgramsLeaveTheRestAsTheyWere) {
    Slots s;
    for (auto& p : s.programs) p.setName(u"New");
    std::vector<uint8_t> full = s.chunk(false);
    // Rebuild a bank of 3 programs by hand.
    std::vector<uint8_t> c(full.begin(), full.begin() + 20);
    setWord(c, 0, CHUNK_KIND_BANK);
    c.resize(24);
    setWord(c, 20, 3);
    for (int i = 0; i < 3; ++i) appendProgramBlock(c, s.programs[static_cast<size_t>(i)]);
    std::string text = "TendraneMIDIConfig: { PitchWheelRange: 2 }";
    c.resize(c.size() + 4);
    setWord(c, c.size() - 4, static_cast<uint32_t>(text.size()));
    c.insert(c.end(), text.begin(), text.end());
    reseal(c);

    Slots t;
    EXPECT_EQ(readChunk(c.data(), c.size(), false, t), c.size());
    for (int i = 0; i < 3; ++i) EXPECT_EQ(t.programs[static_cast<size_t>(i)].getName(), u"New");
    for (int i = 3; i < 16; ++i) EXPECT_NE(t.programs[static_cast<size_t>(i)].getName(), u"New");
    EXPECT_EQ(t.programs[3].getName(), u"Slot D");
    EXPECT_EQ(t.config.pitchWheelRange, 2);
}

TEST(ChunkTest, TrailingBytesAreNotConsumed) {
    Slots s;
    std::vector<uint8_t> c = s.chunk(true);
    const size_t size = c.size();
    c.push_back(0xAB);
    c.push_back(0xCD);
    reseal(c);
    Slots t;
    EXPECT_EQ(readChunk(c.data(), c.size(), true, t), size);
}

TEST(ChunkTest, ForeignPlatformCodeDropsThePaths) {
    Slots s;
    for (auto& p : s.programs) p.path = u"C:\\Patches\\x.tdrn";
    std::vector<uint8_t> c = s.chunk(false);
    Slots same;
    readChunk(c.data(), c.size(), false, same);
    for (auto& p : same.programs) EXPECT_EQ(p.path, u"C:\\Patches\\x.tdrn");

    setWord(c, 8, 0x4C696E78u);  // another platform
    reseal(c);
    Slots foreign;
    EXPECT_EQ(readChunk(c.data(), c.size(), false, foreign), c.size());
    for (size_t i = 0; i < foreign.programs.size(); ++i) {
        EXPECT_TRUE(foreign.programs[i].path.empty());
        EXPECT_EQ(foreign.programs[i].getName(), same.programs[i].getName());
        EXPECT_EQ(foreign.programs[i].seed, same.programs[i].seed);
    }
}

TEST(ChunkTest, NamesAboveByteRangeSurvive) {
    Slots s;
    s.programs[0].setName(u"\u0141\u00f3d\u017a \u6f22\u5b57 \uffff");
    s.programs[0].path = u"/p/\u4e2d.tdrn";
    std::vector<uint8_t> c = s.chunk(true);
    Slots t;
    readChunk(c.data(), c.size(), true, t);
    EXPECT_EQ(t.programs[0].getName(), s.programs[0].getName());
    EXPECT_EQ(t.programs[0].path, s.programs[0].path);
}

TEST(ChunkTest, TruncatedChunksFailWithEndOfFile) {
    Slots s;
    std::vector<uint8_t> good = s.chunk(false);
    for (size_t size : {size_t(0), size_t(7), size_t(19), size_t(23), size_t(300), good.size() - 1}) {
        std::vector<uint8_t> cut(good.begin(), good.begin() + static_cast<long>(size));
        if (cut.size() >= 20) reseal(cut);
        Slots t;
        EXPECT_EQ(failureOf(cut, false, t), "End of file error") << size;
    }
}

TEST(ChunkTest, SlotsStoredBeforeAFailureKeepTheirContents) {
    Slots s;
    for (auto& p : s.programs) p.setName(u"Song");
    std::vector<uint8_t> c = s.chunk(false);
    // Break the magic of the third block.
    const size_t blockSize = 4 + 4 + (4 + 4 * 4) + 4 + 4 + 84 + 4 + 4 + 1 + 148;  // "Song": 4 characters
    const size_t third = 24 + 2 * blockSize;
    ASSERT_EQ(wordAt(c, third), PROGRAM_BLOCK_MAGIC);
    setWord(c, third, 0xDEADBEEFu);
    reseal(c);
    Slots t;
    EXPECT_EQ(failureOf(c, false, t), "Invalid data format");
    EXPECT_EQ(t.programs[0].getName(), u"Song");
    EXPECT_EQ(t.programs[1].getName(), u"Song");
    EXPECT_EQ(t.programs[2].getName(), u"Slot C");
    EXPECT_EQ(t.changes, 0);
}

TEST(ChunkTest, ProgramBlockChecks) {
    std::vector<uint8_t> block;
    NorvelleProgram r;
    appendProgramBlock(block, r);
    const uint8_t* cursor = block.data();
    NorvelleProgram back = readProgramBlock(cursor, block.data() + block.size(), true);
    EXPECT_EQ(cursor, block.data() + block.size());
    EXPECT_EQ(back.getName(), u"Init");

    std::vector<uint8_t> future = block;
    setWord(future, 4, 11);
    cursor = future.data();
    EXPECT_THROW(readProgramBlock(cursor, future.data() + future.size(), true), FormatException);

    std::vector<uint8_t> old = block;
    setWord(old, 4, 0);
    cursor = old.data();
    EXPECT_EQ(readProgramBlock(cursor, old.data() + old.size(), true).implementation, 0);

    // A name count far beyond the data.
    std::vector<uint8_t> huge = block;
    setWord(huge, 8, 0x7FFFFFFFu);
    cursor = huge.data();
    EXPECT_THROW(readProgramBlock(cursor, huge.data() + huge.size(), true), EOFException);

    for (size_t n = 0; n < block.size(); ++n) {
        cursor = block.data();
        EXPECT_THROW(readProgramBlock(cursor, block.data() + n, true), EOFException) << n;
    }
}

TEST(ChunkTest, RandomRecordsSurviveBitExactly) {
    std::mt19937 rng(99);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    for (int round = 0; round < 50; ++round) {
        Slots s;
        s.current = static_cast<int>(rng() % 16);
        for (auto& p : s.programs) {
            p.implementation = static_cast<int32_t>(rng() % 11);
            p.seed = rng();
            p.cloned = rng() & 1;
            p.modified = rng() & 1;
            p.pitch = unit(rng) * 6.0f - 3.0f;
            std::u16string name;
            for (unsigned n = rng() % 30; n > 0; --n) name += static_cast<char16_t>(rng() % 0x10000);
            p.setName(name);
            if (rng() & 1) p.path = name + u".tdrn";
            for (int i = 0; i < PARAM_COUNT; ++i) p.setParam(i, unit(rng));
            for (int g = 0; g < GENE_COUNT; ++g) p.genes[g] = unit(rng);
            p.computeBranchDeviations();
        }
        s.config.inputMidiChannel = static_cast<int32_t>(rng() % 17) - 1;
        assignController(s.config, static_cast<int>(rng() % 17), static_cast<int>(rng() % 128));
        std::vector<uint8_t> bank = s.chunk(false);
        Slots t;
        ASSERT_EQ(readChunk(bank.data(), bank.size(), false, t), bank.size());
        for (int i = 0; i < 16; ++i) expectSameRecord(t.programs[static_cast<size_t>(i)], s.programs[static_cast<size_t>(i)]);
        EXPECT_EQ(writeMidiConfig(t.config, false), writeMidiConfig(s.config, false));

        std::vector<uint8_t> single = s.chunk(true);
        Slots u;
        u.current = 2;
        ASSERT_EQ(readChunk(single.data(), single.size(), true, u), single.size());
        expectSameRecord(u.programs[2], s.programs[static_cast<size_t>(s.current)]);
    }
}

TEST(ChunkTest, InspectReadsBothKinds) {
    Slots s;
    s.programs[4].setName(u"Four");
    s.current = 4;
    std::vector<uint8_t> single = s.chunk(true);
    ChunkContents one = inspectChunk(single.data(), single.size());
    EXPECT_FALSE(one.isBank);
    ASSERT_EQ(one.programs.size(), 1u);
    EXPECT_EQ(one.programs[0].getName(), u"Four");
    std::vector<uint8_t> bank = s.chunk(false);
    ChunkContents all = inspectChunk(bank.data(), bank.size());
    EXPECT_TRUE(all.isBank);
    EXPECT_EQ(all.programs.size(), 16u);
    EXPECT_EQ(all.midiConfigText, writeMidiConfig(s.config, false));
}

// The Init record as a single-program chunk, made apart from this code base
// by a separate script from the layout alone (zlib's CRC-32).
TEST(ChunkTest, InitProgramChunkMatchesTheIndependentGoldenBytes) {
    const char* const hex =
        "021bdd3f83fc76b6646e6957303158568c00000010a5ce910a00000004000000490000006e0000006900000074000000"
        "000000000000000000000000000000000000003f0000003f0000003f0000803e0000803f0000003f0000003f00000000"
        "000000000000000000000000000000000000000000000000000000000000000000000000000000000000000001000000"
        "00000000000000003f0000003f0000003f0000003f0000003f0000003f0000003f0000003f0000003f0000003f000000"
        "3f0000003f0000003f0000003f0000003f0000003f0000003f0000003f0000003f0000003f0000003f0000003f000000"
        "3f0000003f0000003f0000003f0000003f0000003f0000003f0000003f0000003f0000003f0000003f0000003f000000"
        "3f0000003f0000003f";
    std::vector<uint8_t> golden;
    for (const char* p = hex; p[0] && p[1]; p += 2) golden.push_back(static_cast<uint8_t>(std::stoi(std::string(p, 2), nullptr, 16)));
    ASSERT_EQ(golden.size(), 297u);
    std::vector<NorvelleProgram> slots(PROGRAM_SLOT_COUNT);
    std::vector<uint8_t> chunk;
    writeChunk(chunk, true, slots, 0, MidiConfigRecord());
    EXPECT_EQ(chunk, golden);
    EXPECT_EQ(wordAt(chunk, 4), 0xB676FC83u);
}
