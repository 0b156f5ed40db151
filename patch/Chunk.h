// The host chunk: the state of an instance that the host saves in a song, as
// one binary block. Either a single program or the whole bank of sixteen
// programs with the MIDI configuration. All words are little-endian.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "patch/MidiConfigRecord.h"
#include "patch/NorvelleProgram.h"

constexpr uint32_t CHUNK_KIND_PROGRAM = 0x3FDD1B02u;
constexpr uint32_t CHUNK_KIND_BANK = 0xC388CF18u;
constexpr uint32_t CHUNK_PLATFORM_CODE = 0x57696E64u;  // "Wind"
constexpr uint32_t CHUNK_PROJECT_CODE = 0x56583130u;   // "VX10"
constexpr uint32_t CHUNK_HEADER_WORD = 0x8Cu;
constexpr uint32_t PROGRAM_BLOCK_MAGIC = 0x91CEA510u;
constexpr std::size_t CHUNK_HEADER_SIZE = 20;

// CRC-32 of IEEE 802.3: reflected, initial value 0xFFFFFFFF, final complement.
uint32_t crc32(const uint8_t* data, std::size_t size);

// Appends one program block: magic, implementation, name, path, modified,
// 21 parameters, seed, pitch, the one byte of cloned, 37 genes.
void appendProgramBlock(std::vector<uint8_t>& out, const NorvelleProgram& record);

// Reads one program block at cursor and moves the cursor past it. Every read
// is checked against end: EOFException ("End of file error"); a wrong magic
// or an implementation above 10 gives FormatException ("Invalid data
// format"). The path is kept only when withPath is true and it isn't empty.
NorvelleProgram readProgramBlock(const uint8_t*& cursor, const uint8_t* end, bool withPath);

// Builds a chunk into buffer (cleared first). A single program holds
// slots[currentSlot]; a bank holds all sixteen slots and the MIDI
// configuration text.
void writeChunk(std::vector<uint8_t>& buffer, bool isSingleProgram, std::span<const NorvelleProgram> slots,
                int currentSlot, const MidiConfigRecord& midiConfig);

// What a chunk is applied to: the instance's slots and configuration.
class ChunkTarget {
public:
    virtual ~ChunkTarget() = default;
    virtual int currentSlot() const = 0;
    // Stores a read record in a slot at once. fromBank is true for the blocks
    // of a bank, whose slots then count as unchanged for the startup bank.
    virtual void storeProgram(int slot, const NorvelleProgram& record, bool fromBank) = 0;
    virtual void setMidiConfig(const MidiConfigRecord& config) = 0;
    // Everything changed: the audio side and the editor are told.
    virtual void everythingChanged() = 0;
};

// Applies a chunk and yields the bytes consumed. Failures are exceptions;
// slots stored before a failure keep their new contents.
//   "Invalid data format (invalid project code)"
//   "Invalid data format (data integrity check failed)"
//   "Invalid data format (unsupported version)" when the kind isn't the one asked for
//   "End of file error", "Invalid data format" from the blocks and the text
std::size_t readChunk(const uint8_t* data, std::size_t size, bool isSingleProgram, ChunkTarget& target);

// A chunk's content, read without applying it anywhere (for tools).
struct ChunkContents {
    bool isBank = false;
    std::vector<NorvelleProgram> programs;
    std::string midiConfigText;
};
ChunkContents inspectChunk(const uint8_t* data, std::size_t size);
