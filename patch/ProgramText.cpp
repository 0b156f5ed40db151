#include "patch/ProgramText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "notation/Notation.h"
#include "platform/Exceptions.h"
#include "patch/ProgramTextEscape.h"
#include "notation/LeadingNumbers.h"

namespace {

// "%.*f" without regard to the C locale.
std::string fixed(double value, int precision) {
    char buffer[400];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, precision);
    return std::string(buffer, result.ptr);
}

std::string signedFixed(double value, int precision) {
    std::string text = fixed(value, precision);
    if (text.empty() || text.front() != '-') text.insert(text.begin(), '+');
    return text;
}

// Magnitudes under 0.00001 print as 0.
double snap(double x) { return std::fabs(x) < 0.00001 ? 0.0 : x; }

// Limits to 0 to 1; a value that can't be compared counts as the lower limit.
float limitUnit(double x) {
    if (!(x >= 0.0)) return 0.0f;
    if (x > 1.0) return 1.0f;
    return static_cast<float>(x);
}

bool isUnitSpace(char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\r' || c == '\n' || c == 0x1A; }

bool nextTwoAre(std::string_view text, std::size_t pos, char a, char b) {
    while (pos < text.size() && isUnitSpace(text[pos])) ++pos;
    if (text.size() - pos < 2) return false;
    auto lower = [](char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; };
    return lower(text[pos]) == a && lower(text[pos + 1]) == b;
}

// The value text of a raw notation value: quoted texts unescaped.
std::string valueText(std::string_view raw) {
    std::u16string wide = unescapeWide(raw);
    std::string out;
    out.reserve(wide.size());
    for (char16_t c : wide) out += c <= 0xFF ? static_cast<char>(c) : '?';
    return out;
}

bool readBoolean(const notation::Object& object, std::string_view key, bool fallback) {
    const std::string* raw = object.find(key);
    if (!raw) return fallback;
    std::string text = valueText(*raw);
    if (text == "true") return true;
    if (text == "false") return false;
    return fallback;
}

bool isPercentParam(int p) {
    return p == Param::ModWheel || p == Param::Atonality || p == Param::WheelScale || p == Param::VelSens ||
           p >= Param::Branch1;
}

}  // namespace

std::string parameterValueText(int param, float value) {
    const double v = value;
    if (isPercentParam(param)) return fixed(snap(100.0 * v), 8) + " %";
    switch (param) {
    case Param::Rotation:
        return fixed(snap(360.0 * v), 8) + " degrees";
    case Param::Tuning: {
        const double t = (2.0 * v - 1.0) * 12.0;
        if (std::fabs(t) < 1.0) return signedFixed(snap(100.0 * t), 8) + " ct ";
        return signedFixed(snap(t), 8) + " sm ";
    }
    case Param::Effect:
        return fixed(snap(200.0 * v - 100.0), 8) + " %";
    case Param::Release: {
        const double s = 0.05 * std::pow(400.0, v);
        if (s < 1.0) return fixed(snap(1000.0 * s), 8) + " ms ";
        return fixed(snap(s), 8) + " s ";
    }
    case Param::Volume:
        if (v < 0.00001) return "-inf dB";
        return fixed(snap(20.0 * std::log2(2.0 * v)), 8) + " dB";
    default:
        return fixed(snap(v), 8);
    }
}

float readParameterValue(int param, std::string_view text) {
    const LeadingNumber number = leadingDouble(text);
    const double x = number.value;
    if (isPercentParam(param)) return limitUnit(x / 100.0);
    switch (param) {
    case Param::Rotation:
        return limitUnit(x / 360.0);
    case Param::Effect:
        return limitUnit(x / 200.0 + 0.5);
    case Param::Tuning: {
        double semitones = nextTwoAre(text, number.length, 'c', 't') ? x / 100.0 : x;
        return limitUnit((semitones / 12.0 + 1.0) * 0.5);
    }
    case Param::Release: {
        double seconds = nextTwoAre(text, number.length, 'm', 's') ? x / 1000.0 : x;
        return limitUnit(std::log(seconds / 0.05) / std::log(400.0));
    }
    case Param::Volume: {
        if (text.size() >= 4) {
            std::string head(text.substr(0, 4));
            for (char& c : head) c = (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
            if (head == "-inf") return 0.0f;
        }
        const double g = std::exp(x * 0.1151292547);
        return limitUnit(0.5 * std::pow(g, 0.3010299956639812));
    }
    default:
        return limitUnit(x);
    }
}

std::string writeProgramText(const NorvelleProgram& record, bool forFile) {
    std::string t;
    t.reserve(2048);
    t += "TendranePatch: {\n";
    t += "\tVersion: " + std::to_string(PROGRAM_TEXT_VERSION) + "\n";
    t += "\tImplementation: " + std::to_string(record.implementation) + "\n";
    t += "\tName: " + escapeWide(record.getName()) + "\n";
    if (!forFile && !record.path.empty()) {
        t += "\tPath: " + escapeWide(record.path) + "\n";
        t += std::string("\tModified: ") + (record.modified ? "true" : "false") + "\n";
    }
    for (int p = 0; p < PARAM_COUNT; ++p) {
        t += '\t';
        t += PARAMETER_TABLE[p].name;
        t += ": ";
        t += parameterValueText(p, record.param(p));
        t += '\n';
    }
    char seed[16];
    std::snprintf(seed, sizeof seed, "0x%08x", static_cast<unsigned>(record.seed));
    t += std::string("\tSeed: ") + seed + "\n";
    t += "\tPitch: " + fixed(record.pitch, 8) + "\n";
    t += std::string("\tCloned: ") + (record.cloned ? "true" : "false") + "\n";
    t += "\tGenome: {\n";
    for (int g = 0; g < GENE_COUNT; ++g) {
        t += "\t\t";
        t += GENE_TABLE[g].name;
        t += ": ";
        t += fixed(record.genes[g], 8);
        if (g + 1 < GENE_COUNT) t += ',';
        t += '\n';
    }
    t += "\t}\n";
    t += "}\n";
    return t;
}

NorvelleProgram readProgramText(std::string_view text) {
    const notation::Object top = notation::parseObject(text);
    const notation::Object patch = notation::parseObject(top.get("TendranePatch"));

    auto integer = [&](std::string_view key) -> std::optional<int32_t> {
        const std::string* raw = patch.find(key);
        if (!raw) return std::nullopt;
        return leadingLong(valueText(*raw));
    };

    const int32_t version = integer("Version").value_or(0);
    if (version != PROGRAM_TEXT_VERSION) throw FormatException();
    const int32_t implementation = integer("Implementation").value_or(1);
    if (implementation < 0 || implementation > CURRENT_IMPLEMENTATION) throw FormatException();

    NorvelleProgram record;
    record.implementation = implementation;

    const std::string* name = patch.find("Name");
    record.setName(name ? unescapeWide(*name) : std::u16string());

    for (int p = 0; p < PARAM_COUNT; ++p) {
        const std::string* raw = patch.find(PARAMETER_TABLE[p].name);
        if (raw) record.setParam(p, readParameterValue(p, valueText(*raw)));
    }

    if (const std::string* path = patch.find("Path")) record.path = unescapeWide(*path);
    record.modified = readBoolean(patch, "Modified", false);

    record.seed = 1;
    if (const std::string* raw = patch.find("Seed")) record.seed = leadingUnsignedLong(valueText(*raw)).value_or(1);
    record.pitch = 0.0f;
    if (const std::string* raw = patch.find("Pitch")) {
        LeadingNumber n = leadingDouble(valueText(*raw));
        // A value that is no finite number counts as unreadable; one beyond
        // the float range is held at its end.
        if (n.length > 0 && std::isfinite(n.value))
            record.pitch = static_cast<float>(std::clamp(n.value, -3.4028234663852886e38, 3.4028234663852886e38));
    }
    record.cloned = readBoolean(patch, "Cloned", false);

    const notation::Object genome = notation::parseObject(patch.get("Genome"));
    for (int g = 0; g < GENE_COUNT; ++g) {
        double value = 0.5;
        if (const std::string* raw = genome.find(GENE_TABLE[g].name)) {
            LeadingNumber n = leadingDouble(valueText(*raw));
            if (n.length > 0) value = n.value;
        }
        record.genes[g] = limitUnit(value);
    }

    record.computeBranchDeviations();
    return record;
}

bool isProgramText(std::string_view text) { return notation::parseObject(text).has("TendranePatch"); }

std::string withCrLf(std::string_view text) {
    std::string out;
    out.reserve(text.size() + text.size() / 16);
    for (char c : text) {
        if (c == '\n') out += '\r';
        out += c;
    }
    return out;
}
