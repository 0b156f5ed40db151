#include "patch/Chunk.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string>

#include "patch/MidiConfigText.h"
#include "platform/Exceptions.h"

namespace {

std::array<uint32_t, 256> makeCrcTable() {
    std::array<uint32_t, 256> table{};
    for (uint32_t i = 0; i < 256; ++i) {
        uint32_t c = i;
        for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
        table[i] = c;
    }
    return table;
}

void putWord(std::vector<uint8_t>& out, uint32_t v) {
    out.push_back(static_cast<uint8_t>(v));
    out.push_back(static_cast<uint8_t>(v >> 8));
    out.push_back(static_cast<uint8_t>(v >> 16));
    out.push_back(static_cast<uint8_t>(v >> 24));
}

void putFloat(std::vector<uint8_t>& out, float f) { putWord(out, std::bit_cast<uint32_t>(f)); }

void putString(std::vector<uint8_t>& out, std::u16string_view text) {
    putWord(out, static_cast<uint32_t>(text.size()));
    for (char16_t c : text) putWord(out, c);
}

void storeWord(std::vector<uint8_t>& out, std::size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i) out[at + i] = static_cast<uint8_t>(v >> (8 * i));
}

// Reads of little-endian data with the bounds checked first.
class Reader {
public:
    Reader(const uint8_t*& cursor, const uint8_t* end) : cursor_(cursor), end_(end) {}

    void need(std::size_t n) const {
        if (static_cast<std::size_t>(end_ - cursor_) < n) throw EOFException();
    }
    uint32_t word() {
        need(4);
        uint32_t v = static_cast<uint32_t>(cursor_[0]) | static_cast<uint32_t>(cursor_[1]) << 8 |
                     static_cast<uint32_t>(cursor_[2]) << 16 | static_cast<uint32_t>(cursor_[3]) << 24;
        cursor_ += 4;
        return v;
    }
    float real() { return std::bit_cast<float>(word()); }
    uint8_t byte() {
        need(1);
        return *cursor_++;
    }
    std::u16string string() {
        uint32_t count = word();
        // Each character is a word of its own: check the whole run at once.
        if (static_cast<std::size_t>(end_ - cursor_) / 4 < count) throw EOFException();
        std::u16string text;
        text.reserve(count);
        for (uint32_t i = 0; i < count; ++i) text += static_cast<char16_t>(word());
        return text;
    }
    std::string bytes(uint32_t n) {
        need(n);
        std::string s(reinterpret_cast<const char*>(cursor_), n);
        cursor_ += n;
        return s;
    }

private:
    const uint8_t*& cursor_;
    const uint8_t* end_;
};

struct Header {
    uint32_t kind;
    bool withPath;
};

Header readHeader(const uint8_t* data, std::size_t size) {
    const uint8_t* cursor = data;
    Reader r(cursor, data + size);
    const uint32_t kind = r.word();
    const uint32_t storedCrc = r.word();
    const uint32_t computed = crc32(cursor, size - 8);
    const uint32_t platform = r.word();
    const uint32_t project = r.word();
    (void)r.word();  // read and ignored
    if (project != CHUNK_PROJECT_CODE) throw FormatException("Invalid data format (invalid project code)");
    if (computed != storedCrc) throw FormatException("Invalid data format (data integrity check failed)");
    return {kind, platform == CHUNK_PLATFORM_CODE};
}

}  // namespace

uint32_t crc32(const uint8_t* data, std::size_t size) {
    static const std::array<uint32_t, 256> table = makeCrcTable();
    uint32_t c = 0xFFFFFFFFu;
    for (std::size_t i = 0; i < size; ++i) c = table[(c ^ data[i]) & 0xFF] ^ (c >> 8);
    return ~c;
}

void appendProgramBlock(std::vector<uint8_t>& out, const NorvelleProgram& record) {
    putWord(out, PROGRAM_BLOCK_MAGIC);
    putWord(out, static_cast<uint32_t>(record.implementation));
    putString(out, record.getName());
    putString(out, record.path);
    putWord(out, record.modified ? 1 : 0);
    for (int p = 0; p < PARAM_COUNT; ++p) putFloat(out, record.param(p));
    putWord(out, record.seed);
    putFloat(out, record.pitch);
    out.push_back(record.cloned ? 1 : 0);
    for (int g = 0; g < GENE_COUNT; ++g) putFloat(out, record.genes[g]);
}

NorvelleProgram readProgramBlock(const uint8_t*& cursor, const uint8_t* end, bool withPath) {
    NorvelleProgram record;
    Reader r(cursor, end);
    if (r.word() != PROGRAM_BLOCK_MAGIC) throw FormatException();
    const int32_t implementation = static_cast<int32_t>(r.word());
    if (implementation > CURRENT_IMPLEMENTATION) throw FormatException();
    record.implementation = implementation;
    record.setName(r.string());
    std::u16string path = r.string();
    if (withPath && !path.empty()) record.path = std::move(path);
    record.modified = r.word() != 0;
    for (int p = 0; p < PARAM_COUNT; ++p) record.setParam(p, r.real());
    record.seed = r.word();
    record.pitch = r.real();
    record.cloned = r.byte() != 0;
    for (int g = 0; g < GENE_COUNT; ++g) record.genes[g] = r.real();
    record.computeBranchDeviations();
    record.touch(false);
    return record;
}

void writeChunk(std::vector<uint8_t>& buffer, bool isSingleProgram, std::span<const NorvelleProgram> slots,
                int currentSlot, const MidiConfigRecord& midiConfig) {
    buffer.clear();
    putWord(buffer, isSingleProgram ? CHUNK_KIND_PROGRAM : CHUNK_KIND_BANK);
    putWord(buffer, 0);
    putWord(buffer, CHUNK_PLATFORM_CODE);
    putWord(buffer, CHUNK_PROJECT_CODE);
    putWord(buffer, CHUNK_HEADER_WORD);
    if (isSingleProgram) {
        appendProgramBlock(buffer, slots[static_cast<std::size_t>(currentSlot)]);
    } else {
        putWord(buffer, PROGRAM_SLOT_COUNT);
        for (int i = 0; i < PROGRAM_SLOT_COUNT; ++i) appendProgramBlock(buffer, slots[static_cast<std::size_t>(i)]);
        const std::string text = writeMidiConfig(midiConfig, false);
        putWord(buffer, static_cast<uint32_t>(text.size()));
        buffer.insert(buffer.end(), text.begin(), text.end());
    }
    storeWord(buffer, 4, crc32(buffer.data() + 8, buffer.size() - 8));
}

std::size_t readChunk(const uint8_t* data, std::size_t size, bool isSingleProgram, ChunkTarget& target) {
    if (size < CHUNK_HEADER_SIZE) throw EOFException();
    const Header header = readHeader(data, size);
    if (header.kind != (isSingleProgram ? CHUNK_KIND_PROGRAM : CHUNK_KIND_BANK))
        throw FormatException("Invalid data format (unsupported version)");

    const uint8_t* cursor = data + CHUNK_HEADER_SIZE;
    const uint8_t* end = data + size;
    if (isSingleProgram) {
        NorvelleProgram record = readProgramBlock(cursor, end, header.withPath);
        target.storeProgram(target.currentSlot(), record, false);
    } else {
        Reader r(cursor, end);
        const uint32_t count = std::min<uint32_t>(r.word(), PROGRAM_SLOT_COUNT);
        for (uint32_t i = 0; i < count; ++i) {
            NorvelleProgram record = readProgramBlock(cursor, end, header.withPath);
            target.storeProgram(static_cast<int>(i), record, true);
        }
        const uint32_t length = r.word();
        const std::string text = r.bytes(length);
        target.setMidiConfig(readMidiConfig(u"", text));
    }
    target.everythingChanged();
    return static_cast<std::size_t>(cursor - data);
}

ChunkContents inspectChunk(const uint8_t* data, std::size_t size) {
    class Collector : public ChunkTarget {
    public:
        explicit Collector(ChunkContents& c) : c_(c) {}
        int currentSlot() const override { return 0; }
        void storeProgram(int, const NorvelleProgram& record, bool) override { c_.programs.push_back(record); }
        void setMidiConfig(const MidiConfigRecord& config) override { c_.midiConfigText = config.sourceText; }
        void everythingChanged() override {}

    private:
        ChunkContents& c_;
    };
    if (size < 4) throw EOFException();
    const uint32_t kind = static_cast<uint32_t>(data[0]) | static_cast<uint32_t>(data[1]) << 8 |
                          static_cast<uint32_t>(data[2]) << 16 | static_cast<uint32_t>(data[3]) << 24;
    ChunkContents contents;
    contents.isBank = kind == CHUNK_KIND_BANK;
    Collector collector(contents);
    readChunk(data, size, !contents.isBank, collector);
    return contents;
}
