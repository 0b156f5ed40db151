// Our own PNG reader over zlib against the libpng reader: the same pixels for
// every PNG of the resources at every gamma the product uses, for files of
// every colour type, depth and interlace made here, and the same failures for
// broken files.
#if defined(TENDRANE_HAVE_LIBPNG) && defined(TENDRANE_HAVE_ZLIB)

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "pixels/Png.h"
#include "pixels/PngDecoder.h"

namespace OrlPixels {
namespace {

using Bytes = std::vector<std::uint8_t>;

const std::string INVALID = "Error reading PNG image : invalid format";

// The gammas the product decodes with (images at 0, font atlases at 1.8 and
// 2.7) and a few more, among them those that leave the file as it is.
const double GAMMAS[] = {0, 1.8, 2.7, 1.0, 2.2, 1 / 0.45455, 0.5, 3.5};

Bytes readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

struct Outcome {
    bool failed = false;
    std::string message;
    DecodedPng image;
};

Outcome run(const std::function<DecodedPng()>& decode) {
    Outcome o;
    try {
        o.image = decode();
    } catch (const OrlPNG& e) {
        o.failed = true;
        o.message = e.what();
    }
    return o;
}

// Both readers, in every output form: the same result, or the same failure.
// Returns the number of differences seen (0 when they agree).
int compareReaders(const Bytes& file, double gamma, const std::string& what) {
    int differences = 0;
    for (int form = 0; form < 3; ++form) {
        const std::uint8_t* d = file.data();
        const std::size_t n = file.size();
        Outcome a, b;
        if (form == 2) {
            a = run([&] { return decodePngMask(d, n, gamma); });
            b = run([&] { return decodePngMaskWithZlib(d, n, gamma); });
        } else {
            a = run([&] { return decodePng(d, n, gamma, form == 0); });
            b = run([&] { return decodePngWithZlib(d, n, gamma, form == 0); });
        }
        const std::string where = what + " gamma " + std::to_string(gamma) + " form " + std::to_string(form);
        EXPECT_EQ(a.failed, b.failed) << where << ": libpng says '" << a.message << "', ours '" << b.message << "'";
        if (a.failed != b.failed) {
            ++differences;
            continue;
        }
        if (a.failed) {
            EXPECT_EQ(a.message, b.message) << where;
            differences += a.message != b.message;
            continue;
        }
        EXPECT_EQ(a.image.width, b.image.width) << where;
        EXPECT_EQ(a.image.height, b.image.height) << where;
        EXPECT_EQ(a.image.opaque, b.image.opaque) << where;
        std::size_t firstPixel = 0;
        while (firstPixel < std::min(a.image.pixels.size(), b.image.pixels.size()) &&
               a.image.pixels[firstPixel] == b.image.pixels[firstPixel])
            ++firstPixel;
        EXPECT_EQ(a.image.pixels.size(), b.image.pixels.size()) << where;
        EXPECT_TRUE(a.image.pixels == b.image.pixels)
            << where << ": first different pixel " << firstPixel << std::hex << " libpng "
            << (firstPixel < a.image.pixels.size() ? a.image.pixels[firstPixel] : 0u) << " ours "
            << (firstPixel < b.image.pixels.size() ? b.image.pixels[firstPixel] : 0u);
        EXPECT_TRUE(a.image.values == b.image.values) << where;
        if (a.image.width != b.image.width || a.image.height != b.image.height || a.image.opaque != b.image.opaque ||
            a.image.pixels != b.image.pixels || a.image.values != b.image.values)
            ++differences;
        // A decoded image is never empty: the comparison above saw pixels.
        EXPECT_GT(form == 2 ? b.image.values.size() : b.image.pixels.size(), 0u) << where;
    }
    return differences;
}

// ---- Files made here -------------------------------------------------------

void put32(Bytes& out, std::uint32_t v) {
    for (int s = 24; s >= 0; s -= 8) out.push_back(std::uint8_t(v >> s));
}

struct RawChunk {
    std::string name;
    Bytes data;
};

void putChunk(Bytes& out, const std::string& name, const Bytes& data) {
    put32(out, std::uint32_t(data.size()));
    const std::size_t start = out.size();
    out.insert(out.end(), name.begin(), name.end());
    out.insert(out.end(), data.begin(), data.end());
    put32(out, std::uint32_t(crc32(0, out.data() + start, uInt(out.size() - start))));
}

struct Picture {
    std::uint32_t width = 1;
    std::uint32_t height = 1;
    int depth = 8;
    int colorType = 6;
    bool interlace = false;
    std::vector<unsigned> samples;  // width * height * channels, each below 2^depth
    std::vector<RawChunk> before;   // between the header and the image data
    std::vector<RawChunk> after;    // between the image data and the end
    std::size_t idatPiece = 0;      // image data split into chunks this large (0: one chunk)
    int compression = 6;
};

int channelsOf(int colorType) {
    switch (colorType) {
        case 0: return 1;
        case 2: return 3;
        case 3: return 1;
        case 4: return 2;
        default: return 4;
    }
}

// Sample values that cover the whole range, ends included.
void fillSamples(Picture& p, unsigned seed, unsigned limit = 0) {
    const int channels = channelsOf(p.colorType);
    const unsigned top = limit != 0 ? limit : (p.depth == 16 ? 65536u : 1u << p.depth);
    p.samples.resize(std::size_t(p.width) * p.height * channels);
    std::uint32_t state = seed * 2654435761u + 12345u;
    for (std::size_t i = 0; i < p.samples.size(); ++i) {
        state = state * 1664525u + 1013904223u;
        const unsigned pick = (state >> 8) % 7;
        if (pick == 0) p.samples[i] = 0;
        else if (pick == 1) p.samples[i] = top - 1;
        else if (pick == 2 && i > 0) p.samples[i] = p.samples[i - 1];
        else p.samples[i] = (state >> 12) % top;
    }
}

// One row of samples in file order, packed, before filtering.
Bytes packRow(const Picture& p, std::uint32_t y, std::uint32_t x0, std::uint32_t dx) {
    const int channels = channelsOf(p.colorType);
    Bytes row;
    unsigned acc = 0;
    int bits = 0;
    for (std::uint32_t x = x0; x < p.width; x += dx)
        for (int c = 0; c < channels; ++c) {
            const unsigned v = p.samples[(std::size_t(y) * p.width + x) * channels + c];
            if (p.depth == 16) {
                row.push_back(std::uint8_t(v >> 8));
                row.push_back(std::uint8_t(v));
            } else if (p.depth == 8) {
                row.push_back(std::uint8_t(v));
            } else {
                acc = (acc << p.depth) | v;
                bits += p.depth;
                if (bits == 8) {
                    row.push_back(std::uint8_t(acc));
                    acc = 0;
                    bits = 0;
                }
            }
        }
    if (bits > 0) row.push_back(std::uint8_t(acc << (8 - bits)));
    return row;
}

int paeth(int a, int b, int c) {
    const int p = a + b - c, pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
    return (pa <= pb && pa <= pc) ? a : (pb <= pc ? b : c);
}

// The filtered image data, every filter in turn.
Bytes filteredData(const Picture& p) {
    static const int X0[7] = {0, 4, 0, 2, 0, 1, 0}, Y0[7] = {0, 0, 4, 0, 2, 0, 1};
    static const int DX[7] = {8, 8, 4, 4, 2, 2, 1}, DY[7] = {8, 8, 8, 4, 4, 2, 2};
    const std::size_t bpp = std::size_t(channelsOf(p.colorType) * p.depth + 7) / 8;
    Bytes out;
    int filter = 0;
    for (int pass = 0; pass < (p.interlace ? 7 : 1); ++pass) {
        const std::uint32_t x0 = p.interlace ? X0[pass] : 0, y0 = p.interlace ? Y0[pass] : 0;
        const std::uint32_t dx = p.interlace ? DX[pass] : 1, dy = p.interlace ? DY[pass] : 1;
        if (p.width <= x0 || p.height <= y0) continue;
        Bytes prev;
        for (std::uint32_t y = y0; y < p.height; y += dy) {
            const Bytes row = packRow(p, y, x0, dx);
            if (prev.empty()) prev.assign(row.size(), 0);
            out.push_back(std::uint8_t(filter));
            for (std::size_t i = 0; i < row.size(); ++i) {
                const int a = i >= bpp ? row[i - bpp] : 0, b = prev[i], c = i >= bpp ? prev[i - bpp] : 0;
                int predicted = 0;
                switch (filter) {
                    case 1: predicted = a; break;
                    case 2: predicted = b; break;
                    case 3: predicted = (a + b) >> 1; break;
                    case 4: predicted = paeth(a, b, c); break;
                    default: break;
                }
                out.push_back(std::uint8_t(row[i] - predicted));
            }
            prev = row;
            filter = (filter + 1) % 5;
        }
    }
    return out;
}

Bytes compressed(const Bytes& raw, int level) {
    uLongf size = compressBound(uLong(raw.size()));
    Bytes out(size);
    EXPECT_EQ(compress2(out.data(), &size, raw.data(), uLong(raw.size()), level), Z_OK);
    out.resize(size);
    return out;
}

Bytes header(const Picture& p) {
    Bytes h;
    put32(h, p.width);
    put32(h, p.height);
    h.push_back(std::uint8_t(p.depth));
    h.push_back(std::uint8_t(p.colorType));
    h.push_back(0);
    h.push_back(0);
    h.push_back(p.interlace ? 1 : 0);
    return h;
}

const Bytes SIGNATURE = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

Bytes encode(const Picture& p, const Bytes& stream) {
    Bytes out = SIGNATURE;
    putChunk(out, "IHDR", header(p));
    for (const RawChunk& c : p.before) putChunk(out, c.name, c.data);
    const std::size_t piece = p.idatPiece != 0 ? p.idatPiece : std::max<std::size_t>(stream.size(), 1);
    for (std::size_t at = 0; at < stream.size(); at += piece)
        putChunk(out, "IDAT", Bytes(stream.begin() + std::ptrdiff_t(at),
                                    stream.begin() + std::ptrdiff_t(std::min(stream.size(), at + piece))));
    for (const RawChunk& c : p.after) putChunk(out, c.name, c.data);
    putChunk(out, "IEND", {});
    return out;
}

Bytes encode(const Picture& p) { return encode(p, compressed(filteredData(p), p.compression)); }

Bytes palette(int count, unsigned seed) {
    Bytes pal;
    for (int i = 0; i < count * 3; ++i) pal.push_back(std::uint8_t((i * 37 + seed * 11) % 256));
    return pal;
}

Bytes be16s(std::initializer_list<unsigned> values) {
    Bytes b;
    for (unsigned v : values) {
        b.push_back(std::uint8_t(v >> 8));
        b.push_back(std::uint8_t(v));
    }
    return b;
}

Bytes be32s(std::uint32_t v) {
    Bytes b;
    put32(b, v);
    return b;
}

// Both readers give the same thing at every gamma; returns the differences.
int compareAtAllGammas(const Bytes& file, const std::string& what) {
    int differences = 0;
    for (double g : GAMMAS) differences += compareReaders(file, g, what);
    return differences;
}

// ---- Tests -----------------------------------------------------------------

TEST(PngDecoder, EveryPngOfTheResourcesAndTestsDecodesAlikeAtEveryGamma) {
    int files = 0;
    int fonts = 0;
    for (const char* folder : {"resources", "tests/golden", "tests/fuzz/corpus/png", "tests/platform"}) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(std::filesystem::path(TENDRANE_SOURCE_DIR) / folder)) {
            if (!entry.is_regular_file() || entry.path().extension() != ".png") continue;
            const Bytes file = readFile(entry.path());
            ASSERT_FALSE(file.empty()) << entry.path();
            EXPECT_EQ(compareAtAllGammas(file, entry.path().string()), 0) << entry.path();
            ++files;
            if (entry.path().parent_path().filename() == "fonts") ++fonts;
        }
    }
    // Every image and font atlas of the product was seen.
    EXPECT_GE(files, 70);
    EXPECT_GE(fonts, 8);
}

TEST(PngDecoder, ShippedImagesDecodeToPixels) {
    // Not only the same answer: a real one (an image with visible pixels,
    // an atlas with coverage).
    const Bytes image = readFile(std::filesystem::path(TENDRANE_SOURCE_DIR) / "resources/images/BGOverlay.png");
    const DecodedPng d = decodePngWithZlib(image.data(), image.size());
    EXPECT_EQ(d.width, 384);
    EXPECT_EQ(d.height, 512);
    EXPECT_FALSE(d.opaque);
    EXPECT_TRUE(std::any_of(d.pixels.begin(), d.pixels.end(), [](Pixel p) { return (p >> 24) == 255; }));
    const Bytes atlas = readFile(std::filesystem::path(TENDRANE_SOURCE_DIR) / "resources/fonts/futura14_0.png");
    const DecodedPng plain = decodePngMaskWithZlib(atlas.data(), atlas.size(), 0);
    const DecodedPng corrected = decodePngMaskWithZlib(atlas.data(), atlas.size(), 2.7);
    EXPECT_TRUE(plain.opaque);
    EXPECT_NE(plain.values, corrected.values);
    EXPECT_TRUE(std::any_of(plain.values.begin(), plain.values.end(), [](Coverage c) { return c == 255; }));
}

TEST(PngDecoder, EveryColourTypeDepthAndInterlaceDecodesAlike) {
    struct Kind {
        int colorType;
        int depth;
    };
    const Kind kinds[] = {{0, 1}, {0, 2}, {0, 4}, {0, 8}, {0, 16}, {2, 8},  {2, 16}, {3, 1},
                          {3, 2}, {3, 4}, {3, 8}, {4, 8}, {4, 16}, {6, 8}, {6, 16}};
    const std::pair<int, int> sizes[] = {{1, 1}, {3, 2}, {5, 9}, {13, 11}, {33, 17}, {70, 3}};
    int made = 0;
    for (const Kind& k : kinds)
        for (const auto& [w, h] : sizes)
            for (bool interlace : {false, true}) {
                Picture p;
                p.width = std::uint32_t(w);
                p.height = std::uint32_t(h);
                p.colorType = k.colorType;
                p.depth = k.depth;
                p.interlace = interlace;
                const unsigned entries = k.colorType == 3 ? std::min(256u, 1u << k.depth) : 0u;
                fillSamples(p, unsigned(made), entries);
                if (k.colorType == 3) p.before.push_back({"PLTE", palette(int(entries), unsigned(made))});
                p.idatPiece = made % 3 == 0 ? 7 : 0;
                const std::string what = "type " + std::to_string(k.colorType) + " depth " + std::to_string(k.depth) +
                                         " " + std::to_string(w) + "x" + std::to_string(h) + (interlace ? " laced" : "");
                EXPECT_EQ(compareAtAllGammas(encode(p), what), 0) << what;
                ++made;
            }
    EXPECT_EQ(made, 15 * 6 * 2);
}

TEST(PngDecoder, TransparencyChunksDecodeAlike) {
    // Grey and colour with a transparent colour, palettes with alpha for some
    // entries, and indices past the palette.
    int made = 0;
    for (int depth : {1, 2, 4, 8, 16}) {
        Picture p;
        p.width = 19;
        p.height = 7;
        p.colorType = 0;
        p.depth = depth;
        fillSamples(p, 100u + unsigned(depth));
        const unsigned top = depth == 16 ? 65535u : (1u << depth) - 1u;
        p.before.push_back({"tRNS", be16s({top})});
        EXPECT_EQ(compareAtAllGammas(encode(p), "grey tRNS"), 0) << depth;
        // A value beyond the depth: only its low bits count.
        p.before[0].data = be16s({0x100u | (depth == 16 ? 0u : 1u)});
        EXPECT_EQ(compareAtAllGammas(encode(p), "grey tRNS wide"), 0) << depth;
        ++made;
    }
    for (int depth : {8, 16}) {
        Picture p;
        p.width = 23;
        p.height = 5;
        p.colorType = 2;
        p.depth = depth;
        p.interlace = depth == 16;
        fillSamples(p, 200u + unsigned(depth), 4);  // few values: the transparent one occurs
        p.before.push_back({"tRNS", be16s({3, 0, 3})});
        EXPECT_EQ(compareAtAllGammas(encode(p), "rgb tRNS"), 0) << depth;
        ++made;
    }
    for (int depth : {1, 2, 4, 8}) {
        Picture p;
        p.width = 17;
        p.height = 9;
        p.colorType = 3;
        p.depth = depth;
        p.interlace = depth == 4;
        fillSamples(p, 300u + unsigned(depth));
        const int entries = std::max(1, (1 << depth) - 1);  // the last index is past the palette
        p.before.push_back({"PLTE", palette(entries, 3)});
        Bytes alpha;
        for (int i = 0; i < std::max(1, entries / 2); ++i) alpha.push_back(std::uint8_t(i * 97));
        p.before.push_back({"tRNS", alpha});
        EXPECT_EQ(compareAtAllGammas(encode(p), "palette tRNS"), 0) << depth;
        ++made;
    }
    EXPECT_EQ(made, 11);
}

Bytes chromaticities(std::initializer_list<std::uint32_t> values) {
    Bytes b;
    for (std::uint32_t v : values) put32(b, v);
    return b;
}

const Bytes SRGB_CHROMATICITIES = chromaticities({31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000});

TEST(PngDecoder, GammaAndSignificantBitsChunksDecodeAlike) {
    Picture p;
    p.width = 40;
    p.height = 6;
    p.colorType = 0;
    p.depth = 8;
    fillSamples(p, 7);
    const std::vector<std::vector<RawChunk>> cases = {
        {{"gAMA", be32s(45455)}},
        {{"gAMA", be32s(100000)}},
        {{"gAMA", be32s(22727)}},
        {{"gAMA", be32s(15)}},                                  // out of range
        {{"gAMA", be32s(45455)}, {"gAMA", be32s(100000)}},      // twice
        {{"sRGB", {0}}},
        {{"sRGB", {7}}},                                        // no such intent
        {{"sRGB", {0}}, {"gAMA", be32s(100000)}},
        {{"sRGB", {0}}, {"gAMA", be32s(46000)}},
        {{"gAMA", be32s(100000)}, {"sRGB", {1}}},
        {{"sRGB", {0}}, {"sRGB", {0}}},
        {{"gAMA", {0, 1}}},                                     // wrong length
        {{"gAMA", be32s(100000)}, {"gAMA", be32s(45455)}},      // twice: the first stays
        {{"gAMA", be32s(100000)}, {"sRGB", {9}}},
        {{"cHRM", Bytes(32, 0)}, {"gAMA", be32s(100000)}},      // impossible chromaticities first
        {{"gAMA", be32s(100000)}, {"cHRM", Bytes(32, 0)}},
        {{"cHRM", SRGB_CHROMATICITIES}, {"gAMA", be32s(100000)}},
        {{"cHRM", SRGB_CHROMATICITIES}, {"cHRM", SRGB_CHROMATICITIES}, {"gAMA", be32s(100000)}},
        {{"cHRM", Bytes(32, 0xFF)}, {"gAMA", be32s(100000)}},   // values out of range: dropped
        {{"cHRM", Bytes(31, 0)}, {"gAMA", be32s(100000)}},
        // Chromaticities in range that span no colour space, or do not come back
        // from XYZ where they started.
        {{"cHRM", chromaticities({31270, 32900, 47616, 33000, 30000, 5216, 15000, 6000})}, {"gAMA", be32s(100000)}},
        {{"cHRM", chromaticities({23078, 32900, 64000, 33000, 30000, 60000, 15000, 6000})}, {"gAMA", be32s(100000)}},
        {{"sRGB", {0}}, {"cHRM", chromaticities({31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000})}},
    };
    int index = 0;
    for (const auto& chunks : cases) {
        p.before = chunks;
        EXPECT_EQ(compareAtAllGammas(encode(p), "gamma case " + std::to_string(index)), 0) << index;
        ++index;
    }
    // A gAMA chunk after the palette is too late.
    Picture q = p;
    q.colorType = 3;
    fillSamples(q, 8, 200);
    q.before = {{"PLTE", palette(200, 1)}, {"gAMA", be32s(100000)}};
    EXPECT_EQ(compareAtAllGammas(encode(q), "late gAMA"), 0);
    q.before = {{"gAMA", be32s(100000)}, {"PLTE", palette(200, 1)}};
    EXPECT_EQ(compareAtAllGammas(encode(q), "gAMA, then palette"), 0);
    // Sixteen-bit samples with fewer significant bits.
    for (int bits : {4, 9, 12, 16}) {
        Picture r;
        r.width = 30;
        r.height = 4;
        r.colorType = 2;
        r.depth = 16;
        fillSamples(r, unsigned(bits));
        r.before = {{"sBIT", {std::uint8_t(bits), std::uint8_t(bits / 2 + 1), 3}}};
        EXPECT_EQ(compareAtAllGammas(encode(r), "sBIT " + std::to_string(bits)), 0) << bits;
    }
}

TEST(PngDecoder, OtherChunksAreSkippedAlike) {
    Picture p;
    p.width = 9;
    p.height = 9;
    p.colorType = 2;
    p.depth = 8;
    fillSamples(p, 9);
    p.before = {{"tEXt", {'a', 0, 'b'}}, {"pHYs", Bytes(9, 1)}, {"prVt", Bytes(5, 2)}};
    p.after = {{"tEXt", {'c', 0, 'd'}}, {"zzZz", Bytes(3, 7)}};
    EXPECT_EQ(compareAtAllGammas(encode(p), "skipped chunks"), 0);
    // A palette in a colour image is a suggestion only, and image data may
    // come in empty chunks and in many small ones.
    p.before = {{"PLTE", palette(16, 2)}};
    p.idatPiece = 1;
    EXPECT_EQ(compareAtAllGammas(encode(p), "suggested palette"), 0);
    const Bytes stream = compressed(filteredData(p), 9);
    Bytes file = SIGNATURE;
    putChunk(file, "IHDR", header(p));
    putChunk(file, "IDAT", {});
    putChunk(file, "IDAT", stream);
    putChunk(file, "IDAT", {});
    putChunk(file, "IEND", {});
    EXPECT_EQ(compareAtAllGammas(file, "empty image data chunks"), 0);
    // A transparency chunk before the palette of a colour image.
    p.idatPiece = 0;
    p.before = {{"tRNS", be16s({1, 2, 3})}, {"PLTE", palette(16, 2)}};
    EXPECT_EQ(compareAtAllGammas(encode(p), "tRNS before PLTE"), 0);
}

// ---- Broken files: each one refused by both, with the reader's text ---------

void expectRefused(const Bytes& file, const std::string& what) {
    for (double g : {0.0, 2.7}) {
        const Outcome a = run([&] { return decodePng(file.data(), file.size(), g); });
        const Outcome b = run([&] { return decodePngWithZlib(file.data(), file.size(), g); });
        const Outcome m = run([&] { return decodePngMaskWithZlib(file.data(), file.size(), g); });
        EXPECT_TRUE(a.failed) << what;
        EXPECT_EQ(a.message, INVALID) << what;
        EXPECT_TRUE(b.failed) << what;
        EXPECT_EQ(b.message, INVALID) << what;
        EXPECT_EQ(m.message, INVALID) << what;
    }
}

Picture smallPicture() {
    Picture p;
    p.width = 21;
    p.height = 13;
    p.colorType = 6;
    p.depth = 8;
    fillSamples(p, 42);
    return p;
}

// Offset of the first chunk of that name.
std::size_t chunkAt(const Bytes& file, const char* name) {
    std::size_t at = 8;
    while (at + 8 <= file.size()) {
        if (std::memcmp(file.data() + at + 4, name, 4) == 0) return at;
        at += 12 + (std::size_t(file[at]) << 24 | std::size_t(file[at + 1]) << 16 | std::size_t(file[at + 2]) << 8 |
                    file[at + 3]);
    }
    ADD_FAILURE() << "no chunk " << name;
    return 0;
}

TEST(PngDecoder, BadCheckValuesOfCriticalChunksAreRefused) {
    const Bytes good = encode(smallPicture());
    ASSERT_EQ(compareAtAllGammas(good, "good"), 0);
    for (const char* name : {"IHDR", "IDAT", "IEND"}) {
        Bytes bad = good;
        const std::size_t at = chunkAt(bad, name);
        const std::size_t length = std::size_t(bad[at + 3]) | std::size_t(bad[at + 2]) << 8;
        bad[at + 8 + length + 3] ^= 0x01;  // last byte of the check value
        expectRefused(bad, std::string("check value of ") + name);
    }
    Picture p = smallPicture();
    p.colorType = 3;
    fillSamples(p, 5, 16);
    p.before = {{"PLTE", palette(16, 1)}};
    Bytes bad = encode(p);
    bad[chunkAt(bad, "PLTE") + 8 + 48] ^= 0x80;
    expectRefused(bad, "check value of PLTE");
}

TEST(PngDecoder, ABadCheckValueOfAnAncillaryChunkDropsTheChunk) {
    Picture p = smallPicture();
    p.colorType = 0;
    fillSamples(p, 3);
    p.before = {{"gAMA", be32s(100000)}};
    Bytes file = encode(p);
    file[chunkAt(file, "gAMA") + 8 + 4] ^= 0x10;
    EXPECT_EQ(compareAtAllGammas(file, "broken gAMA"), 0);
    // Dropped: the image reads as with no gAMA chunk at all.
    p.before.clear();
    const Bytes without = encode(p);
    EXPECT_EQ(decodePngWithZlib(file.data(), file.size(), 2.7).pixels,
              decodePngWithZlib(without.data(), without.size(), 2.7).pixels);
}

TEST(PngDecoder, EveryTruncationIsRefused) {
    Picture p = smallPicture();
    p.interlace = true;
    p.idatPiece = 100;
    const Bytes good = encode(p);
    for (std::size_t n = 0; n < good.size(); ++n)
        expectRefused(Bytes(good.begin(), good.begin() + std::ptrdiff_t(n)), "first " + std::to_string(n) + " bytes");
    EXPECT_EQ(compareAtAllGammas(good, "whole"), 0);
    // Bytes after the end are ignored.
    Bytes longer = good;
    longer.insert(longer.end(), {1, 2, 3});
    EXPECT_EQ(compareAtAllGammas(longer, "longer"), 0);
}

TEST(PngDecoder, HugeOrEmptyDimensionsAreRefused) {
    const std::pair<std::uint32_t, std::uint32_t> sizes[] = {
        {16385, 1}, {1, 16385}, {5000, 5000}, {0, 5}, {5, 0}, {0x80000000u, 1}, {0xFFFFFFFFu, 0xFFFFFFFFu}};
    for (const auto& [w, h] : sizes) {
        Picture p = smallPicture();
        const Bytes stream = compressed(filteredData(p), 6);
        p.width = w;
        p.height = h;
        expectRefused(encode(p, stream), "size " + std::to_string(w) + "x" + std::to_string(h));
    }
    // The largest side allowed still reads.
    Picture wide;
    wide.width = 16384;
    wide.height = 2;
    wide.colorType = 0;
    wide.depth = 1;
    fillSamples(wide, 1);
    EXPECT_EQ(compareReaders(encode(wide), 0, "wide"), 0);
    EXPECT_EQ(decodePngWithZlib(encode(wide).data(), encode(wide).size()).width, 16384);
}

TEST(PngDecoder, BadHeaderFieldsAreRefused) {
    const Bytes good = encode(smallPicture());
    const std::size_t fieldAt = 8 + 8;  // header data
    const std::pair<int, std::uint8_t> changes[] = {
        {8, 3},  {8, 0},  {8, 32}, {9, 1}, {9, 5}, {9, 7},  // depth, colour type
        {10, 1}, {11, 1}, {12, 2},                          // compression, filter, interlace
    };
    for (const auto& [offset, value] : changes) {
        Bytes bad = good;
        bad[fieldAt + std::size_t(offset)] = value;
        const std::uint32_t crc = std::uint32_t(crc32(0, bad.data() + 12, 17));
        for (int i = 0; i < 4; ++i) bad[29 + std::size_t(i)] = std::uint8_t(crc >> (24 - 8 * i));
        expectRefused(bad, "header byte " + std::to_string(offset) + " = " + std::to_string(value));
    }
    // Colour types and depths that do not go together.
    for (const auto& [type, depth] : std::vector<std::pair<int, int>>{{3, 16}, {2, 4}, {4, 2}, {6, 1}}) {
        Picture p = smallPicture();
        const Bytes stream = compressed(filteredData(p), 6);
        p.colorType = type;
        p.depth = depth;
        p.before = {{"PLTE", palette(4, 1)}};
        expectRefused(encode(p, stream), "type " + std::to_string(type) + " depth " + std::to_string(depth));
    }
}

TEST(PngDecoder, BadImageDataIsRefused) {
    Picture p = smallPicture();
    const Bytes raw = filteredData(p);
    // Not a zlib stream at all.
    expectRefused(encode(p, Bytes(40, 0xFF)), "junk stream");
    // A stored block with a length that contradicts its complement.
    Bytes stream = compressed(raw, 0);
    stream[4] ^= 0xFF;
    expectRefused(encode(p, stream), "damaged block");
    // A block type that does not exist.
    stream = compressed(raw, 6);
    stream[2] |= 0x06;
    expectRefused(encode(p, stream), "unknown block type");
    // Too little data for the image.
    expectRefused(encode(p, compressed(Bytes(raw.begin(), raw.begin() + std::ptrdiff_t(raw.size() / 2)), 6)),
                  "short stream");
    // A filter type that does not exist.
    Bytes badFilter = raw;
    badFilter[0] = 5;
    expectRefused(encode(p, compressed(badFilter, 6)), "filter 5");
    // A stream that stops short of its end, and one whose check sum is wrong.
    stream = compressed(raw, 6);
    expectRefused(encode(p, Bytes(stream.begin(), stream.end() - 4)), "no check sum");
    stream.back() ^= 0x01;
    expectRefused(encode(p, stream), "wrong check sum");
    // More data than the image needs is let pass, by both.
    Bytes more = raw;
    more.insert(more.end(), 500, 0);
    EXPECT_EQ(compareAtAllGammas(encode(p, compressed(more, 6)), "more data"), 0);
}

TEST(PngDecoder, MissingChunksAreRefused) {
    Picture p = smallPicture();
    const Bytes stream = compressed(filteredData(p), 6);
    Bytes noHeader = SIGNATURE;
    putChunk(noHeader, "IDAT", stream);
    putChunk(noHeader, "IEND", {});
    expectRefused(noHeader, "no IHDR");
    Bytes noData = SIGNATURE;
    putChunk(noData, "IHDR", header(p));
    putChunk(noData, "IEND", {});
    expectRefused(noData, "no IDAT");
    Bytes noEnd = SIGNATURE;
    putChunk(noEnd, "IHDR", header(p));
    putChunk(noEnd, "IDAT", stream);
    expectRefused(noEnd, "no IEND");
    Picture q = p;
    q.colorType = 3;
    fillSamples(q, 4, 16);
    expectRefused(encode(q), "no PLTE");
    Bytes noSignature = encode(p);
    noSignature[1] = 'Q';
    expectRefused(noSignature, "no signature");
    Bytes twoHeaders = SIGNATURE;
    putChunk(twoHeaders, "IHDR", header(p));
    putChunk(twoHeaders, "IHDR", header(p));
    putChunk(twoHeaders, "IDAT", stream);
    putChunk(twoHeaders, "IEND", {});
    expectRefused(twoHeaders, "two IHDR");
    Bytes unknownCritical = SIGNATURE;
    putChunk(unknownCritical, "IHDR", header(p));
    putChunk(unknownCritical, "ABCD", {1, 2});
    putChunk(unknownCritical, "IDAT", stream);
    putChunk(unknownCritical, "IEND", {});
    expectRefused(unknownCritical, "unknown critical chunk");
    Bytes badName = SIGNATURE;
    putChunk(badName, "IHDR", header(p));
    putChunk(badName, "a1cd", {1, 2});
    putChunk(badName, "IDAT", stream);
    putChunk(badName, "IEND", {});
    expectRefused(badName, "chunk name not of letters");
    Bytes hugeChunk = encode(p);
    hugeChunk[chunkAt(hugeChunk, "IEND")] = 0x7F;
    expectRefused(hugeChunk, "chunk longer than the file");
    EXPECT_EQ(run([] { return decodePngWithZlib(nullptr, 0); }).message, INVALID);
}

// Every byte of small files changed in turn, with the chunk's check value
// made right again and not: whatever libpng makes of it, so does ours.
TEST(PngDecoder, DamagedFilesGetTheSameAnswer) {
    std::vector<Picture> pictures;
    Picture a = smallPicture();
    a.width = 6;
    a.height = 5;
    fillSamples(a, 11);
    a.before = {{"gAMA", be32s(50000)}};
    pictures.push_back(a);
    Picture b;
    b.width = 7;
    b.height = 6;
    b.colorType = 3;
    b.depth = 4;
    b.interlace = true;
    fillSamples(b, 12);
    b.before = {{"PLTE", palette(12, 5)}, {"tRNS", {0, 80, 255}}};
    pictures.push_back(b);
    Picture c;
    c.width = 5;
    c.height = 4;
    c.colorType = 0;
    c.depth = 16;
    fillSamples(c, 13);
    c.before = {{"sBIT", {10}}, {"tRNS", be16s({0})}};
    c.idatPiece = 9;
    pictures.push_back(c);
    int files = 0;
    int differences = 0;
    for (const Picture& p : pictures) {
        const Bytes good = encode(p);
        for (std::size_t at = 8; at < good.size(); ++at)
            for (std::uint8_t flip : {std::uint8_t(0x01), std::uint8_t(0x80), std::uint8_t(0xFF)})
                for (bool fixCheck : {false, true}) {
                    Bytes bad = good;
                    bad[at] ^= flip;
                    if (fixCheck) {
                        // The check value of the chunk that holds the byte.
                        std::size_t start = 8;
                        while (start < bad.size()) {
                            const std::size_t length = std::size_t(good[start]) << 24 | std::size_t(good[start + 1]) << 16 |
                                                       std::size_t(good[start + 2]) << 8 | good[start + 3];
                            if (at < start + 12 + length) {
                                if (at >= start + 4 && at < start + 8 + length) {
                                    const std::uint32_t crc = std::uint32_t(crc32(0, bad.data() + start + 4, uInt(length + 4)));
                                    for (int i = 0; i < 4; ++i)
                                        bad[start + 8 + length + std::size_t(i)] = std::uint8_t(crc >> (24 - 8 * i));
                                }
                                break;
                            }
                            start += 12 + length;
                        }
                    }
                    for (double g : {0.0, 2.7}) differences += compareReaders(bad, g, "byte " + std::to_string(at));
                    ++files;
                }
    }
    EXPECT_GT(files, 1000);
    EXPECT_EQ(differences, 0);
}

}  // namespace
}  // namespace OrlPixels

#endif
