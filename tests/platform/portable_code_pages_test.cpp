#include "common/machine_test.h"
#include "pc/ansi.h"
#include "platform/portable/code_pages.h"

namespace ovno2 {
namespace {

class MachineCodePage : public MachineTest {
  protected:
    std::uint32_t choose(TextView page) {
        setRegistryText(platform::localMachine, u"SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage", u"ACP",
                        page);
        return currentPlatform().codePages().ansi();
    }
};

// Codes from the published tables of each page.
TEST_F(MachineCodePage, TheRegistryNamesThePage) {
    EXPECT_EQ(1251u, choose(u"1251"));
    EXPECT_EQ("\xCC\xE0\xF8\xE0 \xA8", toAnsi(u"Маша Ё"));
    EXPECT_EQ(u"Маша Ё", fromAnsi("\xCC\xE0\xF8\xE0 \xA8"));
    EXPECT_EQ("Ae", toAnsi(u"Äé")) << "letters of another script keep their base";
}

TEST_F(MachineCodePage, AnUnknownPageIsTakenFor1252) {
    EXPECT_EQ(1252u, choose(u"4711"));
    EXPECT_EQ("\x80", toAnsi(u"€"));
}

TEST_F(MachineCodePage, CharactersOfTwoBytesTakeTwoBytes) {
    EXPECT_EQ(932u, choose(u"932"));
    EXPECT_EQ(nullptr, currentPlatform().codePages().singleByteTable());
    EXPECT_EQ("\x93\x64\x98\x62 \xB6\xC5 ABC", toAnsi(u"電話 ｶﾅ ABC"));
    EXPECT_EQ(u"電話 ｶﾅ ABC", fromAnsi("\x93\x64\x98\x62 \xB6\xC5 ABC"));
    EXPECT_EQ("\x87\x8A", toAnsi(u"㈱")) << "of several codes, the one the page prefers";
    EXPECT_EQ(u"a?", fromAnsi("a\x93")) << "half a character at the end";
    std::uint8_t code = 0;
    EXPECT_FALSE(ansiCode(u'電', code));
    EXPECT_TRUE(ansiCode(u'ｶ', code));
    EXPECT_EQ(0xB6, code);
}

}  // namespace
}  // namespace ovno2
