#include "fomal/EditorConstants.h"

#include "fomal/HostNatives.h"
#include "notation/Notation.h"
#include "notation/NotationReaders.h"

namespace Fomal {

namespace {

// A per-platform constant: the "windows" entry of an object, else the value.
std::string platformValue(const notation::Object& constants, std::string_view key, const std::string& fallback) {
    const std::string* raw = constants.find(key);
    if (raw == nullptr) return fallback;
    if (!raw->empty() && raw->front() == '{') {
        const notation::Object perPlatform = notation::parseObject(*raw);
        const std::string* mine = perPlatform.find("windows");
        return mine == nullptr ? fallback : notation::readString(*mine);
    }
    return notation::readString(*raw);
}

}  // namespace

EditorConstants readEditorConstants() {
    const notation::Object constants = notation::parseObject(scriptResource("globals.txt"));
    EditorConstants c;
    if (const std::string* raw = constants.find("hintWindow")) c.hintWindow = readHintWindowStyle(*raw);
    c.undoHistory = notation::readInt(constants.get("undoHistory"), c.undoHistory);
    c.mouseClickVelocity = notation::readInt(constants.get("mouseClickVelocity"), c.mouseClickVelocity);
    c.defaultProgramsPath = platformValue(constants, "defaultProgramsPaths", c.defaultProgramsPath);
    c.documentationPath = platformValue(constants, "documentationPaths", c.documentationPath);
    return c;
}

}  // namespace Fomal
