#include "views/BubbleMarkup.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using views::CompiledPage;
using views::MarkupKind;
using views::MarkupOp;

// Styles of fixed-width characters: every character is 10 pixels wide in
// "default", 12 in "g", 10 in "i"; "key" adds 3 pixels at each side. Lines
// are 20 high with -4 spacing, "g" lines 24 with -5.
struct FixedStyles : views::MarkupStyles {
    std::vector<std::string> names{"default", "g", "i", "key"};
    int find(std::string_view name) const override {
        for (std::size_t i = 0; i < names.size(); ++i)
            if (names[i] == name) return int(i);
        return -1;
    }
    double measure(int style, std::string_view text) const override {
        return double(text.size()) * (style == 1 ? 12 : 10);
    }
    views::MarkupStyleMetrics metrics(int style) const override {
        views::MarkupStyleMetrics m;
        m.ascent = style == 1 ? 18 : 15;
        m.lineHeight = style == 1 ? 24 : 20;
        m.lineSpacing = style == 1 ? -5 : -4;
        m.side = style == 3 ? 3 : 0;
        return m;
    }
};

const FixedStyles STYLES;

CompiledPage compile(std::string_view text) { return views::compileMarkup(text, STYLES); }

std::string failure(std::string_view text) {
    try {
        compile(text);
    } catch (const std::exception& e) {
        return e.what();
    }
    return "(no failure)";
}

// The runs' texts, each with "_" for a blank after it and "|" for a break.
std::string runs(const CompiledPage& page) {
    std::string out;
    for (const MarkupOp& op : page.ops) {
        if (!out.empty()) out += ' ';
        switch (op.kind) {
            case MarkupKind::run:
                // Appended piece by piece: GCC 12 at -O3 warns falsely about
                // a literal joined to a temporary string.
                out += '[';
                out += op.text;
                out += ']';
                out += std::to_string(op.style);
                if (op.spaces > 0) out += '_';
                if (op.click >= 0) {
                    out += 'c';
                    out += std::to_string(op.click);
                }
                break;
            case MarkupKind::lineBreak: out += "BR"; break;
            case MarkupKind::pause: out += "PAUSE"; break;
            case MarkupKind::action: out += "DO"; break;
            case MarkupKind::move: out += "MOVE"; break;
        }
    }
    return out;
}

}  // namespace

TEST(BubbleMarkupTest, WordsAreRunsWithTheirBlanksAndWidths) {
    const CompiledPage page = compile("Close to  the seed");
    EXPECT_EQ(runs(page), "[Close]0_ [to]0_ [the]0_ [seed]0");
    // Blanks in a row count once.
    EXPECT_EQ(page.ops[1].spaces, 1);
    EXPECT_EQ(page.ops[0].width, 50);
    EXPECT_EQ(page.ops[0].spaceWidth, 10);
    EXPECT_EQ(page.ops[3].spaceWidth, 0);
    EXPECT_EQ(page.characters, 6 + 3 + 4 + 4);
}

TEST(BubbleMarkupTest, StyleTagsSwitchAndNest) {
    const CompiledPage page = compile("<g>env_time</g> controls the <i>total <g>duration</g></i>.");
    EXPECT_EQ(runs(page), "[env_time]1_ [controls]0_ [the]0_ [total]2_ [duration]1 [.]0");
    EXPECT_EQ(page.ops[0].width, 8 * 12);
    // A word cut by a tag stays one word: no break between its runs.
    EXPECT_FALSE(page.ops[4].breakable);
}

TEST(BubbleMarkupTest, EveryTagBecomesItsOperation) {
    const CompiledPage page = compile(
        "<move bounds='{ 0, 0, $, $ }' time: 0.5 curve=\"0.8\"/>One<br>two<br/>"
        "<pause delay: 1.5 /><do action: \">tutorial.next\" params: { page: 3 } delay: 2 />"
        "<click action: \">tutorial.goto\" params: \"4\">here</click>");
    EXPECT_EQ(runs(page), "MOVE [One]0 BR [two]0 BR PAUSE DO [here]0c0");
    EXPECT_EQ(page.ops[0].bounds, "{ 0, 0, $, $ }");
    EXPECT_EQ(page.ops[0].time, "0.5");
    EXPECT_EQ(page.ops[0].curve, "0.8");
    EXPECT_DOUBLE_EQ(page.ops[5].delay, 1.5);
    EXPECT_EQ(page.ops[6].action, ">tutorial.next");
    EXPECT_EQ(page.ops[6].params, "{ page: 3 }");
    EXPECT_DOUBLE_EQ(page.ops[6].delay, 2.0);
    ASSERT_EQ(page.clicks.size(), 1u);
    EXPECT_EQ(page.clicks[0].action, ">tutorial.goto");
    // Params stay raw, quotes and all, as the dispatcher reads them.
    EXPECT_EQ(page.clicks[0].params, "\"4\"");
    EXPECT_FALSE(page.clicks[0].autoRepeat);
    // The run before a line break may end its line.
    EXPECT_TRUE(page.ops[1].breakable);
}

TEST(BubbleMarkupTest, ClickRunsCoverTheirWordsAndAutoRepeats) {
    const CompiledPage page =
        compile("Press <click action: nop auto>the <key>up</key> key</click> now <click action=\"nop\">or</click>");
    EXPECT_EQ(runs(page), "[Press]0_ [the]0_c0 [up]3_c0 [key]0_c0 [now]0_ [or]0c1");
    ASSERT_EQ(page.clicks.size(), 2u);
    EXPECT_TRUE(page.clicks[0].autoRepeat);
    EXPECT_FALSE(page.clicks[1].autoRepeat);
    EXPECT_EQ(page.clicks[0].action, "nop");
    // The frame's room at both sides counts in the width.
    EXPECT_EQ(page.ops[2].width, 20 + 2 * 3);
}

TEST(BubbleMarkupTest, EntitiesAreTheirCharacters) {
    const CompiledPage page = compile("a &lt;b&gt; &amp; &quot;q&quot; &unknown; &");
    EXPECT_EQ(runs(page), "[a]0_ [<b>]0_ [&]0_ [\"q\"]0_ [&unknown;]0_ [&]0");
}

TEST(BubbleMarkupTest, NonBreakingCharactersKeepAWordWhole) {
    const CompiledPage page = compile("sample-and-hold 10&nbsp;ms non&nbhp;stop");
    // A plain hyphen may end a line; the entities may not.
    EXPECT_EQ(runs(page), "[sample-]0 [and-]0 [hold]0_ [10 ms]0_ [non-stop]0");
    EXPECT_TRUE(page.ops[0].breakable);
    EXPECT_TRUE(page.ops[1].breakable);
}

TEST(BubbleMarkupTest, WrapKeepsNonBreakingWordsWholeAndBreaksAtHyphens) {
    // 100 pixels: ten characters a line.
    const CompiledPage page = compile("aaaa 10&nbsp;ms bb sample-and-hold");
    const views::WrappedPage w = views::wrapMarkup(page, 100, STYLES);
    ASSERT_EQ(w.runs.size(), 6u);
    // "aaaa " then "10 ms" (50) would reach 100: it fits exactly.
    EXPECT_EQ(w.runs[1].line, 0);
    EXPECT_EQ(w.runs[1].x, 50);
    // "bb" goes on: 110 + 20 > 100.
    EXPECT_EQ(w.runs[2].line, 1);
    EXPECT_EQ(w.runs[2].x, 0);
    // "bb sample-" is 100: fits; "and-" goes on the next line.
    EXPECT_EQ(w.runs[3].line, 1);
    EXPECT_EQ(w.runs[4].line, 2);
    EXPECT_EQ(w.runs[5].line, 2);
    EXPECT_EQ(w.lines.size(), 3u);
    // The same text with a non-breaking hyphen keeps the compound whole.
    const views::WrappedPage whole = views::wrapMarkup(compile("bb sample&nbhp;and&nbhp;hold"), 100, STYLES);
    ASSERT_EQ(whole.runs.size(), 2u);
    EXPECT_EQ(whole.runs[1].line, 1);
    // A word wider than the line stands alone on its own line.
    EXPECT_EQ(whole.lines.size(), 2u);
}

TEST(BubbleMarkupTest, LineHeightsAreLineHeightPlusSpacingAndTheTallestStyleCounts) {
    const views::WrappedPage w = views::wrapMarkup(compile("one<br>two <g>g</g><br><br>x"), 1000, STYLES);
    ASSERT_EQ(w.lines.size(), 4u);
    EXPECT_EQ(w.lines[0].height, 16);
    EXPECT_EQ(w.lines[1].height, 19);
    EXPECT_EQ(w.lines[1].top, 16);
    EXPECT_EQ(w.lines[1].baseline, 16 + 18);
    // An empty line has the default style's height.
    EXPECT_EQ(w.lines[2].height, 16);
    EXPECT_EQ(w.height, 16 + 19 + 16 + 16);
    // Typing order: the runs' first characters.
    EXPECT_EQ(w.runs[1].firstCharacter, 3);
    EXPECT_EQ(w.runs[2].firstCharacter, 7);
}

TEST(BubbleMarkupTest, ACompiledPageIsTheSameTheSecondTime) {
    const char* text = "<g>a_form</g> controls <i>Oscillator&nbsp;A</i>.<pause delay: 1/><click action: nop>x</click>";
    const CompiledPage a = compile(text), b = compile(text);
    ASSERT_EQ(a.ops.size(), b.ops.size());
    for (std::size_t i = 0; i < a.ops.size(); ++i) {
        EXPECT_EQ(a.ops[i].kind, b.ops[i].kind);
        EXPECT_EQ(a.ops[i].text, b.ops[i].text);
        EXPECT_EQ(a.ops[i].style, b.ops[i].style);
        EXPECT_EQ(a.ops[i].width, b.ops[i].width);
        EXPECT_EQ(a.ops[i].click, b.ops[i].click);
    }
    EXPECT_EQ(a.characters, b.characters);
}

TEST(BubbleMarkupTest, EachMistakeHasItsMessage) {
    EXPECT_EQ(failure("<click action: nop>open"), "Unbalanced click tag");
    EXPECT_EQ(failure("close</click>"), "Unbalanced click tag");
    EXPECT_EQ(failure("<click action: nop>a<click action: nop>b</click></click>"), "Unbalanced click tag");
    EXPECT_EQ(failure("<pause/>"), "Missing delay in pause tag");
    EXPECT_EQ(failure("<pause delay: />"), "Missing delay in pause tag");
    EXPECT_EQ(failure("<move time: 1 />"), "Missing bounds in move tag");
    EXPECT_EQ(failure("<do params: 1 />"), "Missing action in click or do tag");
    EXPECT_EQ(failure("<click>x</click>"), "Missing action in click or do tag");
    EXPECT_EQ(failure("<blink>x</blink>"), "Unknown style tag: blink");
    EXPECT_EQ(failure("x</blink>"), "Unknown style tag: blink");
    EXPECT_EQ(failure("<g><i>x</g></i>"), "Unbalanced style tags: i and g");
    EXPECT_EQ(failure("x</g>"), "Unbalanced style tags: default and g");
    // Malformed tags and attributes fail as the notation does.
    EXPECT_EQ(failure("<i"), "Unexpected end of string");
    EXPECT_EQ(failure("<do action: 'nop />"), "Unexpected end of string");
    EXPECT_EQ(failure("<move bounds: { 0, 0 />"), "Unexpected end of string");
    EXPECT_EQ(failure("<pause delay: soon />"), "Undefined symbol: 'soon'");
    EXPECT_EQ(failure("<click action: nop auto: maybe>x</click>"), "Invalid boolean: 'maybe'");
}

TEST(BubbleMarkupTest, AnAngleBracketInsideAQuotedValueDoesNotEndTheTag) {
    const CompiledPage page = compile("<do action: \">tutorial.next\" />next");
    EXPECT_EQ(runs(page), "DO [next]0");
    EXPECT_EQ(page.ops[0].action, ">tutorial.next");
}

TEST(BubbleMarkupTest, AStyleLeftOpenEndsWithThePage) {
    EXPECT_EQ(runs(compile("<i>(Move the mouse)")), "[(Move]2_ [the]2_ [mouse)]2");
}
