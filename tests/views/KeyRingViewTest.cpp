#include "views/KeyRingView.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "fomal/EditorCore.h"
#include "tests/fomal/ViewTestSupport.h"
#include "tests/views/ScriptTestHost.h"
#include "views/LivingViews.h"

namespace {

// The main panel's ring: centre (192, 263).
constexpr int CX = 192, CY = 263;
// The panel where nothing is drawn.
constexpr std::uint32_t BLACK = 0xFF000000u;

std::string layout(std::string_view keys = "") {
    return std::string("views: { { type: \"keyRing\", label: \"ring\", bounds: { 42, 113, 300, 300 },"
                       " film: { name: \"KeyRingFilm\", format: \"rle\" }, hint: \"Play Notes\","
                       " innerRadius: 117, outerRadius: 142") +
           std::string(keys) + " } }";
}

// A patch behind the panel whose sound the test decides.
struct SoundingHost : viewtest::ScriptTestHost {
    VisualState sound;
    bool visualState(VisualState& state) const override {
        state = sound;
        return true;
    }
};

struct Ring {
    SoundingHost host;
    Fomal::VirtualClock clock;
    Fomal::EditorCore core{host, clock};

    explicit Ring(std::string_view keys = "") {
        views::registerLivingViews();
        core.openLayoutText(layout(keys));
    }
    views::KeyRingView& view() { return static_cast<views::KeyRingView&>(*core.root()->findView("ring")); }
    std::vector<std::uint32_t> shot() {
        core.paint();
        return {core.pixels().begin(), core.pixels().end()};
    }
    void wait(std::int64_t ms) {
        for (std::int64_t i = 0; i < ms; ++i) {
            clock.advance(1);
            core.idle();
        }
    }
};

// The pixel at `distance` from the centre in the direction of `degrees`
// (clockwise from the right, y growing downwards).
int px(double degrees, double distance) {
    return int(std::floor(CX + distance * std::cos(degrees * 3.14159265358979323846 / 180.0)));
}
int py(double degrees, double distance) {
    return int(std::floor(CY + distance * std::sin(degrees * 3.14159265358979323846 / 180.0)));
}

}  // namespace

TEST(KeyRingViewTest, KeysLieAroundTheRingFromTheBottomClockwise) {
    Ring r;
    views::KeyRingView& v = r.view();
    EXPECT_EQ(v.innerRadius(), 117);
    EXPECT_EQ(v.outerRadius(), 142);
    // Key k is centred at k * 30 + 90 degrees: where branch k points when
    // the plant is not turned.
    for (int k = 0; k < 12; ++k) EXPECT_EQ(v.keyAt(px(k * 30 + 90, 130), py(k * 30 + 90, 130)), k) << k;
    EXPECT_EQ(v.keyAt(CX, CY + 130), 0);  // bottom
    EXPECT_EQ(v.keyAt(CX - 130, CY), 3);  // left
    EXPECT_EQ(v.keyAt(CX, CY - 130), 6);  // top
    EXPECT_EQ(v.keyAt(CX + 130, CY), 9);  // right
    // The border between two keys lies half way.
    EXPECT_EQ(v.keyAt(px(103, 130), py(103, 130)), 0);
    EXPECT_EQ(v.keyAt(px(107, 130), py(107, 130)), 1);
    EXPECT_EQ(v.keyAt(px(73, 130), py(73, 130)), 11);
    EXPECT_EQ(v.keyAt(px(77, 130), py(77, 130)), 0);
    EXPECT_EQ(v.keyAt(px(43, 130), py(43, 130)), 10);
}

TEST(KeyRingViewTest, OnlyTheBandBetweenTheRadiiIsTheRing) {
    Ring r;
    views::KeyRingView& v = r.view();
    EXPECT_EQ(v.keyAt(CX, CY), -1);
    EXPECT_EQ(v.keyAt(CX, CY + 100), -1);
    EXPECT_EQ(v.keyAt(CX, CY + 116), -1);  // pixel centre at 116.5
    EXPECT_EQ(v.keyAt(CX, CY + 117), 0);   // 117.5: within
    EXPECT_EQ(v.keyAt(CX, CY + 141), 0);   // 141.5: within
    EXPECT_EQ(v.keyAt(CX, CY + 142), -1);  // 142.5: beyond
    EXPECT_EQ(v.keyAt(CX + 145, CY - 145), -1);  // the view's corner
    // The middle and the corners are not the ring's: presses there reach
    // what lies beneath.
    EXPECT_EQ(r.core.root()->hitTest(CX, CY), nullptr);
    EXPECT_EQ(r.core.root()->hitTest(45, 116), nullptr);
    EXPECT_EQ(r.core.root()->hitTest(CX, CY + 130), &v);
}

TEST(KeyRingViewTest, APressPlaysTheKeysNoteWhileHeld) {
    Ring r;
    r.core.mouseDown({CX, CY + 130, Fomal::LEFT_BIT});
    EXPECT_EQ(r.host.notes, (std::vector<std::string>{"down 60 100"}));
    EXPECT_EQ(r.view().soundingKey(), 0);
    r.core.mouseUp({CX, CY + 130, Fomal::LEFT_BIT});
    EXPECT_EQ(r.host.notes, (std::vector<std::string>{"down 60 100", "up 60 0"}));
    EXPECT_EQ(r.view().soundingKey(), -1);
    // Key 3 on the left is D sharp, key 11 is B.
    r.host.notes.clear();
    r.core.mouseDown({CX - 130, CY, Fomal::LEFT_BIT});
    r.core.mouseUp({CX - 130, CY, Fomal::LEFT_BIT});
    r.core.mouseDown({px(60, 130), py(60, 130), Fomal::LEFT_BIT});
    r.core.mouseUp({px(60, 130), py(60, 130), Fomal::LEFT_BIT});
    EXPECT_EQ(r.host.notes, (std::vector<std::string>{"down 63 100", "up 63 0", "down 71 100", "up 71 0"}));
}

TEST(KeyRingViewTest, SlidingAlongTheRingMovesTheNoteAndLeavingItEndsIt) {
    Ring r;
    r.core.mouseDown({px(90, 130), py(90, 130), Fomal::LEFT_BIT});
    r.core.mouseMove({px(95, 130), py(95, 130), Fomal::LEFT_BIT});  // the same key: nothing new
    r.core.mouseMove({px(120, 130), py(120, 130), Fomal::LEFT_BIT});
    EXPECT_EQ(r.view().soundingKey(), 1);
    r.core.mouseMove({CX, CY, Fomal::LEFT_BIT});  // into the bulb
    EXPECT_EQ(r.view().soundingKey(), -1);
    r.core.mouseMove({px(150, 130), py(150, 130), Fomal::LEFT_BIT});  // back on the ring
    r.core.mouseUp({px(150, 130), py(150, 130), Fomal::LEFT_BIT});
    EXPECT_EQ(r.host.notes, (std::vector<std::string>{"down 60 100", "up 60 0", "down 61 100", "up 61 0",
                                                      "down 62 100", "up 62 0"}));
    // A release far away ends what sounds and no more.
    r.host.notes.clear();
    r.core.mouseDown({CX, CY + 130, Fomal::LEFT_BIT});
    r.core.mouseUp({5, 5, Fomal::LEFT_BIT});
    EXPECT_EQ(r.host.notes, (std::vector<std::string>{"down 60 100", "up 60 0"}));
}

TEST(KeyRingViewTest, TheKeysStayWhereTheyAreWhenThePlantTurns) {
    // The engine gives a note to the branch the rotation has brought beside
    // its key, so the keys do not turn: the bottom key is still C.
    Ring r;
    r.host.changeControl("Rotation", 0.25);
    r.core.idle();
    r.core.mouseDown({CX, CY + 130, Fomal::LEFT_BIT});
    r.core.mouseUp({CX, CY + 130, Fomal::LEFT_BIT});
    EXPECT_EQ(r.host.notes, (std::vector<std::string>{"down 60 100", "up 60 0"}));
}

TEST(KeyRingViewTest, TheSoundingKeyIsLitAndOnlyIt) {
    Ring r;
    const std::vector<std::uint32_t> atRest = r.shot();
    const auto at = [](const std::vector<std::uint32_t>& p, int x, int y) { return p[std::size_t(y) * 384 + std::size_t(x)]; };
    // Nothing is drawn while no key sounds.
    EXPECT_EQ(at(atRest, CX, CY + 130), BLACK);
    r.core.mouseDown({CX, CY + 130, Fomal::LEFT_BIT});
    const std::vector<std::uint32_t> bottom = r.shot();
    EXPECT_NE(at(bottom, CX, CY + 130), BLACK);  // key 0 lit
    EXPECT_EQ(at(bottom, CX, CY - 130), BLACK);  // key 6 not
    EXPECT_EQ(at(bottom, CX - 130, CY), BLACK);  // key 3 not
    r.core.mouseMove({CX, CY - 130, Fomal::LEFT_BIT});
    const std::vector<std::uint32_t> top = r.shot();
    EXPECT_EQ(at(top, CX, CY + 130), BLACK);
    EXPECT_NE(at(top, CX, CY - 130), BLACK);
    r.core.mouseUp({CX, CY - 130, Fomal::LEFT_BIT});
    EXPECT_EQ(r.shot(), atRest);
}

TEST(KeyRingViewTest, ItsHintShowsOverTheRingOnly) {
    Ring r;
    r.core.mouseMove({CX, CY + 130, 0});
    r.wait(Fomal::EditorCore::HINT_DELAY_MS);
    EXPECT_EQ(r.core.hint().text(), "Play Notes");
    r.core.mouseMove({CX, CY, 0});
    r.wait(Fomal::EditorCore::HINT_DELAY_MS);
    EXPECT_EQ(r.core.hint().text(), "");
}

TEST(KeyRingViewTest, TheRadiiComeFromTheLayoutAndDefaultToThePanels) {
    views::registerLivingViews();
    Ring narrow(", innerRadius: 60, outerRadius: 70");
    EXPECT_EQ(narrow.view().keyAt(CX, CY + 65), 0);
    EXPECT_EQ(narrow.view().keyAt(CX, CY + 130), -1);
    viewtest::Editor plain("views: { { type: \"keyRing\", label: \"ring\", bounds: { 42, 113, 300, 300 } } }");
    auto& v = static_cast<views::KeyRingView&>(plain.find("ring"));
    EXPECT_EQ(v.innerRadius(), 117);
    EXPECT_EQ(v.outerRadius(), 142);
    // Without a film a key still plays; nothing is drawn.
    plain.core.mouseDown({CX, CY + 130, Fomal::LEFT_BIT});
    EXPECT_EQ(v.soundingKey(), 0);
    plain.core.paint();
    for (std::uint32_t p : plain.core.pixels()) ASSERT_EQ(p, BLACK);
    plain.core.mouseUp({CX, CY + 130, Fomal::LEFT_BIT});
    EXPECT_EQ(v.soundingKey(), -1);
}

TEST(KeyRingViewTest, BadKeysFailWithTheirReadersMessages) {
    views::registerLivingViews();
    EXPECT_EQ(viewtest::failureOf("views: { { type: \"keyRing\", innerRadius: wide } }"), "Undefined symbol: 'wide'");
    EXPECT_EQ(viewtest::failureOf("views: { { type: \"keyRing\", outerRadius: (142 } }"), "Expected ')'");
    EXPECT_EQ(viewtest::failureOf("views: { { type: \"keyRing\", film: \"NoSuchFilm\" } }"),
              "Could not obtain image : NoSuchFilm");
    EXPECT_EQ(viewtest::failureOf("views: { { type: \"keyRing\", film: { name: \"KeyRingFilm\", format: \"zip\" } } }"),
              "Unknown image format specification: zip");
}

TEST(KeyRingViewTest, TheKeysOfNotesTheSoundPlaysAreLit) {
    Ring r;
    const auto lit = [&](int degrees) {
        const std::vector<std::uint32_t> p = r.shot();
        return p[std::size_t(py(degrees, 130)) * 384 + std::size_t(px(degrees, 130))] != BLACK;
    };
    EXPECT_EQ(r.view().litKeys(), 0u);
    // Branch 4 sounds: E, key 4 at 210 degrees, is lit at the view's next look.
    r.host.sound.levelLow[4] = 0.3f;
    r.wait(1000 / 30 + 1);
    EXPECT_EQ(r.view().litKeys(), 1u << 4);
    EXPECT_TRUE(lit(210));
    EXPECT_FALSE(lit(90));
    // A chord: the bright part of a level counts as much.
    r.host.sound.levelHigh[7] = 0.25f;
    r.wait(1000 / 30 + 1);
    EXPECT_EQ(r.view().litKeys(), 1u << 4 | 1u << 7);
    // A note that has faded far enough is no longer heard.
    r.host.sound.levelLow[4] = 0.1f;
    r.host.sound.levelHigh[4] = 0.05f;
    r.wait(1000 / 30 + 1);
    EXPECT_EQ(r.view().litKeys(), 1u << 7);
    EXPECT_FALSE(lit(210));
    // The mouse's key and the heard ones are lit together.
    r.core.mouseDown({CX, CY + 130, Fomal::LEFT_BIT});
    EXPECT_EQ(r.view().litKeys(), 1u | 1u << 7);
    r.core.mouseUp({CX, CY + 130, Fomal::LEFT_BIT});
    EXPECT_EQ(r.view().litKeys(), 1u << 7);
    // A flash alone, the start of a note, is not yet a sound.
    r.host.sound = VisualState();
    r.host.sound.flash[2] = 1.0f;
    r.wait(1000 / 30 + 1);
    EXPECT_EQ(r.view().litKeys(), 0u);
}

TEST(KeyRingViewTest, ATurnedPlantsBranchSoundsTheKeyBesideIt) {
    // With the plant turned by n steps the sound gives note k + n to
    // branch k, so branch k lights the key of k + n.
    Ring r;
    r.host.sound.levelLow[4] = 0.5f;
    r.host.setParameter(Param::Rotation, 1.0f / 12.0f);
    r.wait(1000 / 30 + 1);
    EXPECT_EQ(r.view().litKeys(), 1u << 5);
    r.host.setParameter(Param::Rotation, 0.5f);
    r.wait(1000 / 30 + 1);
    EXPECT_EQ(r.view().litKeys(), 1u << 10);
    // Steps round to the nearest, halves away from zero; a whole turn is none.
    r.host.setParameter(Param::Rotation, 2.5f / 12.0f);
    r.wait(1000 / 30 + 1);
    EXPECT_EQ(r.view().litKeys(), 1u << 7);
    r.host.setParameter(Param::Rotation, 1.0f);
    r.wait(1000 / 30 + 1);
    EXPECT_EQ(r.view().litKeys(), 1u << 4);
}

TEST(KeyRingViewTest, ARingThatGoesWhileAKeyIsHeldEndsItsNote) {
    Ring r;
    r.core.mouseDown({CX, CY + 130, Fomal::LEFT_BIT});
    // The panel is built anew under the held key.
    r.core.openLayoutText("views: { }");
    r.core.idle();
    EXPECT_EQ(r.host.notes, (std::vector<std::string>{"down 60 100", "up 60 0"}));
    r.core.mouseUp({CX, CY + 130, Fomal::LEFT_BIT});
    EXPECT_EQ(r.host.notes.size(), 2u);
}
