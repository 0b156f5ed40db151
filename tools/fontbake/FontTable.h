// The panel's text faces: which face file of which Debian font package
// each baked font comes from, at what pixel size and style.
//
// The "futura" family is a geometric sans (League Spartan, SIL Open Font
// Licence, package fonts-league-spartan): plain names are its Regular, "_lt"
// its Light, "b_lt" its SemiBold (the bold of the light line), "i" an
// oblique drawn from the Regular, since the face has no italic of its own.
// "segoe14b" is a humanist sans bold (Open Sans Bold, Apache licence,
// package fonts-open-sans).
#pragma once

namespace fontbake {

struct BakedFont {
    const char* name;
    const char* faceFile;
    int pixelSize;
    bool oblique;
};

inline constexpr BakedFont PANEL_FONTS[] = {
    {"futura14", "/usr/share/fonts/opentype/league-spartan/LeagueSpartan-Regular.otf", 14, false},
    {"futura14_lt", "/usr/share/fonts/opentype/league-spartan/LeagueSpartan-Light.otf", 14, false},
    {"futura16", "/usr/share/fonts/opentype/league-spartan/LeagueSpartan-Regular.otf", 16, false},
    {"futura16b_lt", "/usr/share/fonts/opentype/league-spartan/LeagueSpartan-SemiBold.otf", 16, false},
    {"futura18", "/usr/share/fonts/opentype/league-spartan/LeagueSpartan-Regular.otf", 18, false},
    {"futura18i", "/usr/share/fonts/opentype/league-spartan/LeagueSpartan-Regular.otf", 18, true},
    {"segoe14b", "/usr/share/fonts/truetype/open-sans/OpenSans-Bold.ttf", 14, false},
};

}  // namespace fontbake
