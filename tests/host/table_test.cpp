#include "host/output/table.h"

#include <gtest/gtest.h>
#include <sstream>

#include "base/utf8.h"
#include "host/output/display_width.h"
#include "host/output/harmless.h"
#include "host/output/json.h"

namespace ovno2::host {

namespace {

TEST(DisplayWidth, CountsTheCellsATerminalUses) {
    struct {
        const char16_t* text;
        std::size_t width;
    } const cases[] = {
        {u"", 0},
        {u"Käthe", 5},
        {u"渡邉", 4},
        {u"한글", 4},
        {u"ｱﾝﾅ", 3},             // half-width forms
        {u"Ａ", 2},              // full-width form
        {u"Zoe\u0308", 3},       // combining diaeresis
        {u"ใจดี", 3},             // Thai vowel above
        {u"לָ", 1},               // Hebrew point
        {u"a\u200Fb\u200B", 2},  // marks without a cell
        {u"\U0001F600!", 3},     // outside the basic plane
        {u"\U00020000", 2},
        {u"\xD800x", 2},  // unpaired surrogate
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.width, displayWidth(TextView(c.text))) << toUtf8(c.text);
}

TEST(DisplayWidth, CutsBetweenCharactersAndKeepsMarksWithTheirLetter) {
    EXPECT_EQ(u"Müller", cutToWidth(u"Müller", 6));
    EXPECT_EQ(u"Müll…", cutToWidth(u"Müllerin", 5));
    EXPECT_EQ(u"渡…", cutToWidth(u"渡邉玲子", 4));  // half of the second would not fit
    EXPECT_EQ(u"Zoe\u0308…", cutToWidth(u"Zoe\u0308lle", 4));
    EXPECT_EQ(u"\U0001F600…", cutToWidth(u"\U0001F600\U0001F600", 3));
    EXPECT_EQ(u"…", cutToWidth(u"ab", 1));
    EXPECT_EQ(u"", cutToWidth(u"ab", 0));
}

TEST(DisplayWidth, ASingleLineHoldsNothingThatMovesTheCursor) {
    EXPECT_EQ(u"a b c d", singleLine(u"a\r\nb\nc\td"));
    EXPECT_EQ(u"␛[2J␀␡�", singleLine(Text(u"\x1B[2J\0\x7F\x9B", 7)));
    EXPECT_EQ(u"evil", singleLine(u"ev\u202Eil\u2066"));
}

std::string rendered(std::size_t width, std::size_t* leftOut = nullptr) {
    Table table({u"Name", u"Phone", u"Note"});
    table.addRow({u"渡邉", u"1", u"short"});
    table.addRow({u"Anna"});
    table.addRow({u"Zoe\u0308", u"0171 39200", u"a note that goes on for more than a line of it"});
    return table.render(width, leftOut);
}

TEST(Table, AlignsColumnsByCellsAndLeavesNoBlanksAtTheEnds) {
    EXPECT_EQ(
        "Name  Phone       Note\n"
        "渡邉  1           short\n"
        "Anna\n"
        "Zoe\u0308   0171 39200  a note that goes on for more than a line of it\n",
        rendered(0));
}

TEST(Table, NoLineOnATerminalIsLongerThanTheTerminal) {
    for (std::size_t width = 1; width < 90; ++width) {
        std::size_t leftOut = 0;
        std::istringstream lines(rendered(width, &leftOut));
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(displayWidth(fromUtf8(line)), width);
        EXPECT_EQ(width < 14 ? 2u : width < 26 ? 1u : 0u, leftOut) << width;
    }
    EXPECT_TRUE(rendered(20).starts_with("Name  Phone\n渡邉  1\nAnna\n"));
}

TEST(Table, AFewLongCellsDoNotPushOtherColumnsOut) {
    Table table({u"Phone", u"Mail"});
    for (int i = 0; i < 39; ++i)
        table.addRow({u"0123 456", u"a@example.org"});
    table.addRow({u"0123 456;0123 457;0123", u"b@example.org"});
    std::size_t leftOut = 0;
    const std::string text = table.render(24, &leftOut);
    EXPECT_EQ(0u, leftOut);
    EXPECT_TRUE(text.ends_with("\n0123 45…  b@example.org\n")) << text;
}

TEST(Harmless, WhatIsWrittenForAPersonCommandsNoTerminal) {
    struct {
        std::string given, written;
    } const cases[] = {
        {"plain ä海😀\n\tx", "plain ä海😀\n\tx"},
        {"\x1B[2J\a\r\n\b", "␛[2J␇␍\n␈"},
        {"\xC2\x9B"
         "31m \xC2\xA0 \xC2",
         "\uFFFD"
         "31m \xC2\xA0 \xC2"},
        {std::string("\0", 1), "␀"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.written, harmless(c.given));
        EXPECT_EQ(c.given == c.written, isHarmless(c.given));
    }
    std::string json;
    JsonLines lines([&](std::string_view piece) { json += piece; });
    lines.next().text(u"\u009B\u001B\u00A0");
    lines.end();
    EXPECT_EQ("[\n\"\\u009B\\u001B\u00A0\"\n]\n", json);
}

}  // namespace

}  // namespace ovno2::host
