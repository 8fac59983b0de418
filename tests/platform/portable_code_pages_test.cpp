#include "common/machine_test.h"
#include "pc/ansi.h"
#include "platform/portable/code_pages.h"

namespace ovno2 {
namespace {

class MachineCodePage : public MachineTest {
  protected:
    void choose(TextView page) {
        setRegistryText(platform::localMachine, u"SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage", u"ACP",
                        page);
    }
};

// Codes from the published tables of each page.
TEST_F(MachineCodePage, TheRegistryNamesThePage) {
    choose(u"1251");
    EXPECT_EQ(1251u, currentPlatform().codePages().ansi());
    EXPECT_EQ("\xCC\xE0\xF8\xE0 \xA8", toAnsi(u"Маша Ё"));
    EXPECT_EQ(u"Маша Ё", fromAnsi("\xCC\xE0\xF8\xE0 \xA8"));
    EXPECT_EQ("Ae", toAnsi(u"Äé")) << "letters of another script keep their base";
}

TEST_F(MachineCodePage, AnUnknownPageIsTakenFor1252) {
    choose(u"4711");
    EXPECT_EQ(1252u, currentPlatform().codePages().ansi());
    EXPECT_EQ("\x80", toAnsi(u"€"));
}

TEST_F(MachineCodePage, CharactersOfTwoBytesTakeTwoBytes) {
    choose(u"932");
    platform::CodePages& pages = currentPlatform().codePages();
    EXPECT_EQ(nullptr, pages.singleByteTable());
    EXPECT_EQ("\x93\x64\x98\x62 \xB6\xC5 ABC", toAnsi(u"電話 ｶﾅ ABC"));
    EXPECT_EQ(u"電話 ｶﾅ ABC", fromAnsi("\x93\x64\x98\x62 \xB6\xC5 ABC"));
    EXPECT_EQ("\x87\x8A", toAnsi(u"㈱")) << "of several codes, the one the page prefers";
    EXPECT_EQ(u"a?", fromAnsi("a\x93")) << "half a character at the end";
    std::uint8_t code = 0;
    EXPECT_FALSE(ansiCode(u'電', code));
    EXPECT_TRUE(ansiCode(u'ｶ', code));
    EXPECT_EQ(0xB6, code);
}

TEST(CodePageTables, EveryPageGivesItsBytesBack) {
    for (const std::uint32_t number : {874u, 1250u, 1251u, 1252u, 1253u, 1254u, 1255u, 1256u, 1257u, 1258u}) {
        const auto* table = platform::portable::codePageTable(number);
        ASSERT_TRUE(table) << number;
        EXPECT_FALSE(table->isDoubleByte()) << number;
        for (int code = 0; code < 256; ++code) {
            const std::string byte(1, static_cast<char>(code));
            EXPECT_EQ(byte, table->toAnsi(table->fromAnsi(byte))) << number << " " << code;
        }
    }
}

}  // namespace
}  // namespace ovno2
