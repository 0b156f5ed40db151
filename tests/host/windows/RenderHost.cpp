// A minimal host that renders a phrase through the plug-in binary and writes
// the audio as raw 32-bit float stereo frames. The same source is built for
// Linux and, cross-compiled, for Windows, so both binaries of the plug-in
// are played by the same host logic.
//
//   render_host PLUGIN CHUNK.bin RATE OUT.raw
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "tests/host/PluginHost.h"

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: render_host PLUGIN CHUNK.bin RATE OUT.raw\n");
        return 2;
    }
    testhost::Library& library = testhost::Library::get(argv[1]);
    if (!library.pluginMain || !library.legacyMain) {
        std::fprintf(stderr, "no entry points in %s: %s\n", argv[1], library.error.c_str());
        return 1;
    }
    std::vector<unsigned char> chunk;
    if (FILE* f = std::fopen(argv[2], "rb")) {
        int c;
        while ((c = std::fgetc(f)) != EOF) chunk.push_back(static_cast<unsigned char>(c));
        std::fclose(f);
    }
    if (chunk.empty()) {
        std::fprintf(stderr, "cannot read %s\n", argv[2]);
        return 1;
    }
    const float rate = static_cast<float>(std::atof(argv[3]));
    std::vector<float> left, right;
    {
        testhost::Instance instance(library.pluginMain, rate, 512);
        if (!instance.effect) {
            std::fprintf(stderr, "the plug-in made no instance\n");
            return 1;
        }
        if (instance.call(effSetChunk, 1, static_cast<VstIntPtr>(chunk.size()), chunk.data()) != static_cast<VstIntPtr>(chunk.size())) {
            std::fprintf(stderr, "the plug-in refused the chunk\n");
            return 1;
        }
        char name[80] = {};
        instance.call(effGetProductString, 0, 0, name);
        std::printf("%s: %d outputs, delay %d\n", name, instance.effect->numOutputs, instance.effect->initialDelay);
        instance.render(testhost::phrase(rate), static_cast<int64_t>(rate * 1.5f), left, right);
    }
    FILE* out = std::fopen(argv[4], "wb");
    if (!out) return 1;
    for (std::size_t i = 0; i < left.size(); ++i) {
        const float frame[2] = {left[i], right[i]};
        std::fwrite(frame, sizeof frame, 1, out);
    }
    std::fclose(out);
    std::printf("%zu frames\n", left.size());
    return 0;
}
