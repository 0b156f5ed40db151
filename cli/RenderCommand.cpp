#include <cstdio>
#include <string>

#include "cli/Command.h"
#include "cli/MidiFile.h"
#include "cli/OfflineRender.h"
#include "cli/Options.h"
#include "cli/RecordOptions.h"
#include "patch/FactoryPatches.h"
#include "platform/OrlAudioFiles/WavWriter.h"

namespace cli {

const char* const kRenderUsage =
    "Usage: tendrane render [--patch FILE.tdrn | --factory N] (--midi FILE.mid | --notes NOTE:START:DUR:VEL,...) "
    "[--rate HZ] [--block N] [--noise-seed S] [--tail SECONDS] -o OUT.wav\n"
    "Plays the notes through the synthesizer as a host would and writes 32-bit float stereo WAV.\n"
    "  --patch FILE.tdrn       the patch to play (default: the Init record)\n"
    "  --factory N             factory patch N, 0 to 15\n"
    "  --midi FILE.mid         a Standard MIDI File (format 0 or 1)\n"
    "  --notes LIST            notes as NOTE:START:DUR:VEL, times in seconds, comma-separated\n"
    "  --rate HZ               sample rate (default 44100)\n"
    "  --block N               host block size in samples (default 512)\n"
    "  --noise-seed S          the engine's noise seed (default 1)\n"
    "  --tail SECONDS          time rendered after the last event (default 2)\n"
    "  -o OUT.wav              the output file\n" TENDRANE_RECORD_OPTIONS_USAGE;

int runRender(const std::vector<std::string>& args) {
    std::vector<OptionSpec> specs = {
        {"patch", 0, true, false}, {"factory", 0, true, false},    {"midi", 0, true, false},
        {"notes", 0, true, false}, {"rate", 0, true, false},       {"block", 0, true, false},
        {"noise-seed", 0, true, false}, {"tail", 0, true, false}, {"output", 'o', true, false},
    };
    for (const OptionSpec& s : recordOptionSpecs()) specs.push_back(s);
    Options options(specs);
    options.parse(args);
    if (options.has("help")) {
        std::fputs(kRenderUsage, stdout);
        return 0;
    }
    if (!options.positional().empty()) throw UsageError("unexpected argument '" + options.positional()[0] + "'");
    if (!options.has("output")) throw UsageError("an output file is needed (-o OUT.wav)");
    if (options.has("midi") == options.has("notes")) throw UsageError("give either --midi or --notes");
    if (options.has("patch") && options.has("factory")) throw UsageError("give either --patch or --factory");

    OfflineRenderSettings settings;
    if (options.has("rate")) {
        double rate = parseReal("rate", options.value("rate"));
        if (!(rate >= 1000.0 && rate <= 768000.0)) throw UsageError("option '--rate' must be 1000 to 768000");
        settings.rate = float(rate);
    }
    if (options.has("block")) {
        long long block = parseInteger("block", options.value("block"));
        if (block < 1 || block > 65536) throw UsageError("option '--block' must be 1 to 65536");
        settings.block = int(block);
    }
    if (options.has("noise-seed")) {
        long long seed = parseInteger("noise-seed", options.value("noise-seed"));
        if (seed < 0 || seed > 0xFFFFFFFFll) throw UsageError("option '--noise-seed' must be 0 to 4294967295");
        settings.noiseSeed = uint32_t(seed);
    }
    if (options.has("tail")) {
        double tail = parseReal("tail", options.value("tail"));
        if (!(tail >= 0.0 && tail <= 3600.0)) throw UsageError("option '--tail' must be 0 to 3600 seconds");
        settings.tailSeconds = tail;
    }

    NorvelleProgram program;
    if (options.has("factory")) {
        long long n = parseInteger("factory", options.value("factory"));
        if (n < 0 || n >= FACTORY_PATCH_COUNT) throw UsageError("option '--factory' must be 0 to 15");
        if (hasRecordOptions(options)) throw UsageError("record options can't be combined with --factory");
        program = factoryProgram(int(n));
    } else {
        program = buildRecord(options, options.value("patch"));
    }

    std::vector<MidiFileEvent> events;
    double end = 0;
    if (options.has("midi")) {
        MidiFileContents midi = readMidiFilePath(options.value("midi"));
        events = midi.events;
        end = midi.lengthSeconds;
    } else {
        events = noteEvents(parseNoteList(options.value("notes")));
    }

    // A progress line for renders that take a while.
    double last = end;
    for (const MidiFileEvent& e : events) last = std::max(last, e.seconds);
    const bool showProgress = last + settings.tailSeconds > 10.0;
    auto progress = [&](double done, double total) {
        std::fprintf(stderr, "\rrendering %.1f of %.1f s", done, total);
        if (done >= total) std::fputc('\n', stderr);
        std::fflush(stderr);
    };
    OrlAudioFiles::AudioData audio =
        renderOffline(program, events, end, settings,
                      showProgress ? std::function<void(double, double)>(progress) : std::function<void(double, double)>());
    OrlAudioFiles::writeWavFile(options.value("output"), audio, OrlAudioFiles::SampleFormat::Float32);
    return 0;
}

}  // namespace cli
