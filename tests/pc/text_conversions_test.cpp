#include <fstream>
#include <gmock/gmock.h>
#include <iconv.h>

#include "base/text_pairs.h"
#include "common/machine_test.h"
#include "common/recording_log.h"
#include "pc/ansi.h"
#include "pc/convert_array.h"
#include "pc/convert_hex_text_mod.h"
#include "pc/convert_uml_file.h"
#include "pc/get_file_contents_mod.h"

namespace ovno2 {
namespace {

using ConvertArray::ByteArray;
using ConvertArray::ConvertByteArrayToString;
using ConvertArray::ConvertStringToByteArray;
using ConvertHexTextMod::ConvertTextToHexText;
using ConvertUmlFile::ConvertUmlauteFromFile;
using GetFileContentsMod::ConvertFromUnicodeSub;

constexpr TextView codePageKey = u"SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage";

class TextConversions : public MachineTest {
  protected:
    std::uint32_t choose(TextView page) {
        setRegistryText(platform::localMachine, codePageKey, u"ACP", page);
        return currentPlatform().codePages().ansi();
    }
    static Text repaired(Text text, TextView keepList = {}) {
        ConvertUmlauteFromFile(text, keepList);
        return text;
    }
    static void expectRepaired(TextView cases) {
        for (const auto& [text, expected] : pairsOf(cases))
            EXPECT_EQ(expected, repaired(text)) << toUtf8(text);
    }
    static ByteArray arrayOf(std::string_view bytes, Long lowerBound = 0) {
        return ByteArray(std::vector<std::uint8_t>(bytes.begin(), bytes.end()), lowerBound);
    }
    // What the decoder makes of the bytes; what asks whether it would change anything agrees.
    static std::pair<Long, Text> decoded(std::string_view bytes) {
        const Text before = fromAnsi(bytes);
        Text text = before;
        const Long encoding = ConvertFromUnicodeSub(text);
        const std::vector<std::uint8_t> codes(bytes.begin(), bytes.end());
        EXPECT_EQ(encoding != 0 || text != before, GetFileContentsMod::isEncodedText(codes)) << bytes;
        return {encoding, text};
    }
    static std::string bytesOf(const ByteArray& array) {
        return {array.elements().begin(), array.elements().end()};
    }
};

TEST_F(TextConversions, EveryLetterFromU00C0ToU017FArrivesFromItsUtf8Bytes) {
    for (char16_t c = 0xC0; c < 0x180; ++c) {
        EXPECT_EQ(Text(1, c), repaired(fromAnsi(toUtf8(Text(1, c))))) << std::hex << int(c);
        if (c == 0xC2) continue;  // takes the next character for its second byte
        EXPECT_EQ(u"x" + Text(1, c) + u"y", repaired(fromAnsi("x" + toUtf8(Text(1, c)) + "y")));
    }
}

TEST_F(TextConversions, Utf8PairsAreRepairedInFourPasses) {
    expectRepaired(u"KÃ¤se=Käse|Ã =à|Â\u00A0= |Â»Â¤=»¤|Â©=)|Âa=a|Å¡=š|Åÿ=ƿ");
    // No character, or not of the code page: stays, and the next lead is looked at. U+2026 is byte 85.
    expectRepaired(u"Ã=Ã|ÃÃ¤=Ãä|Ãÿ=Ãÿ|Ã中=Ã中|ÄbÄ…=Äbą");
    // What one pass leaves is the next one's text: "Ä" and "ö" out of four bytes are a pair again.
    expectRepaired(u"Ã„Ã¶=Ŷ|Ã‚Â\u00A0=B\u00A0|Ã‚»=»");
    expectRepaired(u"Ãƒ¤=Ã¤");  // the search goes on behind the new character
}

TEST_F(TextConversions, ReferencesEndAtTheFirstThatIsNotOfTheForm) {
    expectRepaired(
        u"A&#65;B=AAB|&#65;&#66;&#228;&#128;=ABä€|&#65;&#8364;&#66;=A&#8364;&#66;|&#65;&#=A&#|"
        u"&#65;&#12=A&#12");
    expectRepaired(u"&#999;&#65;=&#999;A|&#-5;&#65;=&#-5;A");  // of the form, but no character
    expectRepaired(u"&#6.5;=\u0006|&#7.5;=\u0008|&# 65;=A|&#9&#;&#65;=\tA|&#6x;=\u0006");  // half to even
    expectRepaired(u"&#38;#65;=&#65;|& &; &#65;=& &; A");  // a new "&" begins nothing
    expectRepaired(u"a&#;b&#0;c&#x41;=abc");               // NUL characters go out again
    EXPECT_EQ(Text(2, u'\0'), repaired(Text(u"\0&#0;", 5)));
}

TEST_F(TextConversions, ControlCharactersOutsideTheKeepListBecomeBlanksUpToALimit) {
    const Text text = u"a\tb\r\nc\u0001\u001Fd";
    EXPECT_EQ(text, repaired(text));
    EXPECT_EQ(u"a\tb\r\nc  d", repaired(text, u"\t\r\n"));
    EXPECT_EQ(u"a b  c\u0001 d", repaired(text, u"\u0001"));
    const Text many = repaired(Text(150, u'\u0002') + Text(150, u'\u0003'), u"\t");
    EXPECT_EQ(Text(101, u' ') + Text(49, u'\u0002') + Text(101, u' ') + Text(49, u'\u0003'), many);
    EXPECT_EQ(u"a b", repaired(u"a&#0;b", u"\t"));  // replaced before it could be removed
}

TEST_F(TextConversions, EscapesAndTheMisreadEuroSignAreResolved) {
    expectRepaired(u"a\\,b\\;c=a,b;c|\\\\,\\\\;\\=\\,\\;\\|\\n&#92;,\\;=\\n,;|5 â‚¬ â‚=5 € â‚");
}

TEST_F(TextConversions, LeadsAndReferencesFollowTheCodePage) {
    choose(u"1250");
    EXPECT_EQ(u"ä", repaired(fromAnsi("\xC3\xA4")));  // "Ă¤" there
    EXPECT_EQ(u"ł", repaired(fromAnsi("\xC5\x82")));  // "Ĺ‚" there
    expectRepaired(u"Ã¤=Ã¤|&#179;=ł");                // "Ã" is no lead there
}

// The C library's converter is the independent source.
TEST_F(TextConversions, EveryByteOfACodePageIsACharacterAndBack) {
    std::string all = everyByte();
    for (const char* page : {"874", "1250", "1251", "1252", "1253", "1254", "1255", "1256", "1257", "1258"}) {
        const TemporaryFolder profile;
        std::ofstream(profile.path() / "registry.reg")
            << "REGEDIT4\n[HKEY_LOCAL_MACHINE\\" << toUtf8(codePageKey) << "]\n\"ACP\"=\"" << page << "\"\n";
        platform::portable::Machine other(profile.path());
        usePlatform(other);
        iconv_t converter = iconv_open("UTF-16LE", (std::string("CP") + page).c_str());
        ASSERT_NE(reinterpret_cast<iconv_t>(-1), converter);
        const Text text = ConvertByteArrayToString(arrayOf(all));
        ASSERT_EQ(256u, text.size());
        for (std::size_t byte = 0; byte < 256; ++byte) {
            char16_t expected = 0;
            char* in = &all[byte];
            char* out = reinterpret_cast<char*>(&expected);
            std::size_t inLeft = 1, outLeft = sizeof expected;
            iconv(converter, nullptr, nullptr, nullptr, nullptr);
            if (iconv(converter, &in, &inLeft, &out, &outLeft) == 0 && outLeft == 0) {
                EXPECT_EQ(expected, text[byte]) << page << " " << byte;
            }
        }
        iconv_close(converter);
        ByteArray back;
        ConvertStringToByteArray(text, back);
        EXPECT_EQ(all, bytesOf(back)) << page;
        EXPECT_EQ(all, toAnsi(fromAnsi(all))) << page;
        usePlatform(machine);
    }
}

TEST_F(TextConversions, EveryCharacterHasACodeOfItsOwnOrANearOne) {
    Text all;
    for (unsigned c = 0; c < 0x10000; ++c)
        all += static_cast<char16_t>(c);
    ByteArray codes;
    ConvertStringToByteArray(all, codes);
    ASSERT_EQ(all.size(), codes.size());
    const Text back = ConvertByteArrayToString(codes);
    std::size_t own = 0;
    for (std::size_t c = 0; c < all.size(); ++c)
        own += back[c] == all[c] ? 1 : 0;
    EXPECT_EQ(256u, own);
}

TEST_F(TextConversions, ArraysKeepTheirBoundsInMind) {
    EXPECT_EQ(u"ABC", ConvertByteArrayToString(arrayOf("\x41\x42\x43")));
    EXPECT_EQ(u"ABC", ConvertByteArrayToString(arrayOf("\x41\x42\x43", /*lowerBound=*/1)));
    EXPECT_EQ(u"AB", ConvertByteArrayToString(arrayOf("\x41\x42\x43"), 1));
    EXPECT_EQ(u"AB", ConvertByteArrayToString(arrayOf("\x41\x42\x43", /*lowerBound=*/1), 2));
    EXPECT_EQ(Text(u"AB\0\0", 4), ConvertByteArrayToString(arrayOf("\x41\x42"), 3));
    EXPECT_EQ(u"", ConvertByteArrayToString(ByteArray()));
    EXPECT_EQ(u"", ConvertByteArrayToString(arrayOf("\x41", /*lowerBound=*/5), 3));
    EXPECT_EQ(u"", ConvertByteArrayToString(arrayOf("\x41"), 0x7FFFFFFF));

    ByteArray array = arrayOf("old", /*lowerBound=*/3);
    ConvertStringToByteArray(u"", array);
    EXPECT_EQ(3, array.lowerBound());
    EXPECT_EQ("old", bytesOf(array));
    ConvertStringToByteArray(u"\u20ACx", array);
    EXPECT_EQ(0, array.lowerBound());
    EXPECT_EQ("\x80x", bytesOf(array));
}

// Codes from the published tables of each page.
TEST_F(TextConversions, TheRegistryNamesThePage) {
    EXPECT_EQ(1251u, choose(u"1251"));
    EXPECT_EQ("\xCC\xE0\xF8\xE0 \xA8", toAnsi(u"Маша Ё"));
    EXPECT_EQ(u"Маша Ё", fromAnsi("\xCC\xE0\xF8\xE0 \xA8"));
    EXPECT_EQ("Ae", toAnsi(u"Äé")) << "letters of another script keep their base";
}

TEST_F(TextConversions, AnUnknownPageIsTakenFor1252) {
    EXPECT_EQ(1252u, choose(u"4711"));
    EXPECT_EQ("\x80", toAnsi(u"€"));
}

TEST_F(TextConversions, CharactersOfTwoBytesTakeTwoBytes) {
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
    // Byte by byte they still come back unchanged.
    const std::string all = everyByte();
    const Text text = ConvertByteArrayToString(arrayOf(all));
    ASSERT_EQ(256u, text.size());
    EXPECT_EQ(u'\uFF71', text[0xB1]);
    ByteArray back;
    ConvertStringToByteArray(text + u"\u4E2D", back);
    EXPECT_EQ(all + '\0', bytesOf(back));
    EXPECT_EQ(u"81B1  ", ConvertTextToHexText(u"\u0081\uFF71\u4E2D"));
}

TEST_F(TextConversions, TheEncodingIsToldFromMarksAndZeroBytes) {
    using namespace std::string_view_literals;
    struct Case {
        std::string_view bytes;
        Long encoding;
        TextView text;
    };
    for (const auto& [bytes, encoding, text] :
         {Case{""sv, 0, u""}, Case{"abc"sv, 0, u"abc"},
          Case{"plain text that goes on"sv, 0, u"plain text that goes on"},
          Case{"\xFF\xFE\x41\0\x42\0"sv, 4, u"AB"}, Case{"\xFF\xFE\x41\0\x42"sv, 4, u"A"},
          Case{"\xFF\xFE\0\x41\0\x42\0"sv, 4, u"AB"},  // a zero byte behind the mark
          Case{"\xFF\xFE"sv, 4, u""}, Case{"\xFF"sv, 0, u"ÿ"}, Case{"\xFE\xFF\0\x41\0\x42\x43"sv, 2, u"AB"},
          Case{"\xFE\xFF"sv, 2, u""}, Case{"\xFE"sv, 0, u"þ"}, Case{"\xEF\xBB\xBF\x61\x62\x63"sv, 0, u"abc"},
          Case{"\xEF\xBB\xBF\xC3\xA4"sv, 0, u"Ã¤"}, Case{"\xEF\xBB\xBF"sv, 0, u""},
          Case{"\xEF\xBB"sv, 0, u"ï»"}})
        EXPECT_EQ(std::pair(encoding, Text(text)), decoded(bytes)) << ::testing::PrintToString(bytes);
    Text marked = u"\uFEFFtext", swapped = u"\uFFFEtext";
    EXPECT_EQ(4, ConvertFromUnicodeSub(marked));
    EXPECT_EQ(u"text", marked);
    EXPECT_EQ(2, ConvertFromUnicodeSub(swapped));
    EXPECT_EQ(u"\uFFFEtext", swapped);
}

TEST_F(TextConversions, UnmarkedBigEndianNeedsTwentyOneCharactersAndSmallCodesUpToTheLast) {
    using namespace std::string_literals;
    const std::string bytes = "\0H\0e\0l\0l\0o\0 \0w\0o\0r\0l\0d"s;  // 22
    const std::pair whole(Long{3}, Text(u"Hello world"));
    EXPECT_EQ(whole, decoded(bytes));
    EXPECT_EQ(whole, decoded("\xEF\xBB\xBF" + bytes));
    EXPECT_EQ(std::pair(Long{3}, Text(u"Hello worl")), decoded(bytes.substr(0, 21)));
    EXPECT_EQ(std::pair(Long{0}, fromAnsi(bytes.substr(0, 20))), decoded(bytes.substr(0, 20)));
    for (std::size_t position = 1; position <= 21; position += 2) {
        std::string changed = bytes;
        changed[position - 1] = 8;
        EXPECT_EQ(3, decoded(changed).first) << position;
        changed[position - 1] = 9;
        EXPECT_EQ(position < 5 ? 3 : 0, decoded(changed).first) << position;
    }
}

TEST_F(TextConversions, HexTextHasTwoUpperCaseDigitsForEachCode) {
    EXPECT_EQ(u"415A", ConvertTextToHexText(u"AZ"));
    EXPECT_EQ(u"09", ConvertTextToHexText(u"\t"));
    EXPECT_EQ(u"80FF00", ConvertTextToHexText(Text(u"\u20AC\u00FF\0", 3)));
    EXPECT_EQ(u"3F4C", ConvertTextToHexText(u"\u4E2D\u0141"));
    EXPECT_EQ(u"", ConvertTextToHexText(u""));
}

TEST_F(TextConversions, OnlyTheDetailedLogShowsHexText) {
    RecordingLog log;
    stateOf<LogFront>().level = 4;
    ConvertTextToHexText(u"AZ");
    EXPECT_TRUE(log.lines.empty());
    stateOf<LogFront>().level = 5;
    ConvertTextToHexText(u"AZ");
    ConvertByteArrayToString(arrayOf("\x41\x42\x43", /*lowerBound=*/1));
    EXPECT_THAT(log.lines, ::testing::ElementsAre("<ConvertTextToHexText", "415A", "ConvertTextToHexText>",
                                                  "ConvertByteArrayToString:3"));
}

}  // namespace
}  // namespace ovno2
