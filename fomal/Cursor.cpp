#include "fomal/Cursor.h"

#include <string>

#include "platform/Exceptions.h"

namespace Fomal {

namespace {

struct Named {
    std::string_view name;
    Cursor cursor;
};

constexpr Named NAMES[] = {
    {"arrow", Cursor::arrow},     {"iBeam", Cursor::iBeam},         {"wait", Cursor::wait},
    {"cross", Cursor::cross},     {"upArrow", Cursor::upArrow},     {"sizeAll", Cursor::sizeAll},
    {"sizeNWSE", Cursor::sizeNWSE}, {"sizeNESW", Cursor::sizeNESW}, {"sizeWE", Cursor::sizeWE},
    {"sizeNS", Cursor::sizeNS},   {"no", Cursor::no},               {"hand", Cursor::hand},
    {"appStarting", Cursor::appStarting}, {"help", Cursor::help},
};

}  // namespace

Cursor parseCursor(std::string_view name) {
    for (const Named& n : NAMES)
        if (n.name == name) return n.cursor;
    throw FormatException("Unknown cursor: " + std::string(name));
}

}  // namespace Fomal
