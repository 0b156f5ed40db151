#include "fomal/Trigger.h"

#include <gtest/gtest.h>

#include "ViewTestSupport.h"

namespace {

TEST(TriggerTest, DollarStandsForTheTriggersNameButScriptNamesStay) {
    EXPECT_EQ(Fomal::withTriggerName("{ what: $, label: \"tutorial\" }", "closefx"),
              "{ what: closefx, label: \"tutorial\" }");
    EXPECT_EQ(Fomal::withTriggerName("page = substr('$', 11) + 1; x = $0 + $n;", "focusedGene7"),
              "page = substr('focusedGene7', 11) + 1; x = $0 + $n;");
}

TEST(TriggerTest, WhenIsANameOrAnArrayOfNames) {
    const std::vector<Fomal::Trigger> t =
        Fomal::readTriggers("{ { when: \"opened\", action: \"nop\" }, { when: { \"a\", \"b\" }, action: \"nop\" } }");
    ASSERT_EQ(t.size(), 2u);
    EXPECT_TRUE(t[0].answers("opened"));
    EXPECT_FALSE(t[0].answers("closing"));
    EXPECT_TRUE(t[1].answers("a"));
    EXPECT_TRUE(t[1].answers("b"));
}

TEST(TriggerTest, EveryAnsweringEntryRunsInOrderOnceForEachOfItsNames) {
    viewtest::Editor e(
        "triggers: {"
        "  { when: { \"focusedGene7\", \"focusedGene12\" }, action: \"{ ::log = ::log # substr('$', 11) # ';' }\" },"
        "  { when: \"focusedGene7\", action: \"{ ::log = ::log # 'again;' }\" } }"
        "views: { }");
    e.core.scripts().evaluate(e.root(), "{ ::log = '' }");
    EXPECT_TRUE(e.root().fireTrigger("focusedGene7"));
    EXPECT_TRUE(e.root().fireTrigger("focusedGene12"));
    EXPECT_FALSE(e.root().fireTrigger("unfocusedGene"));
    EXPECT_EQ(e.core.scripts().evaluate(e.root(), "{ ::log }"), "7;again;12;");
}

TEST(TriggerTest, OpenedFiresWhenTheLayoutOpens) {
    viewtest::Editor e("triggers: { { when: \"opened\", action: \"hideView\", params: \"box\" } }"
                       "views: { { type: \"rectangle\", label: \"box\", fill: 0xFF102030 } }");
    EXPECT_TRUE(e.find("box").hidden());
}

}  // namespace
