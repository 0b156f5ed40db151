#include "cli/RecordJson.h"

#include <cmath>
#include <cstdio>

#include "engine/BranchDecoder.h"
#include "platform/Utf16.h"

namespace cli {

std::string jsonFloat(float value) {
    if (!std::isfinite(value)) return "null";
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
    return text;
}

std::string jsonString(std::string_view utf8) {
    std::string out = "\"";
    for (const char c : utf8) {
        const unsigned char u = static_cast<unsigned char>(c);
        switch (c) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            default:
                if (u < 0x20) {
                    char escape[8];
                    std::snprintf(escape, sizeof escape, "\\u%04x", u);
                    out += escape;
                } else {
                    out += c;
                }
        }
    }
    return out + "\"";
}

namespace {

const char* boolText(bool b) { return b ? "true" : "false"; }

// { "name": value, ... } on one line, from a name table and a value reader.
template <typename Name, typename Value>
std::string namedFloats(int count, Name name, Value value) {
    std::string out = "{";
    for (int i = 0; i < count; ++i) {
        out += i ? ", " : " ";
        out += jsonString(name(i)) + ": " + jsonFloat(value(i));
    }
    return out + " }";
}

std::string floatArray(const float* values, int count) {
    std::string out = "[";
    for (int i = 0; i < count; ++i) out += (i ? ", " : "") + jsonFloat(values[i]);
    return out + "]";
}

}  // namespace

std::string recordJsonMembers(const NorvelleProgram& record, const std::string& indent) {
    std::string out;
    out += indent + "\"name\": " + jsonString(platform::utf16ToUtf8Lossy(record.getName())) + ",\n";
    out += indent + "\"implementation\": " + std::to_string(record.implementation) + ",\n";
    out += indent + "\"seed\": " + std::to_string(record.seed) + ",\n";
    out += indent + "\"cloned\": " + boolText(record.cloned) + ",\n";
    out += indent + "\"pitch\": " + jsonFloat(record.pitch) + ",\n";
    out += indent + "\"modified\": " + boolText(record.modified) + ",\n";
    out += indent + "\"params\": " +
           namedFloats(PARAM_COUNT, [](int i) { return PARAMETER_TABLE[i].name; },
                       [&record](int i) { return record.param(i); }) +
           ",\n";
    out += indent + "\"genes\": " +
           namedFloats(GENE_COUNT, [](int i) { return GENE_TABLE[i].name; },
                       [&record](int i) { return record.genes[i]; }) +
           ",\n";
    out += indent + "\"branchDeviations\": [\n";
    for (int k = 0; k < BRANCH_COUNT; ++k)
        out += indent + "  " + floatArray(record.branchDeviations[k], MUTABLE_GENE_COUNT) +
               (k + 1 < BRANCH_COUNT ? ",\n" : "\n");
    out += indent + "]";
    return out;
}

std::string inspectJson(const NorvelleProgram& record, float sampleRate) {
    const float atonality = record.param(Param::Atonality);
    const float effect = 2.0f * record.param(Param::Effect) - 1.0f;
    std::string out = "{\n" + recordJsonMembers(record, "  ") + ",\n  \"branches\": [\n";
    for (int k = 0; k < BRANCH_COUNT; ++k) {
        const float length = effectiveLength(record, k);
        engine::BranchDecoder decoder(k);
        decoder.update(record, length, atonality, effect, sampleRate);
        const engine::BranchParams& params = decoder.params();
        out += "    {\n";
        out += "      \"length\": " + jsonFloat(length) + ",\n";
        out += "      \"genes\": " +
               namedFloats(MUTABLE_GENE_COUNT, [](int i) { return GENE_TABLE[i].name; },
                           [&decoder](int i) { return decoder.genes()[i]; }) +
               ",\n";
        out += "      \"params\": " +
               namedFloats(static_cast<int>(engine::kBranchParamsFieldCount),
                           [](int i) { return std::string_view(engine::kBranchParamsFields[i].name); },
                           [&params](int i) { return params.*engine::kBranchParamsFields[i].member; }) +
               "\n";
        out += k + 1 < BRANCH_COUNT ? "    },\n" : "    }\n";
    }
    out += "  ]\n}\n";
    return out;
}

}  // namespace cli
