#include "views/DnaSettings.h"

#include <string>

#include "fomal/LayoutValues.h"
#include "fomal/View.h"

namespace views {

namespace {

// The panel's DNA view. autoScroll is the height of the molecule with its
// margins less the view's height: 40 above the first rung and below the
// last, 37 rungs of 16, a view 420 tall.
constexpr const char* PANEL_KEYS = R"({
    gamma: 0.707,
    helixOffset: { 160, 40 }, helixWidth: 92.0, helixHeight: 16.0, helixTwist: 0.9, helixTurn: 20.0,
    helixPhase: 1.0, railsExtra: 2, moleculeMinSize: 5.0, moleculeMaxSize: 5.5,
    railsPen: { color: 0xFF404040, stroke: 4.0 },
    tiersPen: { color: 0xFF808080, stroke: 1.5, dash: 20.0, gap: 4.0 },
    moleculesFill1: 0x80008000, moleculesFill2: 0x80806000,
    moleculesPen: { color: 0xFF404040, stroke: 1.0 },
    focusFill: 0xF0F0F0F0, focusPen: { color: 0xFF404040, stroke: 2.0 },
    labelsOffset: { 65, 15 }, labelsAlign: "center",
    labelsFont: { fnt: "futura14_lt", color: 0xFF000000, gamma: 1.8 },
    dividersPen: { color: 0xFF808080, stroke: 1.5, dash: 2.0, gap: 2.0 },
    dividersOffset: { 20, 20 }, dividersWidth: 95,
    focusFont: { fnt: "futura16b_lt", color: 0xFF000000, gamma: 1.8 },
    boxFill: 0xF0F0F0F0, boxPen: { color: 0xF0000000 }, boxExpand: { 2, 0 },
    arrowPen: { color: 0xFF808080, stroke: 1.5, caps: "round", joints: "miter" },
    arrowMargin: 15, arrowDimensions: { 6.0, 8.0 },
    updateFreq: 30,
    autoScroll: 40*2 + 37*16 - 420,
    scrollStart: -$*3, rotationStart: $*1.5,
    scrollTime: 0.75, rotationTime: 1.5,
    fineRatio: 10
})";

// The raw text of a key: the layout's, else the panel's.
class Keys {
public:
    explicit Keys(const Fomal::Object& given) : given_(given), panel_(Fomal::parseObject(PANEL_KEYS)) {}

    const std::string& raw(std::string_view key) const {
        if (const std::string* r = given_.find(key)) return *r;
        return *panel_.find(key);
    }
    // A number; `$` is `dollar`.
    double number(std::string_view key, double dollar) const {
        return Fomal::tamed(Fomal::readNumber(raw(key), float(dollar)));
    }
    // A number whose `$` is its own panel value.
    double number(std::string_view key) const { return number(key, Fomal::readNumber(*panel_.find(key), 0.0f)); }
    Fomal::PointF point(std::string_view key) const {
        return Fomal::tamed(Fomal::readPoint(raw(key), Fomal::readPoint(*panel_.find(key))));
    }
    OrlPixels::Pen pen(std::string_view key) const { return Fomal::readPen(raw(key), 1.0); }
    OrlPixels::Pixel color(std::string_view key) const { return Fomal::readColor(raw(key)); }
    OrlPixels::FontSpecification font(std::string_view key) const { return Fomal::readFont(raw(key)); }

private:
    const Fomal::Object& given_;
    Fomal::Object panel_;
};

}  // namespace

const char* dnaPanelKeys() { return PANEL_KEYS; }

DnaSettings readDnaSettings(const Fomal::Object& keys) {
    const Keys k(keys);
    DnaSettings s;
    s.gamma = k.number("gamma");
    s.helixOffset = k.point("helixOffset");
    s.helixWidth = k.number("helixWidth");
    s.helixHeight = k.number("helixHeight");
    s.helixTwist = k.number("helixTwist");
    s.helixTurn = k.number("helixTurn");
    s.helixPhase = k.number("helixPhase");
    s.railsExtra = Fomal::readInt(k.raw("railsExtra"), 2);
    s.moleculeMinSize = k.number("moleculeMinSize");
    s.moleculeMaxSize = k.number("moleculeMaxSize");
    s.railsPen = k.pen("railsPen");
    s.tiersPen = k.pen("tiersPen");
    s.moleculesFill1 = k.color("moleculesFill1");
    s.moleculesFill2 = k.color("moleculesFill2");
    s.moleculesPen = k.pen("moleculesPen");
    s.focusFill = k.color("focusFill");
    s.focusPen = k.pen("focusPen");
    s.labelsOffset = k.point("labelsOffset");
    s.labelsAlign = OrlPixels::parseTextAlign(Fomal::readString(k.raw("labelsAlign")));
    s.labelsFont = k.font("labelsFont");
    s.dividersPen = k.pen("dividersPen");
    s.dividersOffset = k.point("dividersOffset");
    s.dividersWidth = k.number("dividersWidth");
    s.focusFont = k.font("focusFont");
    s.boxFill = k.color("boxFill");
    s.boxPen = k.pen("boxPen");
    s.boxExpand = k.point("boxExpand");
    s.arrowPen = k.pen("arrowPen");
    s.arrowMargin = k.number("arrowMargin");
    s.arrowDimensions = k.point("arrowDimensions");
    s.updateFreq = k.number("updateFreq");
    s.autoScroll = k.number("autoScroll");
    s.scrollStart = k.number("scrollStart", s.autoScroll);
    s.rotationStart = k.number("rotationStart", s.helixPhase);
    s.scrollTime = k.number("scrollTime");
    s.rotationTime = k.number("rotationTime");
    s.fineRatio = k.number("fineRatio");
    return s;
}

}  // namespace views
