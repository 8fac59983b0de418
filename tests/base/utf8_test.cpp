#include "base/utf8.h"

#include <gtest/gtest.h>

namespace ovno2 {
namespace {

TEST(Utf8, EveryCharacterComesBackInAsManyBytesAsItNeeds) {
    Text text;
    std::size_t bytesNeeded = 0;
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        if (c == 0xD800) c = 0xE000;
        if (c >= 0x10000) text.push_back(static_cast<char16_t>(0xD7C0 + (c >> 10)));
        text.push_back(static_cast<char16_t>(c < 0x10000 ? c : 0xDC00 + (c & 0x3FF)));
        bytesNeeded += c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
    }
    const std::string bytes = toUtf8(text);
    EXPECT_EQ(bytesNeeded, bytes.size());
    Text back;
    EXPECT_TRUE(readUtf8(bytes, back));
    EXPECT_TRUE(text == back);
    EXPECT_EQ("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x93\xB1", toUtf8(u"ä€\xD83D\xDCF1"));
}

TEST(Utf8, BrokenSequencesAreReplacedAndTheRestIsKept) {
    const std::pair<std::string, Text> broken[] = {
        {"a\x80z", u"a\uFFFDz"},                            // a byte that continues nothing
        {"a\xC3z", u"a\uFFFDz"},                            // cut short by another character
        {"a\xE2\x82", u"a\uFFFD\uFFFD"},                    // cut short by the end
        {"\xC0\xAF", u"\uFFFD\uFFFD"},                      // longer than needed
        {"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"},            // longer than needed
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},            // a surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond the last character
    };
    for (const auto& [bytes, expected] : broken) {
        Text text;
        EXPECT_FALSE(readUtf8(bytes, text));
        EXPECT_EQ(expected, text);
    }
    EXPECT_EQ("x\xEF\xBF\xBDy", toUtf8(u"x\xD800y"));
    EXPECT_EQ("\xEF\xBF\xBD", toUtf8(u"\xDC00"));
    EXPECT_TRUE(isWellFormed(u"a\xD83D\xDCF1"));
    for (const TextView text : {u"\xD83D", u"\xDCF1", u"\xD83Dx", u"\xDCF1\xD83D"})
        EXPECT_FALSE(isWellFormed(text));
}

}  // namespace
}  // namespace ovno2
