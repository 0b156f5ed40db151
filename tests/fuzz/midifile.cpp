// Standard MIDI File reader: any bytes read or fail with FormatException;
// what reads comes out in time order with valid channel messages.
#include <cstdint>
#include <cstdlib>

#include "cli/MidiFile.h"
#include "platform/Exceptions.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    cli::MidiFileContents c;
    try {
        c = cli::readMidiFile(data, size);
    } catch (const FormatException&) {
        return 0;
    }
    double last = 0;
    for (const cli::MidiFileEvent& e : c.events) {
        if (!(e.seconds >= last)) std::abort();
        if (e.status < 0x80 || e.status > 0xEF || e.data1 > 127 || e.data2 > 127) std::abort();
        last = e.seconds;
    }
    return 0;
}
