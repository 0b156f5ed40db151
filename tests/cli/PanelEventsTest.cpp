#include "cli/PanelEvents.h"

#include <gtest/gtest.h>

#include "cli/Options.h"
#include "fomal/ClickMask.h"

using cli::PanelEvent;
using cli::parsePanelEvents;

namespace {

std::string failureOf(std::string_view text) {
    try {
        parsePanelEvents(text);
    } catch (const cli::UsageError& e) {
        return e.what();
    }
    return "(no failure)";
}

}  // namespace

TEST(PanelEventsTest, EveryKindOfLineIsRead) {
    const std::vector<PanelEvent> events = parsePanelEvents(
        "# a comment\n"
        "move 10 20\n"
        "\n"
        "down 1 2 shift control\r\n"
        "up 1 2 right\n"
        "click 5 6\n"
        "drag 1 2 30 40 7 alt\n"
        "drag 1 2 30 40\n"
        "key return shift\n"
        "wait 250\n"
        "note 60 100\n"
        "noteoff 60\n"
        "suspend\n"
        "resume\n"
        "shot out dir/a.png\n"
        "choose Show the Box\n");
    ASSERT_EQ(events.size(), 14u);
    using Kind = PanelEvent::Kind;
    EXPECT_EQ(events[0].kind, Kind::move);
    EXPECT_EQ(events[0].x, 10);
    EXPECT_EQ(events[0].y, 20);
    EXPECT_EQ(events[0].line, 2);
    EXPECT_EQ(events[1].kind, Kind::down);
    EXPECT_EQ(events[1].modifiers, Fomal::SHIFT_BIT | Fomal::CONTROL_BIT | Fomal::LEFT_BIT);
    EXPECT_EQ(events[2].modifiers, Fomal::RIGHT_BIT);
    EXPECT_EQ(events[3].modifiers, Fomal::LEFT_BIT);
    EXPECT_EQ(events[4].kind, Kind::drag);
    EXPECT_EQ(events[4].x2, 30);
    EXPECT_EQ(events[4].y2, 40);
    EXPECT_EQ(events[4].steps, 7);
    EXPECT_EQ(events[4].modifiers, Fomal::ALT_BIT | Fomal::LEFT_BIT);
    EXPECT_EQ(events[5].steps, 10);
    EXPECT_EQ(events[6].kind, Kind::key);
    EXPECT_EQ(events[6].text, "return");
    EXPECT_EQ(events[6].modifiers, Fomal::SHIFT_BIT);
    EXPECT_EQ(events[7].ms, 250);
    EXPECT_EQ(events[8].pitch, 60);
    EXPECT_EQ(events[8].velocity, 100);
    EXPECT_EQ(events[9].kind, Kind::noteOff);
    EXPECT_EQ(events[10].kind, Kind::suspend);
    EXPECT_EQ(events[11].kind, Kind::resume);
    EXPECT_EQ(events[12].text, "out dir/a.png");
    EXPECT_EQ(events[13].text, "Show the Box");
}

TEST(PanelEventsTest, ABadLineIsNamedWithWhatIsWrong) {
    EXPECT_EQ(failureOf("move 1 2\nhover 3 4\n"), "events line 2: unknown event 'hover'");
    EXPECT_EQ(failureOf("move 1\n"), "events line 1: missing Y");
    EXPECT_EQ(failureOf("move 1 2 3\n"), "events line 1: unexpected '3'");
    EXPECT_EQ(failureOf("click 1 2 meta\n"), "events line 1: unknown modifier 'meta' (shift, control, alt or right)");
    EXPECT_EQ(failureOf("note 128 1\n"), "events line 1: PITCH must be a whole number from 0 to 127, not '128'");
    EXPECT_EQ(failureOf("wait -5\n"), "events line 1: MS must be a whole number from 0 to 86400000, not '-5'");
    EXPECT_EQ(failureOf("drag 1 2 3 4 0\n"), "events line 1: STEPS must be a whole number from 1 to 10000, not '0'");
    EXPECT_EQ(failureOf("shot\n"), "events line 1: missing FILE.png");
    EXPECT_EQ(failureOf("choose\n"), "events line 1: missing TITLE");
    EXPECT_EQ(failureOf("key\n"), "events line 1: missing NAME");
}
