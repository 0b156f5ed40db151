#include <cstdio>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/Options.h"
#include "cli/RecordJson.h"
#include "patch/Chunk.h"
#include "patch/MidiConfigText.h"
#include "patch/ProgramText.h"
#include "platform/OrlFiles/File.h"
#include "platform/OrlFiles/Path.h"
#include "platform/OrlFiles/SafeFileWriter.h"
#include "platform/Utf16.h"

namespace cli {

const char* const kChunkUsage =
    "Usage: tendrane chunk write (--program FILE | --bank FILE...) [--midi-config FILE.qbmc] -o OUT.bin\n"
    "       tendrane chunk read IN.bin\n"
    "\n"
    "Host chunks, the state a host keeps in a song.\n"
    "  write --program FILE    a single-program chunk of one patch file (.tdrn)\n"
    "  write --bank FILE...    a bank chunk of up to 16 patch files in slot order; slots\n"
    "                          without a file hold the Init record\n"
    "  --midi-config FILE      the bank's MIDI configuration (.qbmc; default: the defaults)\n"
    "  -o OUT.bin              the chunk file to write\n"
    "  read IN.bin             prints the chunk as JSON: its kind, its programs and the\n"
    "                          bank's MIDI configuration text\n";

namespace {

std::string readFile(const std::string& file) { return OrlFiles::readWholeFile(OrlFiles::Path::parse(file)); }

int writeCommand(const std::vector<std::string>& args) {
    Options options({{"program", 0, true, false},
                     {"bank", 0, true, true},
                     {"midi-config", 0, true, false},
                     {"output", 'o', true, false}});
    options.parse(args);
    const bool single = options.has("program");
    std::vector<std::string> bankFiles = options.values("bank");
    for (const std::string& extra : options.positional()) bankFiles.push_back(extra);
    if (single == !bankFiles.empty()) throw UsageError("give either --program FILE or --bank FILE...");
    if (!options.has("output")) throw UsageError("give the output file with -o OUT.bin");
    if (bankFiles.size() > PROGRAM_SLOT_COUNT) throw UsageError("a bank holds at most 16 programs");

    std::vector<NorvelleProgram> slots(PROGRAM_SLOT_COUNT);
    if (single) {
        slots[0] = readProgramText(readFile(options.value("program")));
    } else {
        for (std::size_t i = 0; i < bankFiles.size(); ++i) slots[i] = readProgramText(readFile(bankFiles[i]));
    }
    MidiConfigRecord config;
    if (options.has("midi-config")) config = readMidiConfig(u"", readFile(options.value("midi-config")));

    std::vector<uint8_t> chunk;
    writeChunk(chunk, single, slots, 0, config);
    OrlFiles::SafeFileWriter writer(OrlFiles::Path::parse(options.value("output")));
    writer.write(chunk.data(), chunk.size());
    writer.commit();
    return 0;
}

int readCommand(const std::vector<std::string>& args) {
    Options options({});
    options.parse(args);
    if (options.positional().size() != 1) throw UsageError("give one chunk file");
    const std::string bytes = readFile(options.positional()[0]);
    const ChunkContents contents =
        inspectChunk(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());

    std::string out = "{\n";
    out += std::string("  \"kind\": \"") + (contents.isBank ? "bank" : "program") + "\",\n";
    out += "  \"programs\": [";
    for (std::size_t i = 0; i < contents.programs.size(); ++i) {
        const NorvelleProgram& p = contents.programs[i];
        out += i == 0 ? "\n    {\n" : ",\n    {\n";
        out += "      \"path\": " + jsonString(platform::utf16ToUtf8Lossy(p.path)) + ",\n";
        out += recordJsonMembers(p, "      ");
        out += "\n    }";
    }
    out += contents.programs.empty() ? "],\n" : "\n  ],\n";
    out += "  \"midiConfig\": ";
    out += contents.isBank ? jsonString(contents.midiConfigText) : std::string("null");
    out += "\n}\n";
    std::fputs(out.c_str(), stdout);
    return 0;
}

}  // namespace

int runChunk(const std::vector<std::string>& args) {
    if (args.empty()) throw UsageError("give 'write' or 'read'");
    const std::vector<std::string> rest(args.begin() + 1, args.end());
    if (args[0] == "write") return writeCommand(rest);
    if (args[0] == "read") return readCommand(rest);
    throw UsageError("unknown chunk command '" + args[0] + "': give 'write' or 'read'");
}

}  // namespace cli
