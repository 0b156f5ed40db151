// Our own PNG reader over zlib's inflate. It reads the file in the order the
// libpng reader does and takes the same decisions on the way: which chunks
// are fatal when broken and which are only dropped, how image data is fed to
// inflate and when the end of the stream is looked at, how samples expand to
// 8 bits and how the gamma tables are made. Every failure is one of the
// libpng reader's texts.
#ifdef TENDRANE_HAVE_ZLIB

#define ZLIB_CONST
#include <zlib.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

#include "pixels/PngDecoder.h"

namespace OrlPixels {

namespace {

const char* const INVALID_FORMAT = "Error reading PNG image : invalid format";

[[noreturn]] void invalid() { throw OrlPNG(INVALID_FORMAT); }

constexpr std::uint32_t nameOf(const char (&s)[5]) {
    return std::uint32_t(std::uint8_t(s[0])) << 24 | std::uint32_t(std::uint8_t(s[1])) << 16 |
           std::uint32_t(std::uint8_t(s[2])) << 8 | std::uint32_t(std::uint8_t(s[3]));
}

constexpr std::uint32_t IHDR = nameOf("IHDR");
constexpr std::uint32_t PLTE = nameOf("PLTE");
constexpr std::uint32_t IDAT = nameOf("IDAT");
constexpr std::uint32_t IEND = nameOf("IEND");
constexpr std::uint32_t tRNS = nameOf("tRNS");
constexpr std::uint32_t gAMA = nameOf("gAMA");
constexpr std::uint32_t sRGB = nameOf("sRGB");
constexpr std::uint32_t sBIT = nameOf("sBIT");
constexpr std::uint32_t cHRM = nameOf("cHRM");

// Ancillary chunks the reader knows: before the header they are fatal.
constexpr std::uint32_t KNOWN_ANCILLARY[] = {
    nameOf("bKGD"), nameOf("eXIf"), nameOf("hIST"), nameOf("oFFs"), nameOf("pCAL"), nameOf("sCAL"),
    nameOf("pHYs"), nameOf("iCCP"), nameOf("sPLT"), nameOf("tEXt"), nameOf("tIME"), nameOf("zTXt"), nameOf("iTXt"),
};

constexpr std::uint32_t MAX_31 = 0x7FFFFFFFu;
constexpr std::uint32_t MAX_SIDE = 16384;               // width and height
constexpr std::uint64_t MAX_PIXELS = std::uint64_t(1) << 24;
constexpr std::uint64_t MAX_CHUNK = 8000000;            // any chunk but image data
constexpr std::uint32_t READ_PIECE = 8192;              // image data goes to inflate in pieces this large
constexpr std::int32_t FP_1 = 100000;                   // gamma values are fixed point, times 100000
constexpr std::int32_t GAMMA_THRESHOLD = 5000;
constexpr std::int32_t GAMMA_sRGB_INVERSE = 45455;

std::uint32_t be32(const std::uint8_t* p) {
    return std::uint32_t(p[0]) << 24 | std::uint32_t(p[1]) << 16 | std::uint32_t(p[2]) << 8 | std::uint32_t(p[3]);
}

unsigned be16(const std::uint8_t* p) { return unsigned(p[0]) << 8 | p[1]; }

bool isLetter(std::uint8_t c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

struct Header {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int depth = 0;
    int colorType = 0;
    int interlace = 0;
    int channels = 0;
};

struct Chunk {
    std::uint32_t length = 0;
    std::uint32_t name = 0;
    const std::uint8_t* data = nullptr;
    bool crcOk = false;
    // Critical chunks have an upper case first letter; a broken one is fatal.
    bool critical() const { return (name & 0x20000000u) == 0; }
};

// Walks the chunks of the file; each one must be whole, with its check value.
class ChunkReader {
public:
    ChunkReader(const std::uint8_t* data, std::size_t size) : data_(data), size_(size), at_(8) {}

    Chunk next(const Header& h) {
        if (size_ - at_ < 8) invalid();
        const std::uint8_t* p = data_ + at_;
        Chunk c;
        c.length = be32(p);
        if (c.length > MAX_31) invalid();
        for (int i = 0; i < 4; ++i)
            if (!isLetter(p[4 + i])) invalid();
        c.name = be32(p + 4);
        if (c.length > lengthLimit(c.name, h)) invalid();
        if (size_ - at_ - 8 < std::size_t(c.length) + 4) invalid();
        c.data = p + 8;
        const uLong crc = crc32(crc32(0L, Z_NULL, 0), p + 4, uInt(c.length) + 4u);
        c.crcOk = crc == be32(c.data + c.length);
        at_ += std::size_t(c.length) + 12;
        return c;
    }

private:
    // Image data may be as long as an image of the header's size could need
    // (with room for the compressor's overhead); other chunks have a fixed limit.
    static std::uint64_t lengthLimit(std::uint32_t name, const Header& h) {
        std::uint64_t limit = MAX_CHUNK;
        if (name == IDAT) {
            std::uint64_t rowFactor = std::uint64_t(h.width) * std::uint64_t(h.channels) * (h.depth > 8 ? 2u : 1u) + 1u +
                                      (h.interlace != 0 ? 6u : 0u);
            std::uint64_t dataLimit = 0;
            if (h.height > 0xFFFFFFFFu / rowFactor)
                dataLimit = MAX_31;
            else
                dataLimit = std::uint64_t(h.height) * rowFactor;
            if (rowFactor > 32566) rowFactor = 32566;
            dataLimit += 6 + 5 * (dataLimit / rowFactor + 1);
            if (dataLimit > MAX_31) dataLimit = MAX_31;
            if (dataLimit > limit) limit = dataLimit;
        }
        return limit;
    }

    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t at_;
};

Header readHeader(const Chunk& c) {
    if (c.length != 13 || !c.crcOk) invalid();
    Header h;
    h.width = be32(c.data);
    h.height = be32(c.data + 4);
    h.depth = c.data[8];
    h.colorType = c.data[9];
    h.interlace = c.data[12];
    const int compression = c.data[10];
    const int filter = c.data[11];
    if (h.width == 0 || h.width > MAX_SIDE || h.height == 0 || h.height > MAX_SIDE) invalid();
    if (h.depth != 1 && h.depth != 2 && h.depth != 4 && h.depth != 8 && h.depth != 16) invalid();
    switch (h.colorType) {
        case 0: h.channels = 1; break;
        case 2: h.channels = 3; break;
        case 3: h.channels = 1; break;
        case 4: h.channels = 2; break;
        case 6: h.channels = 4; break;
        default: invalid();
    }
    if (h.colorType == 3 && h.depth > 8) invalid();
    if ((h.colorType == 2 || h.colorType == 4 || h.colorType == 6) && h.depth < 8) invalid();
    if (h.interlace > 1 || compression != 0 || filter != 0) invalid();
    return h;
}

bool gammaSignificant(std::int32_t g) { return g < FP_1 - GAMMA_THRESHOLD || g > FP_1 + GAMMA_THRESHOLD; }

// What the file says of its gamma: a gAMA chunk, or sRGB; contradictions
// make the file's colour space unusable and its gamma unknown.
struct ColourSpace {
    std::int32_t gamma = 0;
    bool haveGamma = false;
    bool fromGamma = false;
    bool fromSrgb = false;
    bool fromChromaticities = false;
    bool haveIntent = false;
    bool invalid = false;

    // Whether a new gamma may replace the one already known (1: from a gAMA
    // chunk, 2: from sRGB).
    bool mayReplace(std::int32_t g, int from) const {
        if (!haveGamma) return true;
        double r = std::floor(double(gamma) * FP_1 / g + .5);
        const bool fits = r <= 2147483647. && r >= -2147483648.;
        if (!fits || gammaSignificant(std::int32_t(r))) {
            if (fromSrgb || from == 2) return from == 2;
            return from == 1;
        }
        return true;
    }

    void takeGammaChunk(std::int32_t g) {
        if (g < 16 || g > 625000000 || fromGamma) {
            invalid = true;
            return;
        }
        if (invalid) return;
        if (mayReplace(g, 1)) {
            gamma = g;
            haveGamma = true;
            fromGamma = true;
        }
    }

    void takeSrgbChunk(int intent) {
        if (invalid) return;
        if (haveIntent || intent >= 4) {
            invalid = true;
            return;
        }
        haveIntent = true;
        gamma = GAMMA_sRGB_INVERSE;
        haveGamma = true;
        fromSrgb = true;
    }

    // White point and primaries (x, y pairs times 100000); ones that cannot
    // be, or a second set, make the colour space unusable.
    void takeChromaticities(const std::uint8_t* data) {
        std::uint32_t v[8];
        for (int i = 0; i < 8; ++i) {
            v[i] = be32(data + 4 * i);
            if (v[i] > MAX_31) return;  // dropped
        }
        if (invalid) return;
        if (fromChromaticities) {
            invalid = true;
            return;
        }
        fromChromaticities = true;
        if (!possibleChromaticities(std::int32_t(v[0]), std::int32_t(v[1]), std::int32_t(v[2]), std::int32_t(v[3]),
                                    std::int32_t(v[4]), std::int32_t(v[5]), std::int32_t(v[6]), std::int32_t(v[7])))
            invalid = true;
    }

    // a * times / divisor, rounded; false where it does not fit.
    static bool mulDiv(std::int32_t* result, std::int32_t a, std::int32_t times, std::int32_t divisor) {
        if (divisor == 0) return false;
        if (a == 0 || times == 0) {
            *result = 0;
            return true;
        }
        double r = a;
        r *= times;
        r /= divisor;
        r = std::floor(r + .5);
        if (!(r <= 2147483647. && r >= -2147483648.)) return false;
        *result = std::int32_t(r);
        return true;
    }

    static std::int32_t reciprocal(std::int32_t a) {
        const double r = std::floor(1E10 / a + .5);
        if (r <= 2147483647. && r >= -2147483648.) return std::int32_t(r);
        return 0;
    }

    // Whether the white point (wx, wy) and the primaries span a colour space:
    // each point inside the chromaticity triangle, and the scales of red,
    // green and blue that make up the white all positive.
    static bool possibleChromaticities(std::int32_t wx, std::int32_t wy, std::int32_t rx, std::int32_t ry,
                                       std::int32_t gx, std::int32_t gy, std::int32_t bx, std::int32_t by) {
        if (rx < 0 || rx > FP_1 || ry < 0 || ry > FP_1 - rx) return false;
        if (gx < 0 || gx > FP_1 || gy < 0 || gy > FP_1 - gx) return false;
        if (bx < 0 || bx > FP_1 || by < 0 || by > FP_1 - bx) return false;
        if (wx < 0 || wx > FP_1 || wy < 5 || wy > FP_1 - wx) return false;
        std::int32_t left = 0, right = 0;
        if (!mulDiv(&left, gx - bx, ry - by, 7) || !mulDiv(&right, gy - by, rx - bx, 7)) return false;
        const std::int32_t denominator = left - right;
        if (!mulDiv(&left, gx - bx, wy - by, 7) || !mulDiv(&right, gy - by, wx - bx, 7)) return false;
        std::int32_t redInverse = 0;
        if (!mulDiv(&redInverse, wy, denominator, left - right) || redInverse <= wy) return false;
        if (!mulDiv(&left, ry - by, wx - bx, 7) || !mulDiv(&right, rx - bx, wy - by, 7)) return false;
        std::int32_t greenInverse = 0;
        if (!mulDiv(&greenInverse, wy, denominator, left - right) || greenInverse <= wy) return false;
        const std::int32_t blueScale = reciprocal(wy) - reciprocal(redInverse) - reciprocal(greenInverse);
        if (blueScale <= 0) return false;
        // The primaries as XYZ, and back: the round trip must land within
        // 0.00005 of where it started.
        std::int32_t xyz[9];
        if (!mulDiv(&xyz[0], rx, FP_1, redInverse) || !mulDiv(&xyz[1], ry, FP_1, redInverse) ||
            !mulDiv(&xyz[2], FP_1 - rx - ry, FP_1, redInverse) || !mulDiv(&xyz[3], gx, FP_1, greenInverse) ||
            !mulDiv(&xyz[4], gy, FP_1, greenInverse) || !mulDiv(&xyz[5], FP_1 - gx - gy, FP_1, greenInverse) ||
            !mulDiv(&xyz[6], bx, blueScale, FP_1) || !mulDiv(&xyz[7], by, blueScale, FP_1) ||
            !mulDiv(&xyz[8], FP_1 - bx - by, blueScale, FP_1))
            return false;
        std::int32_t back[8];  // white, red, green, blue
        std::int32_t sumAll = 0, whiteX = 0, whiteY = 0;
        for (int k = 0; k < 3; ++k) {
            const std::int32_t d = xyz[3 * k] + xyz[3 * k + 1] + xyz[3 * k + 2];
            if (!mulDiv(&back[2 + 2 * k], xyz[3 * k], FP_1, d) || !mulDiv(&back[3 + 2 * k], xyz[3 * k + 1], FP_1, d))
                return false;
            sumAll += d;
            whiteX += xyz[3 * k];
            whiteY += xyz[3 * k + 1];
        }
        if (!mulDiv(&back[0], whiteX, FP_1, sumAll) || !mulDiv(&back[1], whiteY, FP_1, sumAll)) return false;
        const std::int32_t given[8] = {wx, wy, rx, ry, gx, gy, bx, by};
        for (int i = 0; i < 8; ++i)
            if (back[i] < given[i] - 5 || back[i] > given[i] + 5) return false;
        return true;
    }

    // A gamma once known stays, even when later chunks spoil the colour space.
    bool usable() const { return haveGamma; }
};

// A gamma as the reader takes it: small values are factors, large ones are
// already fixed point; two negative values stand for sRGB and the old Mac
// gamma. False for a value the reader refuses.
bool fixedGamma(double g, bool screen, std::int32_t* out) {
    if (g > 0 && g < 128) g *= FP_1;
    g = std::floor(g + .5);
    if (!(g <= 2147483647. && g >= -2147483647.)) return false;
    std::int32_t f = std::int32_t(g);
    if (f == -1 || f == -FP_1) f = screen ? 220000 : GAMMA_sRGB_INVERSE;
    else if (f == -2 || f == -FP_1 / 2) f = screen ? 151724 : 65909;
    if (f <= 0) return false;
    *out = f;
    return true;
}

std::int32_t product2(std::int32_t a, std::int32_t b) {
    double r = a * 1E-5;
    r *= b;
    r = std::floor(r + .5);
    if (r <= 2147483647. && r >= -2147483648.) return std::int32_t(r);
    return 0;
}

std::int32_t reciprocal2(std::int32_t a, std::int32_t b) {
    if (a != 0 && b != 0) {
        double r = 1E15 / a;
        r /= b;
        r = std::floor(r + .5);
        if (r <= 2147483647. && r >= -2147483648.) return std::int32_t(r);
    }
    return 0;
}

// The correction of 8-bit samples.
void makeGammaTable8(std::int32_t g, std::uint8_t table[256]) {
    for (int i = 0; i < 256; ++i) {
        if (i > 0 && i < 255 && gammaSignificant(g))
            table[i] = std::uint8_t(std::floor(255 * std::pow(i / 255., g * .00001) + .5));
        else
            table[i] = std::uint8_t(i);
    }
}

unsigned gammaCorrect16(unsigned value, std::int32_t g) {
    if (value > 0 && value < 65535) return unsigned(std::floor(65535 * std::pow(int(value) / 65535., g * .00001) + .5));
    return value;
}

// 16-bit samples go straight to 8 bits through a table indexed by their
// top 16 - shift bits: each entry is the 8-bit output nearest to the input.
std::vector<std::uint8_t> makeGammaTable16to8(std::int32_t g, unsigned shift) {
    const unsigned size = 1u << (16u - shift);
    const unsigned max = size - 1u;
    std::vector<std::uint8_t> table(size, 255);
    unsigned last = 0;
    for (unsigned i = 0; i < 255; ++i) {
        const unsigned out = i * 257u;
        unsigned bound = gammaCorrect16(out + 128u, g);
        bound = (bound * max + 32768u) / 65535u + 1u;
        while (last < bound && last < size) table[last++] = std::uint8_t(i);
    }
    return table;
}

// The image data: chunks of it go to inflate in pieces, and rows come out.
class ImageData {
public:
    ImageData(ChunkReader& chunks, const Header& header, const Chunk& first)
        : chunks_(chunks), header_(header), current_(first), left_(first.length) {
        // Checked before inflate owns memory: a throw here runs no destructor.
        if (!current_.crcOk) invalid();
        std::memset(&z_, 0, sizeof z_);
        if (inflateInit2(&z_, 0) != Z_OK) invalid();
    }
    ~ImageData() { inflateEnd(&z_); }
    ImageData(const ImageData&) = delete;
    ImageData& operator=(const ImageData&) = delete;

    // Fills `out` with the next `count` bytes of the stream.
    void read(std::uint8_t* out, std::size_t count) {
        z_.next_out = out;
        std::size_t wanted = count;
        do {
            if (z_.avail_in == 0) refill();
            const uInt piece = wanted > UINT_MAX ? UINT_MAX : uInt(wanted);
            wanted -= piece;
            z_.avail_out = piece;
            const int ret = inflateStep();
            wanted += z_.avail_out;
            z_.avail_out = 0;
            if (ret == Z_STREAM_END) {
                ended_ = true;
                break;
            }
            if (ret != Z_OK) invalid();
        } while (wanted > 0);
        if (wanted > 0) invalid();
    }

    // After the last row: the stream should end here. Data beyond the image
    // and a damaged end are let pass, as long as the stream can go on.
    void finish() {
        if (ended_) return;
        std::uint8_t scratch[1024];
        std::size_t extra = 0;
        do {
            if (z_.avail_in == 0) refill();
            z_.next_out = scratch;
            z_.avail_out = sizeof scratch;
            const int ret = inflateStep();
            extra += sizeof scratch - z_.avail_out;
            z_.avail_out = 0;
            if (ret != Z_OK) break;
        } while (extra > 0);
        ended_ = true;
    }

private:
    void refill() {
        while (left_ == 0) {
            current_ = chunks_.next(header_);
            if (current_.name != IDAT || !current_.crcOk) invalid();
            left_ = current_.length;
            offset_ = 0;
        }
        const std::uint32_t piece = left_ < READ_PIECE ? left_ : READ_PIECE;
        z_.next_in = current_.data + offset_;
        z_.avail_in = piece;
        offset_ += piece;
        left_ -= piece;
    }

    int inflateStep() {
        // A window larger than the format allows is refused at the first byte.
        if (first_ && z_.avail_in > 0) {
            if ((*z_.next_in >> 4) > 7) return Z_DATA_ERROR;
            first_ = false;
        }
        return inflate(&z_, Z_NO_FLUSH);
    }

    ChunkReader& chunks_;
    const Header& header_;
    Chunk current_;
    std::uint32_t left_;
    std::uint32_t offset_ = 0;
    z_stream z_;
    bool first_ = true;
    bool ended_ = false;
};

void unfilter(int type, std::uint8_t* row, const std::uint8_t* prev, std::size_t length, std::size_t bpp) {
    switch (type) {
        case 0:
            break;
        case 1:
            for (std::size_t i = bpp; i < length; ++i) row[i] = std::uint8_t(row[i] + row[i - bpp]);
            break;
        case 2:
            for (std::size_t i = 0; i < length; ++i) row[i] = std::uint8_t(row[i] + prev[i]);
            break;
        case 3:
            for (std::size_t i = 0; i < length; ++i) {
                const unsigned a = i >= bpp ? row[i - bpp] : 0u;
                row[i] = std::uint8_t(row[i] + ((a + prev[i]) >> 1));
            }
            break;
        case 4:
            for (std::size_t i = 0; i < length; ++i) {
                const int a = i >= bpp ? row[i - bpp] : 0;
                const int b = prev[i];
                const int c = i >= bpp ? prev[i - bpp] : 0;
                const int p = a + b - c;
                const int pa = p > a ? p - a : a - p;
                const int pb = p > b ? p - b : b - p;
                const int pc = p > c ? p - c : c - p;
                const int predictor = (pa <= pb && pa <= pc) ? a : (pb <= pc ? b : c);
                row[i] = std::uint8_t(row[i] + predictor);
            }
            break;
        default:
            invalid();
    }
}

unsigned sampleAt(const std::uint8_t* row, std::size_t index, int depth) {
    switch (depth) {
        case 8:
            return row[index];
        case 16:
            return unsigned(row[index * 2]) << 8 | row[index * 2 + 1];
        default: {
            const std::size_t bit = index * std::size_t(depth);
            return (unsigned(row[bit >> 3]) >> (8u - unsigned(depth) - unsigned(bit & 7))) & ((1u << depth) - 1u);
        }
    }
}

struct RawImage {
    Header header;
    bool hasAlpha = false;
    std::vector<Pixel> pixels;  // A<<24|R<<16|G<<8|B, not premultiplied
};

RawImage readImage(const std::uint8_t* data, std::size_t size, double gamma) {
    static const std::uint8_t SIGNATURE[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    if (data == nullptr || size < 8 || std::memcmp(data, SIGNATURE, 8) != 0) invalid();

    ChunkReader chunks(data, size);
    Header h;
    bool haveHeader = false;
    bool havePalette = false;
    std::uint8_t palette[256][3] = {};
    int paletteSize = 0;
    bool trnsValid = false;
    int numTrans = 0;
    std::uint8_t transAlpha[256] = {};
    unsigned transColour[3] = {0, 0, 0};  // grey in [0]
    bool sigBitValid = false;
    unsigned sigBit = 0;  // the largest of the colour channels', or grey's
    ColourSpace space;

    // Everything before the image data.
    Chunk c;
    for (;;) {
        c = chunks.next(h);
        if (c.name == IDAT) {
            if (!haveHeader) invalid();
            if (h.colorType == 3 && !havePalette) invalid();
            break;
        }
        if (c.name == IHDR) {
            if (haveHeader) invalid();
            h = readHeader(c);
            haveHeader = true;
            continue;
        }
        if (c.name == IEND) invalid();
        if (c.name == PLTE) {
            if (!haveHeader || havePalette) invalid();
            havePalette = true;
            if ((h.colorType & 2) == 0) {
                // Grey images ignore a palette.
                if (!c.crcOk) invalid();
                continue;
            }
            if (c.length > 3 * 256 || c.length % 3 != 0) {
                if (!c.crcOk || h.colorType == 3) invalid();
                continue;
            }
            int count = int(c.length / 3);
            const int most = h.colorType == 3 ? 1 << h.depth : 256;
            if (count > most) count = most;
            if (!c.crcOk || count == 0) invalid();
            for (int i = 0; i < count; ++i)
                for (int k = 0; k < 3; ++k) palette[i][k] = c.data[i * 3 + k];
            paletteSize = count;
            // Transparency must come after the palette; before it, it is dropped.
            numTrans = 0;
            continue;
        }
        bool known = c.name == tRNS || c.name == gAMA || c.name == sRGB || c.name == sBIT || c.name == cHRM;
        for (std::uint32_t n : KNOWN_ANCILLARY) known = known || c.name == n;
        if (!known) {
            if (c.critical()) invalid();
            continue;
        }
        if (!haveHeader) invalid();
        if (!c.crcOk) continue;  // a broken ancillary chunk is dropped
        if (c.name == gAMA) {
            if (havePalette || c.length != 4) continue;
            const std::uint32_t g = be32(c.data);
            space.takeGammaChunk(g > MAX_31 ? -1 : std::int32_t(g));
        } else if (c.name == sRGB) {
            if (havePalette || c.length != 1) continue;
            space.takeSrgbChunk(c.data[0]);
        } else if (c.name == cHRM) {
            if (havePalette || c.length != 32) continue;
            space.takeChromaticities(c.data);
        } else if (c.name == tRNS) {
            if (trnsValid) continue;
            if (h.colorType == 0) {
                if (c.length != 2) continue;
                transColour[0] = be16(c.data);
                numTrans = 1;
            } else if (h.colorType == 2) {
                if (c.length != 6) continue;
                for (int k = 0; k < 3; ++k) transColour[k] = be16(c.data + 2 * k);
                numTrans = 1;
            } else if (h.colorType == 3) {
                if (!havePalette || c.length > std::uint32_t(paletteSize) || c.length == 0) continue;
                std::memcpy(transAlpha, c.data, c.length);
                numTrans = int(c.length);
            } else {
                continue;  // images with an alpha channel take none
            }
            trnsValid = true;
        } else if (c.name == sBIT) {
            if (havePalette || sigBitValid) continue;
            const std::uint32_t length = h.colorType == 3 ? 3u : std::uint32_t(h.channels);
            const unsigned sampleDepth = h.colorType == 3 ? 8u : unsigned(h.depth);
            if (c.length != length || c.length > 4) continue;
            bool fine = true;
            for (std::uint32_t i = 0; i < c.length; ++i) fine = fine && c.data[i] != 0 && c.data[i] <= sampleDepth;
            if (!fine) continue;
            if ((h.colorType & 2) != 0) {
                sigBit = c.data[0];
                if (c.data[1] > sigBit) sigBit = c.data[1];
                if (c.data[2] > sigBit) sigBit = c.data[2];
            } else {
                sigBit = c.data[0];
            }
            sigBitValid = true;
        }
    }

    if (std::uint64_t(h.width) * h.height > MAX_PIXELS) invalid();
    const bool hasAlpha = (h.colorType & 4) != 0 || trnsValid;
    // Transparency known but dropped leaves three bytes a pixel, which the
    // reader refuses.
    if (trnsValid && numTrans == 0) invalid();

    bool correct = false;
    std::uint8_t table8[256];
    std::vector<std::uint8_t> table16;
    unsigned shift16 = 0;
    if (gamma != 0) {
        std::int32_t screen = 0;
        std::int32_t file = 0;
        if (!fixedGamma(gamma, true, &screen)) invalid();
        if (!fixedGamma(space.usable() ? space.gamma * .00001 : 0.4545454545, false, &file)) invalid();
        correct = gammaSignificant(product2(file, screen));
        if (correct) {
            makeGammaTable8(reciprocal2(file, screen), table8);
            if (h.depth == 16) {
                shift16 = sigBitValid && sigBit > 0 && sigBit < 16 ? 16 - sigBit : 0;
                if (shift16 < 5) shift16 = 5;
                if (shift16 > 8) shift16 = 8;
                table16 = makeGammaTable16to8(product2(file, screen), shift16);
            }
            for (int i = 0; i < paletteSize; ++i)
                for (int k = 0; k < 3; ++k) palette[i][k] = table8[palette[i][k]];
        }
    }
    // One channel to 8 bits, with gamma.
    auto colour = [&](unsigned v) -> unsigned {
        if (h.depth == 16) return correct ? table16[v >> shift16] : v >> 8;
        return correct ? table8[v] : v;
    };
    auto expandGrey = [&](unsigned v) -> unsigned {
        switch (h.depth) {
            case 1: return v != 0 ? 0xFFu : 0u;
            case 2: return v * 0x55u;
            case 4: return v * 0x11u;
            default: return v;
        }
    };
    const unsigned sampleMask = h.depth == 16 ? 0xFFFFu : (1u << h.depth) - 1u;

    RawImage image;
    image.header = h;
    image.hasAlpha = hasAlpha;
    image.pixels.assign(std::size_t(h.width) * h.height, 0);

    ImageData stream(chunks, h, c);
    const int bitsPerPixel = h.channels * h.depth;
    const std::size_t bpp = std::size_t(bitsPerPixel + 7) / 8;
    static const int X0[7] = {0, 4, 0, 2, 0, 1, 0}, Y0[7] = {0, 0, 4, 0, 2, 0, 1};
    static const int DX[7] = {8, 8, 4, 4, 2, 2, 1}, DY[7] = {8, 8, 8, 4, 4, 2, 2};
    std::vector<std::uint8_t> row, prev;
    for (int pass = 0; pass < (h.interlace != 0 ? 7 : 1); ++pass) {
        const std::uint32_t x0 = h.interlace != 0 ? X0[pass] : 0, y0 = h.interlace != 0 ? Y0[pass] : 0;
        const std::uint32_t dx = h.interlace != 0 ? DX[pass] : 1, dy = h.interlace != 0 ? DY[pass] : 1;
        if (h.width <= x0 || h.height <= y0) continue;
        const std::uint32_t passWidth = (h.width - x0 + dx - 1) / dx;
        const std::uint32_t passHeight = (h.height - y0 + dy - 1) / dy;
        const std::size_t rowBytes = (std::size_t(passWidth) * std::size_t(bitsPerPixel) + 7) / 8;
        row.assign(rowBytes + 1, 0);
        prev.assign(rowBytes + 1, 0);
        for (std::uint32_t j = 0; j < passHeight; ++j) {
            stream.read(row.data(), rowBytes + 1);
            unfilter(row[0], row.data() + 1, prev.data() + 1, rowBytes, bpp);
            const std::uint8_t* s = row.data() + 1;
            Pixel* out = image.pixels.data() + std::size_t(y0 + j * dy) * h.width + x0;
            for (std::uint32_t i = 0; i < passWidth; ++i, out += dx) {
                unsigned r = 0, g = 0, b = 0, a = 255;
                const std::size_t at = std::size_t(i) * std::size_t(h.channels);
                switch (h.colorType) {
                    case 3: {
                        const unsigned index = sampleAt(s, at, h.depth);
                        // Indices past the palette read black.
                        if (int(index) < paletteSize) {
                            r = palette[index][0];
                            g = palette[index][1];
                            b = palette[index][2];
                        }
                        if (int(index) < numTrans) a = transAlpha[index];
                        break;
                    }
                    case 0: {
                        const unsigned v = sampleAt(s, at, h.depth);
                        if (numTrans > 0 && v == (transColour[0] & sampleMask)) a = 0;
                        r = g = b = colour(expandGrey(v));
                        break;
                    }
                    case 4:
                        r = g = b = colour(sampleAt(s, at, h.depth));
                        a = sampleAt(s, at + 1, h.depth);
                        if (h.depth == 16) a >>= 8;
                        break;
                    default: {
                        const unsigned vr = sampleAt(s, at, h.depth), vg = sampleAt(s, at + 1, h.depth),
                                       vb = sampleAt(s, at + 2, h.depth);
                        if (h.colorType == 6) {
                            a = sampleAt(s, at + 3, h.depth);
                            if (h.depth == 16) a >>= 8;
                        } else if (numTrans > 0 && vr == (transColour[0] & sampleMask) &&
                                   vg == (transColour[1] & sampleMask) && vb == (transColour[2] & sampleMask)) {
                            a = 0;
                        }
                        r = colour(vr);
                        g = colour(vg);
                        b = colour(vb);
                        break;
                    }
                }
                *out = Pixel(a) << 24 | Pixel(r) << 16 | Pixel(g) << 8 | Pixel(b);
            }
            row.swap(prev);
        }
    }
    stream.finish();

    // The rest of the file up to its end: only the chunks' integrity counts.
    for (;;) {
        const Chunk tail = chunks.next(h);
        if (tail.name == IHDR) invalid();
        if (!tail.crcOk && tail.critical()) invalid();
        if (tail.name == IEND) break;
    }
    return image;
}

RawImage readOrThrow(const std::uint8_t* data, std::size_t size, double gamma) {
    try {
        return readImage(data, size, gamma);
    } catch (const std::bad_alloc&) {
        invalid();
    }
}

}  // namespace

DecodedPng decodePngWithZlib(const std::uint8_t* data, std::size_t size, double gamma, bool premultiply) {
    RawImage raw = readOrThrow(data, size, gamma);
    DecodedPng out;
    out.width = int(raw.header.width);
    out.height = int(raw.header.height);
    out.opaque = !raw.hasAlpha;
    out.pixels = std::move(raw.pixels);
    // Premultiplication: blue and red together, then green; alpha stays.
    if (premultiply && raw.hasAlpha) {
        for (Pixel& p : out.pixels) {
            const std::uint32_t a = p >> 24;
            const std::uint32_t f = a != 0 ? a + 1 : 0;
            p = (a << 24) | ((((p & 0x00FF00FFu) * f) >> 8) & 0x00FF00FFu) | ((((p & 0x0000FF00u) * f) >> 8) & 0x0000FF00u);
        }
    }
    return out;
}

DecodedPng decodePngMaskWithZlib(const std::uint8_t* data, std::size_t size, double gamma) {
    RawImage raw = readOrThrow(data, size, gamma);
    DecodedPng out;
    out.width = int(raw.header.width);
    out.height = int(raw.header.height);
    out.opaque = !raw.hasAlpha;
    const bool greyOnly = raw.header.colorType == 0 && !raw.hasAlpha;
    out.values.resize(raw.pixels.size());
    for (std::size_t i = 0; i < raw.pixels.size(); ++i)
        out.values[i] = Coverage(greyOnly ? raw.pixels[i] & 0xFFu : raw.pixels[i] >> 24);
    return out;
}

}  // namespace OrlPixels

#endif
