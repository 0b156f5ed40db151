// Fuzz target: our own PNG reader over zlib. Where libpng is built in too,
// both readers must agree on every input: the same pixels or the same failure.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "pixels/Png.h"
#include "pixels/PngDecoder.h"

#if defined(TENDRANE_HAVE_ZLIB)

namespace {

struct Result {
    bool failed = false;
    std::string message;
    OrlPixels::DecodedPng image;
};

template <typename Decode>
Result attempt(Decode decode) {
    Result r;
    try {
        r.image = decode();
    } catch (const OrlPixels::OrlPNG& e) {
        r.failed = true;
        r.message = e.what();
    }
    return r;
}

#if defined(TENDRANE_HAVE_LIBPNG)
void expectSame(const Result& ours, const Result& theirs) {
    const bool same = ours.failed == theirs.failed && ours.message == theirs.message &&
                      ours.image.width == theirs.image.width && ours.image.height == theirs.image.height &&
                      ours.image.opaque == theirs.image.opaque && ours.image.pixels == theirs.image.pixels &&
                      ours.image.values == theirs.image.values;
    if (!same) {
        std::fprintf(stderr, "the two PNG readers disagree: ours '%s', libpng '%s'\n", ours.message.c_str(),
                     theirs.message.c_str());
        std::abort();
    }
}
#endif

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace OrlPixels;
    static const double gammas[] = {0, 2.7, 1.8};
    const double gamma = gammas[size % 3];
    const bool premultiply = size % 2 == 0;
    const Result ours = attempt([&] { return decodePngWithZlib(data, size, gamma, premultiply); });
    const Result oursMask = attempt([&] { return decodePngMaskWithZlib(data, size, gamma); });
    if (ours.failed != oursMask.failed) std::abort();
#if defined(TENDRANE_HAVE_LIBPNG)
    expectSame(ours, attempt([&] { return decodePng(data, size, gamma, premultiply); }));
    expectSame(oursMask, attempt([&] { return decodePngMask(data, size, gamma); }));
#endif
    return 0;
}

#else

extern "C" int LLVMFuzzerTestOneInput(const uint8_t*, size_t) { return 0; }

#endif
