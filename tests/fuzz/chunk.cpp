// Host chunks from arbitrary bytes, applied both as a program and as a bank:
// a chunk that fails leaves the slots it didn't reach untouched and the MIDI
// configuration as it was; one that loads writes back to the same programs.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <vector>

#include "patch/Chunk.h"
#include "patch/MidiConfigText.h"
#include "platform/Exceptions.h"

namespace {

class Slots : public ChunkTarget {
public:
    int currentSlot() const override { return 7; }
    void storeProgram(int slot, const NorvelleProgram& record, bool) override {
        if (slot < 0 || slot >= PROGRAM_SLOT_COUNT) std::abort();
        programs[static_cast<std::size_t>(slot)] = record;
        ++stored;
    }
    void setMidiConfig(const MidiConfigRecord& c) override { config = c; ++configs; }
    void everythingChanged() override { ++changes; }

    std::vector<NorvelleProgram> programs = std::vector<NorvelleProgram>(PROGRAM_SLOT_COUNT);
    MidiConfigRecord config;
    int stored = 0;
    int configs = 0;
    int changes = 0;
};

void apply(const uint8_t* data, size_t size, bool single) {
    Slots slots;
    const std::string before = writeMidiConfig(slots.config, false);
    try {
        const std::size_t used = readChunk(data, size, single, slots);
        if (used > size || slots.changes != 1) std::abort();
        std::vector<uint8_t> again;
        writeChunk(again, single, slots.programs, 7, slots.config);
        Slots second;
        if (readChunk(again.data(), again.size(), single, second) != again.size()) std::abort();
        for (int i = 0; i < PROGRAM_SLOT_COUNT; ++i)
            if (second.programs[static_cast<std::size_t>(i)].getName() != slots.programs[static_cast<std::size_t>(i)].getName())
                std::abort();
    } catch (const Exception&) {
        if (slots.changes != 0 || slots.configs != 0) std::abort();
        if (writeMidiConfig(slots.config, false) != before) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    apply(data, size, true);
    apply(data, size, false);
    // The same bytes with a valid header, so the fuzzer reaches the blocks.
    std::vector<uint8_t> sealed(20, 0);
    const uint32_t kind = (size > 0 && (data[0] & 1)) ? CHUNK_KIND_BANK : CHUNK_KIND_PROGRAM;
    const uint32_t words[] = {kind, 0, CHUNK_PLATFORM_CODE, CHUNK_PROJECT_CODE, CHUNK_HEADER_WORD};
    for (int w = 0; w < 5; ++w)
        for (int b = 0; b < 4; ++b) sealed[static_cast<std::size_t>(w * 4 + b)] = static_cast<uint8_t>(words[w] >> (8 * b));
    sealed.insert(sealed.end(), data, data + size);
    const uint32_t crc = crc32(sealed.data() + 8, sealed.size() - 8);
    for (int b = 0; b < 4; ++b) sealed[static_cast<std::size_t>(4 + b)] = static_cast<uint8_t>(crc >> (8 * b));
    apply(sealed.data(), sealed.size(), kind == CHUNK_KIND_PROGRAM);
    return 0;
}
