#include <gmock/gmock.h>
#include <iconv.h>

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

class TextConversions : public MachineTest {
  protected:
    void useCodePage(TextView page) {
        setRegistryText(platform::localMachine, u"SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage", u"ACP",
                        page);
    }
    static Text repaired(Text text, TextView keepList = {}) {
        ConvertUmlauteFromFile(text, keepList);
        return text;
    }
    // One character for each byte, in Windows Latin 1.
    static Text bytesAsText(std::string_view bytes) { return fromAnsi(bytes); }
    static ByteArray arrayOf(std::string_view bytes, Long lowerBound = 0) {
        return ByteArray(std::vector<std::uint8_t>(bytes.begin(), bytes.end()), lowerBound);
    }
    static std::string bytesOf(const ByteArray& array) {
        return {array.elements().begin(), array.elements().end()};
    }
};

TEST_F(TextConversions, EveryLetterFromU00C0ToU017FArrivesFromItsUtf8Bytes) {
    for (char16_t c = 0xC0; c < 0x180; ++c) {
        EXPECT_EQ(Text(1, c), repaired(bytesAsText(toUtf8(Text(1, c))))) << std::hex << int(c);
        if (c == 0xC2) continue;  // takes the next character for its second byte
        EXPECT_EQ(u"x" + Text(1, c) + u"y", repaired(bytesAsText("x" + toUtf8(Text(1, c)) + "y")));
    }
}

TEST_F(TextConversions, Utf8PairsAreRepairedInFourPasses) {
    const std::pair<TextView, TextView> cases[] = {
        {u"K\u00C3\u00A4se", u"K\u00E4se"},
        {u"\u00C3 ", u"\u00E0"},  // a lost no-break space
        {u"\u00C2\u00A0", u" "},
        {u"\u00C2\u00BB\u00C2\u00A4", u"\u00BB\u00A4"},
        {u"\u00C2\u00A9", u")"},
        {u"\u00C2a", u"a"},
        {u"\u00C3", u"\u00C3"},                    // alone at the end
        {u"\u00C3\u00C3\u00A4", u"\u00C3\u00E4"},  // no character: stays, and the next lead is looked at
        {u"\u00C3\u00FF", u"\u00C3\u00FF"},
        {u"\u00C3\u4E2D", u"\u00C3\u4E2D"},          // what is not of the code page is no second byte
        {u"\u00C4b\u00C4\u2026", u"\u00C4b\u0105"},  // U+2026 is byte 85
        {u"\u00C5\u00A1", u"\u0161"},
        {u"\u00C5\u00FF", u"\u01BF"},
        // What one pass leaves is the next one's text: "Ä" and "ö" out of four bytes are a pair again.
        {u"\u00C3\u201E\u00C3\u00B6", u"\u0176"},
        {u"\u00C3\u201A\u00C2\u00A0", u"B\u00A0"},
        {u"\u00C3\u201A\u00BB", u"\u00BB"},
        // The search goes on behind the new character.
        {u"\u00C3\u0192\u00A4", u"\u00C3\u00A4"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(Text(expected), repaired(Text(text))) << toUtf8(text);
}

TEST_F(TextConversions, ReferencesEndAtTheFirstThatIsNotOfTheForm) {
    const std::pair<TextView, TextView> cases[] = {
        {u"A&#65;B", u"AAB"},
        {u"&#65;&#66;&#228;&#128;", u"AB\u00E4\u20AC"},
        {u"&#65;&#8364;&#66;", u"A&#8364;&#66;"},
        {u"&#65;&#", u"A&#"},
        {u"&#65;&#12", u"A&#12"},
        {u"&#999;&#65;", u"&#999;A"},  // of the form, but no character
        {u"&#-5;&#65;", u"&#-5;A"},
        {u"&#6.5;", u"\u0006"},  // half to even
        {u"&#7.5;", u"\u0008"},
        {u"&# 65;", u"A"},
        {u"&#9&#;&#65;", u"\tA"},
        {u"&#6x;", u"\u0006"},
        {u"&#38;#65;", u"&#65;"},  // the new "&" begins nothing
        {u"& &; &#65;", u"& &; A"},
        {u"a&#;b&#0;c&#x41;", u"abc"},  // NUL characters go out again
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(Text(expected), repaired(Text(text))) << toUtf8(text);
    const TextView withNul(u"\0&#0;", 5);
    EXPECT_EQ(Text(2, u'\0'), repaired(Text(withNul)));
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
    EXPECT_EQ(u"a,b;c", repaired(u"a\\,b\\;c"));
    EXPECT_EQ(u"\\,\\;\\", repaired(u"\\\\,\\\\;\\"));
    EXPECT_EQ(u"\\n,;", repaired(u"\\n&#92;,\\;"));
    EXPECT_EQ(u"5 \u20AC \u00E2\u201A", repaired(u"5 \u00E2\u201A\u00AC \u00E2\u201A"));
}

TEST_F(TextConversions, LeadsAndReferencesFollowTheCodePage) {
    useCodePage(u"1250");
    EXPECT_EQ(u"\u00E4", repaired(fromAnsi("\xC3\xA4")));   // "Ă¤" there
    EXPECT_EQ(u"\u0142", repaired(fromAnsi("\xC5\x82")));   // "Ĺ‚" there
    EXPECT_EQ(u"\u00C3\u00A4", repaired(u"\u00C3\u00A4"));  // no lead there
    EXPECT_EQ(u"\u0142", repaired(u"&#179;"));
}

// The C library's converter is the independent source.
TEST_F(TextConversions, EveryByteOfACodePageIsACharacterAndBack) {
    for (const char* page : {"874", "1250", "1251", "1252", "1253", "1254", "1255", "1256", "1257", "1258"}) {
        const TemporaryFolder profile;
        platform::portable::Machine other(profile.path());
        std::unique_ptr<platform::RegistryKey> key;
        ASSERT_EQ(0, other.registry().create(platform::localMachine,
                                             u"SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage", key));
        ASSERT_EQ(0,
                  key->write(u"ACP", {.type = 1, .text = fromUtf8(page) + u'\0', .bytes = {}, .number = 0}));
        usePlatform(other);
        iconv_t converter = iconv_open("UTF-16LE", (std::string("CP") + page).c_str());
        ASSERT_NE(reinterpret_cast<iconv_t>(-1), converter);
        std::string all;
        for (int byte = 0; byte < 256; ++byte)
            all += static_cast<char>(byte);
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
    const std::pair<char16_t, std::uint8_t> cases[] = {
        {u'\u20AC', 0x80}, {u'\u201A', 0x82}, {u'\u0192', 0x83}, {u'\u2026', 0x85}, {u'\u2030', 0x89},
        {u'\u0160', 0x8A}, {u'\u0152', 0x8C}, {u'\u017D', 0x8E}, {u'\u2018', 0x91}, {u'\u201D', 0x94},
        {u'\u2013', 0x96}, {u'\u2122', 0x99}, {u'\u0178', 0x9F}, {u'\u00A0', 0xA0}, {u'\u00FF', 0xFF},
        {u'\u0141', 'L'},  {u'\u4E2D', '?'},  {u'\u0081', 0x81},
    };
    for (const auto& [character, code] : cases)
        EXPECT_EQ(code, codes.elements()[character]) << std::hex << int(character);
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

TEST_F(TextConversions, OnADoubleByteCodePageBytesStillComeBackUnchanged) {
    useCodePage(u"932");
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    const Text text = ConvertByteArrayToString(arrayOf(all));
    ASSERT_EQ(256u, text.size());
    EXPECT_EQ(u'\uFF71', text[0xB1]);
    ByteArray back;
    ConvertStringToByteArray(text + u"\u4E2D", back);
    EXPECT_EQ(all + '\0', bytesOf(back));
    EXPECT_EQ(u"81B1  ", ConvertTextToHexText(u"\u0081\uFF71\u4E2D"));
}

std::string utf16Bytes(TextView text, bool bigEndian) {
    std::string bytes;
    for (const char16_t c : text) {
        const char low = static_cast<char>(c & 0xFF);
        const char high = static_cast<char>(c >> 8);
        bytes.append({bigEndian ? high : low, bigEndian ? low : high});
    }
    return bytes;
}

TEST_F(TextConversions, MarkedUtf16IsDecodedWithEveryUnit) {
    Text all;
    for (unsigned c = 1; c < 0x10000; ++c)
        all += static_cast<char16_t>(c);
    for (const bool bigEndian : {false, true}) {
        Text text = bytesAsText((bigEndian ? "\xFE\xFF" : "\xFF\xFE") + utf16Bytes(all, bigEndian));
        EXPECT_EQ(bigEndian ? 2 : 4, ConvertFromUnicodeSub(text));
        EXPECT_EQ(all, text);
    }
}

TEST_F(TextConversions, TheEncodingIsToldFromMarksAndZeroBytes) {
    struct Case {
        std::string_view bytes;
        Long encoding;
        TextView text;
    };
    using namespace std::string_view_literals;
    const Case cases[] = {
        {""sv, 0, u""},
        {"abc"sv, 0, u"abc"},
        {"\xFF\xFE\x41\0\x42\0"sv, 4, u"AB"},
        {"\xFF\xFE\x41\0\x42"sv, 4, u"A"},       // an odd last byte
        {"\xFF\xFE\0\x41\0\x42\0"sv, 4, u"AB"},  // a zero byte behind the mark
        {"\xFF\xFE"sv, 4, u""},
        {"\xFE\xFF\0\x41\0\x42\x43"sv, 2, u"AB"},
        {"\xFE\xFF"sv, 2, u""},
        {"\xFE"sv, 0, u"\u00FE"},
        {"\xEF\xBB\xBF\x61\x62\x63"sv, 0, u"abc"},
        {"\xEF\xBB\xBF\xC3\xA4"sv, 0, u"\u00C3\u00A4"},
        {"\xEF\xBB"sv, 0, u"\u00EF\u00BB"},
    };
    for (const Case& c : cases) {
        Text text = bytesAsText(c.bytes);
        EXPECT_EQ(c.encoding, ConvertFromUnicodeSub(text)) << ::testing::PrintToString(c.bytes);
        EXPECT_EQ(Text(c.text), text) << ::testing::PrintToString(c.bytes);
    }
    Text marked = u"\uFEFFtext";
    EXPECT_EQ(4, ConvertFromUnicodeSub(marked));
    EXPECT_EQ(u"text", marked);
    Text swapped = u"\uFFFEtext";
    EXPECT_EQ(2, ConvertFromUnicodeSub(swapped));
    EXPECT_EQ(u"\uFFFEtext", swapped);
}

TEST_F(TextConversions, UnmarkedBigEndianNeedsTwentyOneCharactersAndSmallCodesUpToTheLast) {
    const std::string bytes = utf16Bytes(u"Hello world", /*bigEndian=*/true);  // 22
    const auto encodingOf = [](std::string_view of, Text& text) {
        text = fromAnsi(of);
        return ConvertFromUnicodeSub(text);
    };
    Text text;
    EXPECT_EQ(3, encodingOf(bytes, text));
    EXPECT_EQ(u"Hello world", text);
    EXPECT_EQ(3, encodingOf(std::string_view(bytes).substr(0, 21), text));
    EXPECT_EQ(u"Hello worl", text);
    EXPECT_EQ(0, encodingOf(std::string_view(bytes).substr(0, 20), text));
    EXPECT_EQ(20u, text.size());
    EXPECT_EQ(3, encodingOf("\xEF\xBB\xBF" + bytes, text));
    EXPECT_EQ(u"Hello world", text);
    for (std::size_t position = 1; position <= 21; position += 2) {
        std::string changed = bytes;
        changed[position - 1] = 8;
        EXPECT_EQ(3, encodingOf(changed, text)) << position;
        changed[position - 1] = 9;
        EXPECT_EQ(position < 5 ? 3 : 0, encodingOf(changed, text)) << position;
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
