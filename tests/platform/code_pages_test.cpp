#include "common/platform_test.h"
#include "pc/ansi.h"

namespace ovno2 {
namespace {

// The page that both platforms take when nothing else is set up.
class AnsiPage : public PlatformTest {
  protected:
    void SetUp() override {
        if (currentPlatform().codePages().ansi() != 1252) GTEST_SKIP() << "the ANSI page is not 1252";
    }
};

TEST_F(AnsiPage, EveryByteIsACharacterAndComesBack) {
    const std::string all = everyByte();
    Text expected(all.size(), u'\0');
    std::iota(expected.begin(), expected.end(), u'\0');
    // The 27 characters of 1252 that are not those of Latin-1; the other five codes of that row stay
    // controls.
    const TextView row =
        u"\u20AC\u0081\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\u008D\u017D\u008F"
        u"\u0090\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\u009D\u017E\u0178";
    expected.replace(0x80, row.size(), row);
    EXPECT_EQ(expected, fromAnsi(all));
    EXPECT_EQ(all, toAnsi(expected));
    EXPECT_EQ(expected, Text(currentPlatform().codePages().singleByteTable(), 256));
}

TEST_F(AnsiPage, WhatThePageDoesNotHoldBecomesItsBestFitOrAQuestionMark) {
    EXPECT_EQ("Lodz galaz c ?? ??",
              toAnsi(u"\u0141odz ga\u0142\u0105\u017A \u0107 \u96FB\u8A71 \xD83D\xDCF1"));
    EXPECT_EQ("ABC", toAnsi(u"\uFF21\uFF22\uFF23"));
    EXPECT_EQ(u"L\u00F3?", throughAnsi(u"\u0141\u00F3\u96FB"));

    using Row = std::tuple<char16_t, bool, int>;
    for (const auto& [character, held, expected] :
         {Row{u'A', true, 0x41}, Row{u'\0', true, 0}, Row{u'€', true, 0x80}, Row{u'ä', true, 0xE4},
          Row{u'ł', false, 0x6C}, Row{u'電', false, 0x3F}, Row{char16_t{0xD83D}, false, 0x3F}}) {
        std::uint8_t code = 1;
        EXPECT_EQ(held, ansiCode(character, code)) << static_cast<int>(character);
        EXPECT_EQ(expected, code) << static_cast<int>(character);
    }
}

}  // namespace
}  // namespace ovno2
