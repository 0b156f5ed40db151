#include "cli/PlantJson.h"

#include <cmath>
#include <cstdio>

#include "cli/RecordJson.h"
#include "views/PlantMainPanel.h"

namespace cli {

std::string jsonDouble(double value) {
    if (!std::isfinite(value)) return "null";
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

std::string plantJson(const views::PlantGeometry& plant, const std::string& indent) {
    std::string out = "{\n" + indent + "  \"lines\": [";
    bool first = true;
    for (const views::PlantLine& line : plant.lines()) {
        out += first ? "\n" : ",\n";
        first = false;
        out += indent + "    { \"branch\": " + std::to_string(line.branch) +
               ", \"generation\": " + std::to_string(line.generation) + ", \"color\": [" +
               std::to_string(line.red) + ", " + std::to_string(line.green) + ", " + std::to_string(line.blue) +
               "], \"alpha\": " + jsonFloat(line.alpha) + ", \"points\": [";
        bool firstPoint = true;
        for (const views::PlantPoint& p : plant.points(line)) {
            out += firstPoint ? "[" : ", [";
            firstPoint = false;
            out += jsonDouble(p.x) + ", " + jsonDouble(p.y) + "]";
        }
        out += "], \"pieces\": [";
        bool firstPiece = true;
        for (const views::PlantPiece& piece : plant.pieces(line)) {
            out += firstPiece ? "[" : ", [";
            firstPiece = false;
            out += std::to_string(piece.first) + ", " + std::to_string(piece.last) + ", " +
                   std::to_string(piece.byte) + "]";
        }
        out += "] }";
    }
    out += first ? "]\n" : "\n" + indent + "  ]\n";
    out += indent + "}";
    return out;
}

std::string inspectJsonWithPlant(const NorvelleProgram& record, float sampleRate) {
    std::string out = inspectJson(record, sampleRate);
    // The inspection ends with the object's closing brace and a line end;
    // the plant member goes in before it.
    const std::size_t close = out.rfind('}');
    views::PlantGeometry plant;
    views::growMainPanelPlantAtRest(record, plant);
    out.replace(close - 1, std::string::npos, ",\n  \"plant\": " + plantJson(plant, "  ") + "\n}\n");
    return out;
}

}  // namespace cli
