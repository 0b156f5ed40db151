#include "pixels/AngelCode.h"

#include <cstdio>
#include <vector>

namespace OrlAngelCode {

namespace {

struct Pair {
    std::string_view key;
    std::string_view value;  // without quotes
};

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

// Splits one line into its tag and key=value pairs.
std::string_view splitLine(std::string_view line, std::vector<Pair>& pairs) {
    pairs.clear();
    std::size_t i = 0;
    while (i < line.size() && isBlank(line[i])) ++i;
    const std::size_t tagStart = i;
    while (i < line.size() && !isBlank(line[i])) ++i;
    const std::string_view tag = line.substr(tagStart, i - tagStart);
    while (i < line.size()) {
        while (i < line.size() && isBlank(line[i])) ++i;
        const std::size_t keyStart = i;
        while (i < line.size() && !isBlank(line[i]) && line[i] != '=') ++i;
        const std::string_view key = line.substr(keyStart, i - keyStart);
        std::string_view value;
        if (i < line.size() && line[i] == '=') {
            ++i;
            if (i < line.size() && line[i] == '"') {
                const std::size_t start = ++i;
                while (i < line.size() && line[i] != '"') ++i;
                value = line.substr(start, i - start);
                if (i < line.size()) ++i;
            } else {
                const std::size_t start = i;
                while (i < line.size() && !isBlank(line[i])) ++i;
                value = line.substr(start, i - start);
            }
        }
        if (!key.empty()) pairs.push_back({key, value});
    }
    return tag;
}

const Pair* findKey(const std::vector<Pair>& pairs, std::string_view key) {
    // A key given twice counts by its last occurrence.
    for (auto it = pairs.rbegin(); it != pairs.rend(); ++it)
        if (it->key == key) return &*it;
    return nullptr;
}

// A decimal integer with an optional sign, the whole text, within int range.
bool toInt(std::string_view text, int& out) {
    std::size_t i = 0;
    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
    if (i == text.size()) return false;
    long long v = 0;
    for (; i < text.size(); ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
        v = v * 10 + (text[i] - '0');
        if (v > 0x7FFFFFFFLL) return false;
    }
    out = int(negative ? -v : v);
    return true;
}

[[noreturn]] void missing(std::string_view key) {
    throw Exception("Missing '" + std::string(key) + "' value in AngelCode Font File");
}

int required(const std::vector<Pair>& pairs, const char* key) {
    const Pair* p = findKey(pairs, key);
    int v = 0;
    if (p == nullptr || !toInt(p->value, v)) missing(key);
    return v;
}

void optionalInt(const std::vector<Pair>& pairs, const char* key, int& out) {
    const Pair* p = findKey(pairs, key);
    if (p == nullptr) return;
    if (!toInt(p->value, out)) missing(key);
}

void optionalBool(const std::vector<Pair>& pairs, const char* key, bool& out) {
    int v = out ? 1 : 0;
    optionalInt(pairs, key, v);
    out = v != 0;
}

// "%d,%d,..." with exactly `count` numbers.
void optionalList(const std::vector<Pair>& pairs, const char* key, int* out, int count) {
    const Pair* p = findKey(pairs, key);
    if (p == nullptr) return;
    std::string_view rest = p->value;
    int values[4] = {0, 0, 0, 0};
    for (int k = 0; k < count; ++k) {
        const std::size_t comma = k + 1 < count ? rest.find(',') : std::string_view::npos;
        if (k + 1 < count && comma == std::string_view::npos) missing(key);
        if (!toInt(rest.substr(0, comma), values[k])) missing(key);
        if (comma != std::string_view::npos) rest.remove_prefix(comma + 1);
    }
    for (int k = 0; k < count; ++k) out[k] = values[k];
}

void readInfo(const std::vector<Pair>& pairs, Info& info) {
    if (const Pair* p = findKey(pairs, "face")) info.face = std::string(p->value);
    optionalInt(pairs, "size", info.size);
    optionalBool(pairs, "bold", info.bold);
    optionalBool(pairs, "italic", info.italic);
    if (const Pair* p = findKey(pairs, "charset")) info.charset = std::string(p->value);
    optionalBool(pairs, "unicode", info.unicode);
    optionalInt(pairs, "stretchH", info.stretchH);
    optionalBool(pairs, "smooth", info.smooth);
    optionalInt(pairs, "aa", info.aa);
    optionalList(pairs, "padding", info.padding, 4);
    optionalList(pairs, "spacing", info.spacing, 2);
}

}  // namespace

Description parse(std::string_view text) {
    Description d;
    bool haveCommon = false;
    std::vector<Pair> pairs;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        const std::string_view tag = splitLine(text.substr(start, end - start), pairs);
        start = end + 1;
        if (tag == "info") {
            readInfo(pairs, d.info);
        } else if (tag == "common") {
            d.common.lineHeight = required(pairs, "lineHeight");
            d.common.base = required(pairs, "base");
            d.common.scaleW = required(pairs, "scaleW");
            d.common.scaleH = required(pairs, "scaleH");
            optionalBool(pairs, "packed", d.common.packed);
            haveCommon = true;
        } else if (tag == "page") {
            if (!haveCommon) throw Exception("Missing common tag in AngelCode Font File");
            const int id = required(pairs, "id");
            const Pair* file = findKey(pairs, "file");
            if (file == nullptr) missing("file");
            if (!d.pages.emplace(id, std::string(file->value)).second)
                throw Exception("Duplicate page id found in AngelCode Font File");
        } else if (tag == "char") {
            if (!haveCommon) throw Exception("Missing common tag in AngelCode Font File");
            const int id = required(pairs, "id");
            Char c;
            c.x = required(pairs, "x");
            c.y = required(pairs, "y");
            c.width = required(pairs, "width");
            c.height = required(pairs, "height");
            c.xoffset = required(pairs, "xoffset");
            c.yoffset = required(pairs, "yoffset");
            c.xadvance = required(pairs, "xadvance");
            optionalInt(pairs, "page", c.page);
            optionalInt(pairs, "chnl", c.channel);
            if (!d.chars.emplace(id, c).second)
                throw Exception("Duplicate character id found in AngelCode Font File");
        } else if (tag == "kerning") {
            const int first = required(pairs, "first");
            const int second = required(pairs, "second");
            const int amount = required(pairs, "amount");
            if (!d.kernings.emplace(std::make_pair(first, second), amount).second)
                throw Exception("Duplicate kerning pair found in AngelCode Font File");
        }
    }
    return d;
}

std::string write(const Description& d) {
    std::string out;
    char line[512];
    const Info& i = d.info;
    std::snprintf(line, sizeof line,
                  "info face=\"%s\" size=%d bold=%d italic=%d charset=\"%s\" unicode=%d stretchH=%d smooth=%d "
                  "aa=%d padding=%d,%d,%d,%d spacing=%d,%d\n",
                  i.face.c_str(), i.size, i.bold ? 1 : 0, i.italic ? 1 : 0, i.charset.c_str(), i.unicode ? 1 : 0,
                  i.stretchH, i.smooth ? 1 : 0, i.aa, i.padding[0], i.padding[1], i.padding[2], i.padding[3],
                  i.spacing[0], i.spacing[1]);
    out += line;
    std::snprintf(line, sizeof line, "common lineHeight=%d base=%d scaleW=%d scaleH=%d pages=%d packed=%d\n",
                  d.common.lineHeight, d.common.base, d.common.scaleW, d.common.scaleH, int(d.pages.size()),
                  d.common.packed ? 1 : 0);
    out += line;
    for (const auto& [id, file] : d.pages) {
        std::snprintf(line, sizeof line, "page id=%d file=\"%s\"\n", id, file.c_str());
        out += line;
    }
    std::snprintf(line, sizeof line, "chars count=%d\n", int(d.chars.size()));
    out += line;
    for (const auto& [id, c] : d.chars) {
        std::snprintf(line, sizeof line,
                      "char id=%d x=%d y=%d width=%d height=%d xoffset=%d yoffset=%d xadvance=%d page=%d chnl=%d\n",
                      id, c.x, c.y, c.width, c.height, c.xoffset, c.yoffset, c.xadvance, c.page, c.channel);
        out += line;
    }
    if (!d.kernings.empty()) {
        std::snprintf(line, sizeof line, "kernings count=%d\n", int(d.kernings.size()));
        out += line;
        for (const auto& [pair, amount] : d.kernings) {
            std::snprintf(line, sizeof line, "kerning first=%d second=%d amount=%d\n", pair.first, pair.second,
                          amount);
            out += line;
        }
    }
    return out;
}

}  // namespace OrlAngelCode
